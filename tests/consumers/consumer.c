/* A C program: captures a red picture and renders it again with dither. */
#include <stdio.h>
#include <string.h>

#include "Kor/Video/Common/KorYuv420.h"

int main(void) {
    KorUint8 picture[2][2][4];
    KorUint8 rendered[2][2][4];
    KorUint8 y[2][2], u, v;
    int row, column;
    for (row = 0; row < 2; ++row) {
        for (column = 0; column < 2; ++column) {
            const KorUint8 red[4] = {0, 0, 255, 255};
            memcpy(picture[row][column], red, 4);
        }
    }
    KorBGRAToI420(y[0], 2, &u, 1, &v, 1, picture[0][0], 8, 2, 2, 0);
    KorI420ToBGRA(y[0], 2, &u, 1, &v, 1, rendered[0][0], 8, 2, 2, KOR_VIDEOFRAMEDITHERLEVEL_1);
    if (y[0][0] != 81 || u != 90 || v != 239 || rendered[1][1][2] < 200 || rendered[1][1][3] != 255) {
        fprintf(stderr, "consumer: red became %d, %d, %d\n", y[0][0], u, v);
        return 1;
    }
    return 0;
}
