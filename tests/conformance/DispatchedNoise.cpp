// Dither with the noise that a product has: the dispatched functions checked against the portable ones with the default
// table. The kit's own table has the extremes of 16 bits in it, so that pictures which walk all of it never use noise
// in bytes. Arguments and exit status are those of Dispatched.cpp.
#include <cstdio>
#include <cstring>
#include <random>
#include <vector>

#include "Kor/Os/KorRandom.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "Kor/Video/Common/KorYuv420.h"
#include "tests/support/NamedTarget.h"

namespace {

// What the random service hands out, or else the last start that there is, and the sizes that it was asked for.
std::mt19937 randomBytes;
bool isLastStart = false;
std::vector<KorSizeT> draws;

using Bytes = std::vector<KorUint8>;

struct Size {
    KorSizeT width, height;
};

// Narrow, odd, around the strips of noise and of staged rows, and large enough to walk the whole table.
constexpr Size kSizes[] = {{64, 2},   {127, 3},  {128, 2},  {129, 5},  {514, 66}, {1000, 40}, {2048, 9}, {3327, 6},
                           {3328, 8}, {3329, 6}, {3521, 4}, {6656, 4}, {6657, 5}, {6658, 4},  {7001, 4}, {9986, 4}};

// The numbers of columns or rows outgrow 16 bits.
constexpr Size kLong[] = {{137802, 2}, {66, 131204}};

Bytes RandomPlane(std::mt19937& generator, KorSizeT size) {
    Bytes plane(size);
    for (KorUint8& sample : plane) {
        sample = static_cast<KorUint8>(generator());
    }
    return plane;
}

struct Outcome {
    Bytes y, u, v;
    std::vector<KorSizeT> draws;

    bool operator==(const Outcome& other) const {
        return y == other.y && u == other.u && v == other.v && draws == other.draws;
    }
};

// Runs a function with given random starts.
template <class Call>
Outcome Run(KorUint seed, const Outcome& before, Call call) {
    Outcome after = before;
    randomBytes.seed(seed);
    isLastStart = seed % 3 == 0;
    draws.clear();
    call(after);
    after.draws = draws;
    return after;
}

int failures = 0;

template <class Convert, class Reference>
void Compare(const char* name, Size size, KorUint level, KorUint seed, const Outcome& before, Convert convert,
             Reference reference) {
    if (!(Run(seed, before, convert) == Run(seed, before, reference))) {
        std::printf("%s differs: %zux%zu, level %u, seed %u\n", name, static_cast<size_t>(size.width),
                    static_cast<size_t>(size.height), level, seed);
        ++failures;
    }
}

using Render = decltype(&KorI420ToBGRA_C_);

struct Renderer {
    const char* name;
    Render dispatched, portable;
    KorSizeT pixelBytes;
};

#define KOR_RENDERER(name, pixelBytes) \
    { #name, &name, &name##_C_, pixelBytes }
constexpr Renderer kRenderers[] = {KOR_RENDERER(KorI420ToRGBA, 4),           KOR_RENDERER(KorI420ToBGRA, 4),
                                   KOR_RENDERER(KorI420ToARGB, 4),           KOR_RENDERER(KorI420ToABGR, 4),
                                   KOR_RENDERER(KorI444ToBGRA, 4),           KOR_RENDERER(KorI444ToBGRAUsingBT709, 4),
                                   KOR_RENDERER(KorI420ToBGRAUsingBT709, 4), KOR_RENDERER(KorI420To24BG, 3),
                                   KOR_RENDERER(KorI420ToYUY2, 2),           KOR_RENDERER(KorI420ToUYVY, 2)};

// Room for a picture, and where it is: every other one begins and has its rows where KOR_STREAMING=always streams.
struct Place {
    KorSizeT offset, pitch, bytes;

    Place(Size size, KorSizeT pixelBytes, KorUint seed)
        : offset(seed / 2 % kAlignment),
          pitch(seed % 2 == 0 ? pixelBytes * size.width + 5
                              : (pixelBytes * size.width + kAlignment - 1) / kAlignment * kAlignment),
          bytes(offset + pitch * size.height) {}

    static constexpr KorSizeT kAlignment = 64;
};

constexpr KorInt kMatrix[3][3] = {{299, 0, 409}, {298, -100, -208}, {298, 516, 0}};

void CompareAll(Size size, KorVideoFrameDitherLevel level, KorUint seed) {
    std::mt19937 generator(seed);
    const KorSizeT width = size.width;
    const KorSizeT samples = width * size.height;
    const Bytes y = RandomPlane(generator, samples);
    const Bytes u = RandomPlane(generator, samples);
    const Bytes v = RandomPlane(generator, samples);
    for (const Renderer& renderer : kRenderers) {
        const Place x(size, renderer.pixelBytes, seed);
        const auto with = [&](Render render) {
            return [&, render](Outcome& o) {
                render(y.data(), width, u.data(), width, v.data(), width, o.y.data() + x.offset, x.pitch, width,
                       size.height, level);
            };
        };
        Compare(renderer.name, size, level, seed, {Bytes(x.bytes, 7), {}, {}, {}}, with(renderer.dispatched),
                with(renderer.portable));
    }
    const Place x(size, 4, seed);
    const auto general = [&](decltype(&KorI420ToBGRAGeneral_C_) render) {
        return [&, render](Outcome& o) {
            render(y.data(), width, u.data(), width, v.data(), width, o.y.data() + x.offset, x.pitch, width,
                   size.height, kMatrix, level);
        };
    };
    Compare("KorI420ToBGRAGeneral", size, level, seed, {Bytes(x.bytes, 7), {}, {}, {}}, general(&KorI420ToBGRAGeneral),
            general(&KorI420ToBGRAGeneral_C_));
    // In place, and with fixed starts every other time.
    const auto filter = [&](decltype(&KorI420Dither_C_) dither) {
        return [&, dither](Outcome& o) {
            dither(o.y.data(), width, o.u.data(), width, o.v.data(), width, o.y.data(), width, o.u.data(), width,
                   o.v.data(), width, width, size.height, level, seed % 2);
        };
    };
    Compare("KorI420Dither", size, level, seed, {y, u, v, {}}, filter(&KorI420Dither), filter(&KorI420Dither_C_));
}

}  // namespace

KorBool KorRandomGetBytes(char* buffer, KorSizeT count) {
    draws.push_back(count);
    for (KorSizeT i = 0; i < count; ++i) {
        buffer[i] = static_cast<char>(isLastStart ? 0xff : randomBytes() >> 24);
    }
    return 1;
}

int main(int argc, char** argv) {
    SelectNamedTarget(argc, argv);
    KorUint seed = 420;
    for (const Size size : kSizes) {
        for (KorUint level = 0; level <= 4; ++level) {
            CompareAll(size, static_cast<KorVideoFrameDitherLevel>(level), seed++);
            CompareAll(size, static_cast<KorVideoFrameDitherLevel>(level), seed++);
        }
    }
    for (const Size size : kLong) {
        CompareAll(size, KOR_VIDEOFRAMEDITHERLEVEL_2, seed++);
    }
    std::printf("%s: %d differences, first seed 420\n", argv[1], failures);
    return failures != 0;
}
