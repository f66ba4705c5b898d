// Threads: the rows of one frame, split over threads. The result is the same, to the byte, as that of one call.
//
// The library starts no threads and keeps no state, so a caller may cut a frame into bands and call a function once for
// each band, on any thread: a band is the same planes with the pointers moved down, and a smaller height. What decides
// where to cut is which rows an output row depends on.
//
//   At even rows     whatever shares chroma between two rows: captures to I420 and renderings of I420, packed YUV,
//   blends.
//                    An even start leads every chroma pointer down by half as many rows, and the pairs stay together.
//                    Only the last band may have an odd height, and it alone meets the rules for an odd last row.
//   At any row       whatever treats each row alone: mirror, split, turn, 4:2:2 to 4:2:0 (by rows of the destination),
//                    and I444.
//   Not at all       what looks at the whole picture: KorI420FlipVertical_C_ exchanges its first row with its last, and
//                    at odd widths Yuv2 and the turning captures of packed frames shift from row pair to row pair.
//                    24-bit captures of odd sizes take their last pixel from its neighbours above: their last band
//                    needs three rows. Dithering starts its noise anew with every call: bands are dithered well, but
//                    not as one frame is, so the renderings here are without.
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <thread>
#include <vector>

#include "Kor/Video/Common/C/KorYuv420_C_.h"

namespace {

// Odd on purpose: the last band then has the odd row.
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

// BGRA to I420, upside down. With a flip the band's first row comes from the source row that mirrors its last one: the
// part of the source begins there, and the function reads that part from below.
void Capture(I420& picture, const Plane& bgra, Band band) {
    const KorSizeT firstChroma = band.first / 2;
    const KorSizeT firstSource = kHeight - (band.first + band.rows);
    KorBGRAToI420_C_(picture.y.data() + band.first * kWidth, kWidth, picture.u.data() + firstChroma * kChromaWidth,
                     kChromaWidth, picture.v.data() + firstChroma * kChromaWidth, kChromaWidth,
                     bgra.data() + firstSource * kPitch, kPitch, kWidth, band.rows, /* flip: */ 1);
}

// I420 to BGRA, straight down.
void Render(Plane& bgra, const I420& picture, Band band) {
    const KorSizeT firstChroma = band.first / 2;
    KorI420ToBGRA_C_(picture.y.data() + band.first * kWidth, kWidth, picture.u.data() + firstChroma * kChromaWidth,
                     kChromaWidth, picture.v.data() + firstChroma * kChromaWidth, kChromaWidth,
                     bgra.data() + band.first * kPitch, kPitch, kWidth, band.rows, KOR_VIDEOFRAMEDITHERLEVEL_Off);
}

// A quarter turn of the luma. Source rows become destination columns, counted from the right: a band of rows fills a
// band of columns. Threads then write side by side in the same rows, but never to the same byte.
void Turn(Plane& turned, const Plane& luma, Band band) {
    const KorSizeT firstColumn = kHeight - (band.first + band.rows);
    KorPlanarRotation_C_(luma.data() + band.first * kWidth, kWidth, turned.data() + firstColumn, kHeight, kWidth,
                         band.rows, 90);
}

// Calls work(band) on a thread of its own for each of count bands that cover the frame, and waits for all.
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
        std::fprintf(stderr, "threads: %s in %zu bands differs from the whole\n", what, count);
        std::exit(EXIT_FAILURE);
    }
}

}  // namespace

int main() {
    Plane screen(kPitch * kHeight);
    for (KorSizeT i = 0; i < screen.size(); ++i)
        screen[i] = static_cast<KorUint8>(i * i / 97 + i / 641);

    // The odd last row and column are not rendered and stay as they are: zero, in each of the pictures.
    I420 whole;
    Plane rendered(screen.size()), turned(whole.y.size());
    Capture(whole, screen, kWholeFrame);
    Render(rendered, whole, kWholeFrame);
    Turn(turned, whole.y, kWholeFrame);

    for (KorSizeT count = 1; count <= 16; ++count) {
        I420 captured;
        InBands(count, [&](Band band) { Capture(captured, screen, band); });
        Expect(captured == whole, "the capture", count);

        Plane renderedInBands(screen.size());
        InBands(count, [&](Band band) { Render(renderedInBands, captured, band); });
        Expect(renderedInBands == rendered, "the rendering", count);

        Plane turnedInBands(turned.size());
        InBands(count, [&](Band band) { Turn(turnedInBands, captured.y, band); });
        Expect(turnedInBands == turned, "the turn", count);
    }
    std::printf("Captured, rendered and turned in 1 to 16 bands, each time the same bytes as in one call.\n");
    return 0;
}
