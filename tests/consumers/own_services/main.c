/* A program with its own services: the library uses them and nothing else. */
#include <stdio.h>

#include "Kor/Video/Common/KorYuv420.h"

extern int draws;

int main(void) {
    const KorUint8 y[2][2] = {{100, 100}, {100, 100}};
    const KorUint8 u = 128, v = 128;
    KorUint8 packed[2][4];
    KorI420ToYUY2(y[0], 2, &u, 1, &v, 1, packed[0], 4, 2, 2, KOR_VIDEOFRAMEDITHERLEVEL_2);
    if (draws != 3) {
        fprintf(stderr, "consumer: expected 3 draws from the program's own service, found %d\n", draws);
        return 1;
    }
#ifndef DEFAULT_TABLE
    if (packed[0][0] != 140 || packed[0][2] != 100 || packed[0][1] != 148) {
        fprintf(stderr, "consumer: expected the program's own noise, found %d, %d, %d\n", packed[0][0], packed[0][2],
                packed[0][1]);
        return 1;
    }
#endif
    return 0;
}
