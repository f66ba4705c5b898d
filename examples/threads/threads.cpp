// Threads: splits the rows of one frame over threads. The result is the same, to the byte, as that of a single call.
//
// The library starts no threads and keeps no state, so a caller may cut a frame into bands and call a function once per
// band, on any thread: a band is the same planes with the pointers moved down, and a smaller height. Where to cut
// follows from which rows an output row depends on.
//
//   At even rows     functions that share chroma between two rows: captures to I420 and renderers of I420, packed YUV,
//                    blends. An even start moves every chroma pointer down by half as many rows, and pairs stay
//                    together. Only the last band may have an odd height, with the effects of an odd last row.
//   At any row       functions that treat each row separately: mirror, split, rotate, 4:2:2 to 4:2:0 (by rows of the
//                    destination), and I444.
//   Not at all       functions that depend on the whole picture: KorI420FlipVertical swaps its first row with its
//                    last, and at odd widths Yuv2 and the rotating captures of packed frames drift from row pair to
//                    row pair. 24-bit captures of odd sizes derive their last pixel from its neighbours above, so their
//                    last band needs three rows. Dithering starts its noise anew in every call: dithered bands look
//                    right, but differ from a frame dithered as a whole, so this example renders without.
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <thread>
#include <vector>

#include "Kor/Video/Common/KorYuv420.h"

namespace {

// Odd on purpose, so that the last band has an odd row.
constexpr KorSizeT kWidth = 641;
constexpr KorSizeT kHeight = 363;
constexpr KorSizeT kChromaWidth = (kWidth + 1) / 2;
constexpr KorSizeT kChromaHeight = (kHeight + 1) / 2;
constexpr KorSizeT kPitch = 4 * kWidth;

using Plane = std::vector<KorUint8>;

struct Band {
    KorSizeT first, rows;
};

struct I420 {
    Plane y = Plane(kWidth * kHeight);
    Plane u = Plane(kChromaWidth * kChromaHeight);
    Plane v = Plane(kChromaWidth * kChromaHeight);

    bool operator==(const I420& other) const { return y == other.y && u == other.u && v == other.v; }
};

constexpr Band kWholeFrame = {0, kHeight};

// BGRA to I420, upside down. The source of a band is the mirrored range of rows, which the function reads from its last
// row upwards.
void Capture(I420& picture, const Plane& bgra, Band band) {
    const KorSizeT firstChroma = band.first / 2;
    const KorSizeT firstSource = kHeight - (band.first + band.rows);
    KorBGRAToI420(picture.y.data() + band.first * kWidth, kWidth, picture.u.data() + firstChroma * kChromaWidth,
                  kChromaWidth, picture.v.data() + firstChroma * kChromaWidth, kChromaWidth,
                  bgra.data() + firstSource * kPitch, kPitch, kWidth, band.rows, /* flip: */ 1);
}

// I420 to BGRA, top-down.
void Render(Plane& bgra, const I420& picture, Band band) {
    const KorSizeT firstChroma = band.first / 2;
    KorI420ToBGRA(picture.y.data() + band.first * kWidth, kWidth, picture.u.data() + firstChroma * kChromaWidth,
                  kChromaWidth, picture.v.data() + firstChroma * kChromaWidth, kChromaWidth,
                  bgra.data() + band.first * kPitch, kPitch, kWidth, band.rows, KOR_VIDEOFRAMEDITHERLEVEL_Off);
}

// Rotates luma by 90 degrees. Source rows become destination columns, counted from the right, so a band of rows fills a
// band of columns. Threads write side by side in the same rows, but never to the same byte.
void Rotate(Plane& rotated, const Plane& luma, Band band) {
    const KorSizeT firstColumn = kHeight - (band.first + band.rows);
    KorPlanarRotation(luma.data() + band.first * kWidth, kWidth, rotated.data() + firstColumn, kHeight, kWidth,
                      band.rows, 90);
}

// Calls work(band) on a separate thread for each of count bands that cover the frame, and waits for all of them.
void InBands(KorSizeT count, const std::function<void(Band)>& work) {
    std::vector<std::thread> threads;
    for (KorSizeT i = 0; i < count; ++i) {
        const KorSizeT first = kHeight * i / count / 2 * 2;
        const KorSizeT end = i + 1 < count ? kHeight * (i + 1) / count / 2 * 2 : kHeight;
        threads.emplace_back(work, Band{first, end - first});
    }
    for (std::thread& thread : threads)
        thread.join();
}

void Expect(bool condition, const char* what, KorSizeT count) {
    if (!condition) {
        std::fprintf(stderr, "threads: %s in %zu bands differs from that of the whole frame\n", what, count);
        std::exit(EXIT_FAILURE);
    }
}

}  // namespace

int main() {
    Plane screen(kPitch * kHeight);
    for (KorSizeT i = 0; i < screen.size(); ++i)
        screen[i] = static_cast<KorUint8>(i * i / 97 + i / 641);

    // The odd last row and column are not rendered and stay zero in all of the pictures.
    I420 whole;
    Plane rendered(screen.size()), rotated(whole.y.size());
    Capture(whole, screen, kWholeFrame);
    Render(rendered, whole, kWholeFrame);
    Rotate(rotated, whole.y, kWholeFrame);

    for (KorSizeT count = 1; count <= 16; ++count) {
        I420 captured;
        InBands(count, [&](Band band) { Capture(captured, screen, band); });
        Expect(captured == whole, "the capture", count);

        Plane renderedInBands(screen.size());
        InBands(count, [&](Band band) { Render(renderedInBands, captured, band); });
        Expect(renderedInBands == rendered, "the rendering", count);

        Plane rotatedInBands(rotated.size());
        InBands(count, [&](Band band) { Rotate(rotatedInBands, captured.y, band); });
        Expect(rotatedInBands == rotated, "the rotation", count);
    }
    std::printf("Captured, rendered and rotated in 1 to 16 bands, each time with the same bytes as in one call.\n");
    return 0;
}
