// The random service of every program that links the kit.
#include "conformance/core/ScriptedRandom.h"
#include "Kor/Os/KorRandom.h"

KorBool KorRandomGetBytes(char* buffer, KorSizeT count) {
    return kit::ScriptedRandom::Draw(buffer, count) ? 1 : 0;
}
