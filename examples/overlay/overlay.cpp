// Overlay: lays a round logo with a soft edge over a video frame, with a separate opacity for each sample.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "Kor/Video/Common/KorYuv420.h"

namespace {

using Samples = std::vector<KorUint8>;

// An I420 picture of even size: a full plane of luma, two planes of chroma at half its width and height.
struct I420 {
    KorSizeT width, height;
    Samples y, u, v;
};

I420 OneColour(KorSizeT width, KorSizeT height, KorUint8 y, KorUint8 u, KorUint8 v) {
    const KorSizeT chroma = width / 2 * (height / 2);
    return {width, height, Samples(width * height, y), Samples(chroma, u), Samples(chroma, v)};
}

constexpr KorSizeT kLogo = 64;

void Expect(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "overlay: %s\n", what);
        std::exit(EXIT_FAILURE);
    }
}

// A red disc as drawing programs export it: BGRA with the opacity in A. The edge fades over eight pixels.
Samples DrawLogo() {
    Samples bgra;
    for (KorSizeT row = 0; row < kLogo; ++row) {
        for (KorSizeT column = 0; column < kLogo; ++column) {
            const double distance = std::hypot(static_cast<double>(column) - 31.5, static_cast<double>(row) - 31.5);
            const double opacity = std::fmin(1, std::fmax(0, (30 - distance) / 8));
            bgra.insert(bgra.end(), {0, 0, 255, static_cast<KorUint8>(std::lround(255 * opacity))});
        }
    }
    return bgra;
}

// Captures ignore alpha, so the opacity is extracted by hand: unchanged for luma, and for chroma the average of each
// two by two pixels, because that is the area that a chroma sample covers.
I420 OpacityOf(const Samples& bgra) {
    I420 opacity = OneColour(kLogo, kLogo, 0, 0, 0);
    for (KorSizeT i = 0; i < opacity.y.size(); ++i)
        opacity.y[i] = bgra[4 * i + 3];
    for (KorSizeT row = 0; row < kLogo / 2; ++row) {
        for (KorSizeT column = 0; column < kLogo / 2; ++column) {
            const KorUint8* block = &opacity.y[2 * row * kLogo + 2 * column];
            const int sum = block[0] + block[1] + block[kLogo] + block[kLogo + 1];
            opacity.u[row * kLogo / 2 + column] = static_cast<KorUint8>((sum + 2) / 4);
        }
    }
    opacity.v = opacity.u;
    return opacity;
}

KorUint8 LumaAt(const I420& picture, KorSizeT column, KorSizeT row) {
    return picture.y[row * picture.width + column];
}

}  // namespace

int main() {
    I420 frame = OneColour(320, 180, 180, 128, 128);  // a light grey video
    const I420 before = frame;

    const Samples bgra = DrawLogo();
    I420 logo = OneColour(kLogo, kLogo, 0, 0, 0);
    KorBGRAToI420(logo.y.data(), kLogo, logo.u.data(), kLogo / 2, logo.v.data(), kLogo / 2, bgra.data(), 4 * kLogo,
                  kLogo, kLogo, /* flip: */ 0);
    I420 opacity = OpacityOf(bgra);

    // At even positions the logo's chroma samples coincide with those of the frame. The logo must lie inside the frame,
    // because nothing is clipped.
    const KorSizeT left = 240, top = 16;
    KorI420AlphaArrayBlend(frame.y.data(), frame.width, frame.u.data(), frame.width / 2, frame.v.data(),
                           frame.width / 2, logo.y.data(), kLogo, logo.u.data(), kLogo / 2, logo.v.data(), kLogo / 2,
                           kLogo, kLogo, left, top, opacity.y.data(), kLogo, opacity.u.data(), kLogo / 2,
                           opacity.v.data(), kLogo / 2);

    // Opacity 0 and 255 are exact; in between, a sample lies between those of the two pictures.
    for (KorSizeT row = 0; row < frame.height; ++row) {
        for (KorSizeT column = 0; column < frame.width; ++column) {
            const bool isInside = column >= left && column < left + kLogo && row >= top && row < top + kLogo;
            const KorUint8 alpha = isInside ? LumaAt(opacity, column - left, row - top) : 0;
            const KorUint8 background = LumaAt(before, column, row), blended = LumaAt(frame, column, row);
            Expect(alpha != 0 || blended == background, "the frame changed outside the logo");
            Expect(alpha != 255 || blended == LumaAt(logo, column - left, row - top), "the logo is not opaque");
            Expect(blended >= 81 && blended <= background, "the edge is not between logo and frame");
        }
    }
    const KorSizeT middle = (top + kLogo / 2) / 2 * (frame.width / 2) + (left + kLogo / 2) / 2;
    Expect(frame.u[middle] == 90 && frame.v[middle] == 239, "the logo is not red");

    std::printf("Laid a logo of %zu by %zu over the frame at %zu, %zu, with a soft edge.\n", kLogo, kLogo, left, top);
    return 0;
}
