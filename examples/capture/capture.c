/*
 * Capture: a YUY2 frame from a camera mounted sideways becomes an upright I420 picture, in one call.
 *
 * The camera's frame is made up: black, with a white square in its upper left corner. After a clockwise rotation by 90
 * degrees, the square must be in the upper right corner.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "Kor/Video/Common/KorYuv420.h"

enum {
    /* The frame as the camera delivers it. A rotation by 90 degrees swaps its width and height. */
    kWidth = 640,
    kHeight = 360,
    kRotatedWidth = kHeight,
    kRotatedHeight = kWidth,

    /* The pitch is the distance in bytes between two rows. YUY2 has two bytes per pixel; drivers often pad rows. */
    kPitch = 2 * kWidth + 64,

    /* Limited range: luma is 16 to 235, and chroma of 128 is colourless. */
    kBlack = 16,
    kWhite = 235,
    kNoColour = 128,

    kSquare = 40
};

static KorUint8 camera[kHeight * kPitch];

/* The rotated picture: luma for every pixel, and two planes of chroma with a sample for every two by two pixels. */
static KorUint8 y[kRotatedHeight][kRotatedWidth];
static KorUint8 u[kRotatedHeight / 2][kRotatedWidth / 2];
static KorUint8 v[kRotatedHeight / 2][kRotatedWidth / 2];

static void PointTheCamera(void) {
    int row, pair;
    for (row = 0; row < kHeight; ++row) {
        for (pair = 0; pair < kWidth / 2; ++pair) {
            const KorUint8 luma = row < kSquare && 2 * pair < kSquare ? kWhite : kBlack;
            KorUint8* yuy2 = camera + row * kPitch + 4 * pair;
            yuy2[0] = luma;      /* Y of the left pixel */
            yuy2[1] = kNoColour; /* U of both */
            yuy2[2] = luma;      /* Y of the right pixel */
            yuy2[3] = kNoColour; /* V of both */
        }
    }
}

static void Expect(int condition, const char* what) {
    if (!condition) {
        fprintf(stderr, "capture: %s\n", what);
        exit(EXIT_FAILURE);
    }
}

static void CheckThePicture(void) {
    int row, column;
    for (row = 0; row < kRotatedHeight; ++row) {
        for (column = 0; column < kRotatedWidth; ++column) {
            const int inSquare = row < kSquare && column >= kRotatedWidth - kSquare;
            Expect(y[row][column] == (inSquare ? kWhite : kBlack), "the square is not in the upper right corner");
            Expect(u[row / 2][column / 2] == kNoColour && v[row / 2][column / 2] == kNoColour,
                   "the picture is not grey");
        }
    }
}

int main(void) {
    PointTheCamera();

    /*
     * Destinations come first, each with the pitch of the rotated plane; then the source, with its size before the
     * rotation. Nothing is allocated, and nothing can fail: the caller provides planes that are large enough.
     */
    KorYUY2ToI420WithRotation(y[0], kRotatedWidth, u[0], kRotatedWidth / 2, v[0], kRotatedWidth / 2, camera, kPitch,
                              kWidth, kHeight, /* flip: */ 0, /* degrees, clockwise: */ 90);

    CheckThePicture();
    printf("YUY2 of %d by %d became I420 of %d by %d, and the square is where it belongs.\n", kWidth, kHeight,
           kRotatedWidth, kRotatedHeight);
    return 0;
}
