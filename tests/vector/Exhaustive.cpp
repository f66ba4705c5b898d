// Every target held against the portable functions on every input that one sample of a result can have: all 2^24
// colours of the captures and of the renderers, all weights and samples of the blends, all pairs of the two rows whose
// chroma Yuv2 averages.
#include <array>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "Kor/Video/Common/KorYuv420.h"

namespace {

// Inputs come in 256 pictures of 256 by 256 blocks, two by two pixels each.
constexpr KorSizeT kBlocks = 256;
constexpr KorSizeT kSize = 2 * kBlocks;
constexpr KorSizeT kPixels = kSize * kSize;

using Bytes = std::vector<KorUint8>;

struct Planes {
    Bytes y = Bytes(kPixels), u = Bytes(kPixels), v = Bytes(kPixels);

    bool operator==(const Planes& other) const { return y == other.y && u == other.u && v == other.v; }
};

using Capture = decltype(&KorBGRAToI420);
using CaptureGeneral = decltype(&KorBGRAToI420General);
using Render = decltype(&KorI420ToBGRA);
using RenderGeneral = decltype(&KorI420ToBGRAGeneral);

struct NamedCapture {
    const char* name;
    Capture portable, dispatched;
    KorSizeT pixelBytes;
    KorSizeT chroma;  // samples in a row
};

#define KOR_CAPTURE(name, pixelBytes, chroma) \
    { #name, &name##_C_, &name, pixelBytes, chroma }
constexpr NamedCapture kCaptures[] = {
    KOR_CAPTURE(KorRGBAToI420, 4, kBlocks),           KOR_CAPTURE(KorBGRAToI420, 4, kBlocks),
    KOR_CAPTURE(KorARGBToI420, 4, kBlocks),           KOR_CAPTURE(KorABGRToI420, 4, kBlocks),
    KOR_CAPTURE(KorBGRAToI420UsingBT709, 4, kBlocks), KOR_CAPTURE(KorBGRAToI444, 4, kSize),
    KOR_CAPTURE(KorBGRAToI444UsingBT709, 4, kSize),   KOR_CAPTURE(KorRawToI420, 3, kBlocks),
    KOR_CAPTURE(Kor24BGToI420, 3, kBlocks),
};

struct NamedRender {
    const char* name;
    Render portable, dispatched;
    KorSizeT pixelBytes;
    KorSizeT chroma;
};

#define KOR_RENDER(name, pixelBytes, chroma) \
    { #name, &name##_C_, &name, pixelBytes, chroma }
constexpr NamedRender kRenders[] = {
    KOR_RENDER(KorI420ToRGBA, 4, kBlocks),           KOR_RENDER(KorI420ToBGRA, 4, kBlocks),
    KOR_RENDER(KorI420ToARGB, 4, kBlocks),           KOR_RENDER(KorI420ToABGR, 4, kBlocks),
    KOR_RENDER(KorI420ToBGRAUsingBT709, 4, kBlocks), KOR_RENDER(KorI444ToBGRA, 4, kSize),
    KOR_RENDER(KorI444ToBGRAUsingBT709, 4, kSize),   KOR_RENDER(KorI420To24BG, 3, kBlocks),
};

using Matrix = KorInt[3][3];

// As many weights above zero, or below, as kernels of bytes can take, one more than that, and weights of more than a
// byte.
constexpr Matrix kCaptureMatrices[] = {
    {{47, 157, 16}, {-26, -87, 112}, {112, -102, -10}},
    {{255, 0, 0}, {127, 1, -128}, {-128, 64, 64}},
    {{0, 254, 1}, {100, 28, -100}, {-64, -64, 100}},
    {{0, 255, 1}, {100, 29, -100}, {-64, -65, 100}},
    {{256, 0, -1}, {128, 0, 0}, {-129, 0, 0}},
    {{32767, -32768, 65535}, {70000, -70000, 1}, {-2147483647 - 1, 2147483647, 255}},
};

// Three of these leave 32 bits.
constexpr KorInt kHuge = 0x40000101;

// More than kernels of bytes can take, each in one way: a weight of luma, or their sum; a weight of chroma, or the sum
// of those above zero, or below.
constexpr Matrix kMatricesBeyondBytes[] = {
    {{256, 0, 0}, {127, 1, -128}, {-128, 64, 64}},
    {{-1, 0, 0}, {127, 1, -128}, {-128, 64, 64}},
    {{0, 255, 255}, {127, 1, -128}, {-128, 64, 64}},
    {{255, 0, 0}, {128, 0, 0}, {128, 0, 0}},
    {{255, 0, 0}, {0, 100, 100}, {0, 100, 100}},
    {{255, 0, 0}, {0, 127, 2}, {0, 127, 2}},
    {{255, 0, 0}, {1, -127, -2}, {1, -127, -2}},
    {{kHuge, kHuge, kHuge}, {kHuge, kHuge, kHuge}, {kHuge, kHuge, kHuge}},
    {{255, 0, 0}, {kHuge, kHuge, kHuge}, {kHuge, kHuge, kHuge}},
};

// The matrix of BT.601, one at the limits of 16-bit lanes, and one beyond them.
constexpr Matrix kRenderMatrices[] = {
    {{298, 0, 409}, {298, -100, -208}, {298, 516, 0}},
    {{8191, -8191, 8191}, {-8191, 8191, 8191}, {-8191, -8191, -8191}},
    {{8192, 0, 100}, {-9000, 70000, -70000}, {2147483647, -2147483647, 1}},
};

int failures = 0;

void Check(bool isSame, const std::string& what, KorSizeT picture) {
    if (!isSame) {
        std::fprintf(stderr, "%s differs on %s, picture %zu\n", KorYuv420Target(), what.c_str(), picture);
        ++failures;
    }
}

// A packed picture whose block in column i and row j has the bytes of the picture's number, j and i, and one that never
// counts.
Bytes PackedPicture(KorSizeT picture, KorSizeT pixelBytes, KorSizeT first) {
    Bytes x(pixelBytes * kPixels, 0x5a);
    for (KorSizeT j = 0; j < kSize; ++j) {
        for (KorSizeT i = 0; i < kSize; ++i) {
            KorUint8* const pixel = &x[pixelBytes * (j * kSize + i) + first];
            pixel[0] = static_cast<KorUint8>(picture);
            pixel[1] = static_cast<KorUint8>(j / 2);
            pixel[2] = static_cast<KorUint8>(i / 2);
        }
    }
    return x;
}

void TryCaptures(KorSizeT picture) {
    const Bytes alphaLast = PackedPicture(picture, 4, 0);
    const Bytes alphaFirst = PackedPicture(picture, 4, 1);
    const Bytes triples = PackedPicture(picture, 3, 0);
    Planes expected, found;
    for (const NamedCapture& test : kCaptures) {
        const bool isAlphaFirst = test.portable == &KorARGBToI420_C_ || test.portable == &KorABGRToI420_C_;
        const Bytes& x = test.pixelBytes == 3 ? triples : isAlphaFirst ? alphaFirst : alphaLast;
        const auto run = [&](Capture capture, Planes& to) {
            capture(to.y.data(), kSize, to.u.data(), test.chroma, to.v.data(), test.chroma, x.data(),
                    test.pixelBytes * kSize, kSize, kSize, 0);
        };
        run(test.portable, expected);
        run(test.dispatched, found);
        Check(expected == found, test.name, picture);
    }
    const auto tryMatrix = [&](const Matrix& matrix, const std::string& name) {
        const auto run = [&](CaptureGeneral capture, Planes& to) {
            capture(to.y.data(), kSize, to.u.data(), kBlocks, to.v.data(), kBlocks, alphaLast.data(), 4 * kSize, kSize,
                    kSize, 0, matrix);
        };
        run(&KorBGRAToI420General_C_, expected);
        run(&KorBGRAToI420General, found);
        Check(expected == found, "KorBGRAToI420General, " + name, picture);
    };
    for (const Matrix& matrix : kCaptureMatrices) {
        tryMatrix(matrix, "matrix " + std::to_string(&matrix - kCaptureMatrices));
    }
    // Both extremes of a channel, and four samples between them, tell which kernel took a matrix.
    for (const Matrix& matrix : kMatricesBeyondBytes) {
        if (picture % 51 == 0) {
            tryMatrix(matrix, "matrix beyond bytes " + std::to_string(&matrix - kMatricesBeyondBytes));
        }
    }
}

// Planes whose block in column i and row j has a luma of the picture's number and the chroma j and i.
Planes PlanarPicture(KorSizeT picture, KorSizeT chroma) {
    Planes planes;
    planes.y.assign(kPixels, static_cast<KorUint8>(picture));
    const KorSizeT scale = chroma / kBlocks;
    for (KorSizeT j = 0; j < chroma; ++j) {
        for (KorSizeT i = 0; i < chroma; ++i) {
            planes.u[j * chroma + i] = static_cast<KorUint8>(j / scale);
            planes.v[j * chroma + i] = static_cast<KorUint8>(i / scale);
        }
    }
    return planes;
}

void TryRenders(KorSizeT picture) {
    const Planes halved = PlanarPicture(picture, kBlocks);
    const Planes full = PlanarPicture(picture, kSize);
    Bytes expected(4 * kPixels), found(4 * kPixels);
    for (const NamedRender& test : kRenders) {
        const Planes& from = test.chroma == kSize ? full : halved;
        const auto run = [&](Render render, Bytes& to) {
            render(from.y.data(), kSize, from.u.data(), test.chroma, from.v.data(), test.chroma, to.data(),
                   test.pixelBytes * kSize, kSize, kSize, KOR_VIDEOFRAMEDITHERLEVEL_Off);
        };
        run(test.portable, expected);
        run(test.dispatched, found);
        Check(expected == found, test.name, picture);
    }
    for (const Matrix& matrix : kRenderMatrices) {
        const auto run = [&](RenderGeneral render, Bytes& to) {
            render(halved.y.data(), kSize, halved.u.data(), kBlocks, halved.v.data(), kBlocks, to.data(), 4 * kSize,
                   kSize, kSize, matrix, KOR_VIDEOFRAMEDITHERLEVEL_Off);
        };
        run(&KorI420ToBGRAGeneral_C_, expected);
        run(&KorI420ToBGRAGeneral, found);
        Check(expected == found, "KorI420ToBGRAGeneral, matrix " + std::to_string(&matrix - kRenderMatrices), picture);
    }
}

// Every background and foreground, with the picture's number as the weight of all.
void TryBlends(KorSizeT picture) {
    const Planes foreground = PlanarPicture(picture, kSize);
    Bytes alpha(kPixels, static_cast<KorUint8>(picture));
    const auto run = [&](auto blend, auto blendArray, Planes& constant, Planes& array) {
        constant.y = constant.u = constant.v = array.y = array.u = array.v = foreground.u;
        blend(constant.y.data(), kSize, constant.u.data(), kBlocks, constant.v.data(), kBlocks, foreground.v.data(),
              kSize, foreground.v.data(), kBlocks, foreground.v.data(), kBlocks, kSize, kSize, 0, 0,
              static_cast<KorUint8>(picture));
        blendArray(array.y.data(), kSize, array.u.data(), kBlocks, array.v.data(), kBlocks, foreground.v.data(), kSize,
                   foreground.v.data(), kBlocks, foreground.v.data(), kBlocks, kSize, kSize, 0, 0, alpha.data(), kSize,
                   alpha.data(), kBlocks, alpha.data(), kBlocks);
    };
    Planes expected, expectedArray, found, foundArray;
    run(&KorI420AlphaBlend_C_, &KorI420AlphaArrayBlend_C_, expected, expectedArray);
    run(&KorI420AlphaBlend, &KorI420AlphaArrayBlend, found, foundArray);
    Check(expected == found, "KorI420AlphaBlend", picture);
    Check(expectedArray == foundArray, "KorI420AlphaArrayBlend", picture);
}

// Every luma; of chroma every pair of an upper and a lower sample.
void TryYuv2() {
    Bytes x(2 * kPixels);
    for (KorSizeT j = 0; j < kSize; ++j) {
        for (KorSizeT i = 0; i < kSize; ++i) {
            x[2 * (j * kSize + i)] = static_cast<KorUint8>(i);
            x[2 * (j * kSize + i) + 1] = static_cast<KorUint8>(j % 2 == 0 ? j / 2 : i / 2);
        }
    }
    Planes expected, found;
    const auto run = [&](Capture capture, Planes& to) {
        capture(to.y.data(), kSize, to.u.data(), kBlocks, to.v.data(), kBlocks, x.data(), 2 * kSize, kSize, kSize, 0);
    };
    run(&KorYuv2ToI420_C_, expected);
    run(&KorYuv2ToI420, found);
    Check(expected == found, "KorYuv2ToI420", 0);
    Bytes expectedPacked(2 * kPixels), foundPacked(2 * kPixels);
    const auto pack = [&](decltype(&KorI420toYuv2) convert, Bytes& to) {
        convert(x.data(), kSize, x.data(), kBlocks, x.data() + 1, kBlocks, to.data(), 2 * kSize, kSize, kSize);
    };
    pack(&KorI420toYuv2_C_, expectedPacked);
    pack(&KorI420toYuv2, foundPacked);
    Check(expectedPacked == foundPacked, "KorI420toYuv2", 0);
}

}  // namespace

// Tries the target that is named, or all.
int main(int argc, char* argv[]) {
    std::array<const char*, 16> names;
    const KorSizeT count = KorYuv420Targets(names.data(), names.size());
    bool isKnown = argc == 1;
    for (KorSizeT i = 0; i < count && i < names.size(); ++i) {
        if (std::strcmp(names[i], argc > 1 ? argv[1] : names[i]) != 0 || std::strcmp(names[i], "portable") == 0) {
            continue;
        }
        isKnown = true;
        if (!KorYuv420SelectTarget(names[i])) {
            std::printf("%s: not run; this machine does not have it\n", names[i]);
            continue;
        }
        for (KorSizeT picture = 0; picture < kBlocks; ++picture) {
            TryCaptures(picture);
            TryRenders(picture);
            TryBlends(picture);
        }
        TryYuv2();
        std::printf("%s: tried; %d differences so far\n", names[i], failures);
    }
    if (!isKnown) {
        std::fprintf(stderr, "%s: no target '%s' to try\n", argv[0], argv[1]);
        return 2;
    }
    return failures != 0;
}
