#include "Kor/Os/KorRandom.h"

int draws = 0;

KorBool KorRandomGetBytes(char* buffer, KorSizeT count) {
    KorSizeT i;
    for (i = 0; i < count; ++i) {
        buffer[i] = 0;
    }
    ++draws;
    return 1;
}
