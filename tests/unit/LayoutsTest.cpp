// A byte order is one line: orders that no exported function has go through every driver, and must write what a
// function with a known order writes for the same picture.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <initializer_list>
#include <vector>

// The drivers are local to the source file.
#include "Kor/Video/Common/C/KorYuv420_C_.cpp"

namespace {

constexpr PackedLayout kYvyu = {0, 3, 1};
constexpr PackedLayout kVyuy = {1, 2, 0};
constexpr RgbLayout kGrba = {1, 0, 2, 3};
constexpr RgbLayout kGbar = {3, 0, 1, 2};

constexpr KorInt kCapture[3][3] = {{47, 157, 16}, {-26, -87, 112}, {112, -102, -10}};
constexpr RenderCoefficients kRender = {{{298, 0, 459}, {298, -55, -136}, {298, 541, 0}}};
constexpr RenderCoefficients kRenderWide = {{{9000, 0, 459}, {298, -9000, -136}, {298, 541, 0}}};

using Bytes = std::vector<KorUint8>;
using Sizes = std::initializer_list<std::size_t>;

// Every buffer has room before and behind it: odd widths leave their planes by contract.
constexpr std::size_t kMargin = 1 << 14;

struct Buffer {
    Bytes bytes = Bytes(4 * kMargin);

    KorUint8* Data() { return bytes.data() + kMargin; }
    void Fill(KorUint seed) {
        for (KorUint8& byte : bytes) {
            seed = seed * 1664525u + 1013904223u;
            byte = static_cast<KorUint8>(seed >> 24);
        }
    }
};

struct Planes {
    Buffer y, u, v;

    bool operator==(const Planes& other) const {
        return y.bytes == other.y.bytes && u.bytes == other.u.bytes && v.bytes == other.v.bytes;
    }
};

Planes NoisyPlanes() {
    Planes planes;
    planes.y.Fill(1);
    planes.u.Fill(2);
    planes.v.Fill(3);
    return planes;
}

// The bytes of `from`, group by group, with byte k of a group moved to places[k].
template <std::size_t size>
Buffer Moved(const Buffer& from, const std::array<std::size_t, size>& places) {
    Buffer to;
    for (std::size_t i = 0; i + size <= from.bytes.size() - kMargin; i += size) {
        for (std::size_t k = 0; k < size; ++k) {
            to.bytes[kMargin + i + places[k]] = from.bytes[kMargin + i + k];
        }
    }
    return to;
}

template <class Try>
void ForEachSize(Try tryOut) {
    for (const std::size_t width : Sizes{1, 2, 3, 34, 129, 300, 1100}) {
        for (const std::size_t height : Sizes{1, 2, 3}) {
            SCOPED_TRACE(testing::Message() << width << "x" << height);
            tryOut(width, height);
        }
    }
}

template <const PackedLayout& layout, class Known>
void ExpectPackedCapture(Known known) {
    Buffer x;
    x.Fill(4);
    for (const KorImageRotationDegree angle : {0u, 90u, 180u, 270u}) {
        for (const std::size_t width : Sizes{2, 3, 34, 300, 1100}) {
            for (const std::size_t height : Sizes{1, 2, 5, 19}) {
                SCOPED_TRACE(testing::Message() << width << "x" << height << " by " << angle);
                if (width * height > kMargin / 2) {
                    continue;
                }
                const std::size_t rows = height + height % 2;
                const std::size_t pitchY = angle % 180 == 0 ? width : rows;
                const std::size_t pitchC = angle % 180 == 0 ? (width + 1) / 2 : rows / 2;
                Planes own, twin;
                PackedToI420WithRotation<layout>({own.y.Data(), pitchY}, {own.u.Data(), pitchC}, {own.v.Data(), pitchC},
                                                 x.Data(), 2 * width, width, height, 1, angle);
                known(twin.y.Data(), pitchY, twin.v.Data(), pitchC, twin.u.Data(), pitchC, x.Data(), 2 * width, width,
                      height, 1, angle);
                EXPECT_TRUE(own == twin);
            }
        }
    }
}

template <const PackedLayout& layout, class Known>
void ExpectPacking(Known known) {
    Planes source = NoisyPlanes();
    ForEachSize([&](std::size_t width, std::size_t height) {
        Buffer own, twin;
        const ReadPlane y = {source.y.Data(), width};
        const ReadPlane u = {source.u.Data(), width};
        const ReadPlane v = {source.v.Data(), width};
        I420ToPacked<layout>(Source(y, u, v, 0, PackedWalk(width)), {own.Data(), 2 * width}, width, height);
        known(y.samples, width, v.samples, width, u.samples, width, twin.Data(), 2 * width, width, height,
              KOR_VIDEOFRAMEDITHERLEVEL_Off);
        EXPECT_EQ(own.bytes, twin.bytes);
    });
}

TEST(Layouts, YvyuIsYuy2WithExchangedChroma) {
    ExpectPackedCapture<kYvyu>(KorYUY2ToI420WithRotation_C_);
    ExpectPacking<kYvyu>(KorI420ToYUY2_C_);
}

TEST(Layouts, VyuyIsUyvyWithExchangedChroma) {
    ExpectPackedCapture<kVyuy>(KorUYVYToI420WithRotation_C_);
    ExpectPacking<kVyuy>(KorI420ToUYVY_C_);
}

TEST(Layouts, ThirdOrderOf24BitIsCapturedAndRendered) {
    Buffer rgb;
    rgb.Fill(5);
    Buffer grb = Moved<3>(rgb, {1, 0, 2});
    Planes source = NoisyPlanes();
    ForEachSize([&](std::size_t width, std::size_t height) {
        const std::size_t pitch = width + 1;
        Planes own, twin;
        Capture24Bit<kGrba>({own.y.Data(), pitch}, {own.u.Data(), pitch}, {own.v.Data(), pitch}, grb.Data(), 3 * width,
                            width, height, 1);
        KorRawToI420_C_(twin.y.Data(), pitch, twin.u.Data(), pitch, twin.v.Data(), pitch, rgb.Data(), 3 * width, width,
                        height, 1);
        EXPECT_TRUE(own == twin);

        Buffer ownPixels, twinPixels;
        const ReadPlane y = {source.y.Data(), width};
        const ReadPlane u = {source.u.Data(), width};
        const ReadPlane v = {source.v.Data(), width};
        I420To24Bit<kGrba>(Source(y, u, v, 0, I420Walk(width)), {ownPixels.Data(), 3 * width}, width, height);
        KorI420To24BG_C_(y.samples, width, u.samples, width, v.samples, width, twinPixels.Data(), 3 * width, width,
                         height, KOR_VIDEOFRAMEDITHERLEVEL_Off);
        EXPECT_EQ(ownPixels.bytes, Moved<3>(twinPixels, {2, 0, 1}).bytes);
    });
}

TEST(Layouts, FifthOrderOf32BitIsCaptured) {
    Buffer bgra;
    bgra.Fill(6);
    Buffer gbar = Moved<4>(bgra, {1, 0, 3, 2});
    ForEachSize([&](std::size_t width, std::size_t height) {
        const std::size_t pitch = width + 1;
        const auto expectSame = [&](auto capture, auto known) {
            Planes own, twin;
            const SourceRows rows = TopDown({gbar.Data(), 4 * width});
            capture(Plane{own.y.Data(), pitch}, Plane{own.u.Data(), pitch}, Plane{own.v.Data(), pitch}, rows);
            known(twin.y.Data(), pitch, twin.u.Data(), pitch, twin.v.Data(), pitch, bgra.Data(), 4 * width);
            EXPECT_TRUE(own == twin);
        };
        expectSame([&](auto... planes) { XXXXToI420_C_<kGbar>(planes..., width, height, kBt601); },
                   [&](auto... planes) { KorBGRAToI420_C_(planes..., width, height, 0); });
        expectSame([&](auto... planes) { XXXXToI444_C_<kGbar>(planes..., width, height, kBt709); },
                   [&](auto... planes) { KorBGRAToI444UsingBT709_C_(planes..., width, height, 0); });
        expectSame([&](auto... planes) { CaptureGeneral<kGbar>(planes..., width, height, kCapture); },
                   [&](auto... planes) { KorBGRAToI420General_C_(planes..., width, height, 0, kCapture); });
        expectSame([&](auto... planes) { CaptureGeneralOverlapping<kGbar>(planes..., width, height, kCapture); },
                   [&](auto... planes) { KorBGRAToI420General_C_(planes..., width, height, 0, kCapture); });
    });
}

TEST(Layouts, FifthOrderOf32BitIsRendered) {
    Planes source = NoisyPlanes();
    ForEachSize([&](std::size_t width, std::size_t height) {
        const ReadPlane y = {source.y.Data(), width};
        const ReadPlane u = {source.u.Data(), width};
        const ReadPlane v = {source.v.Data(), width};
        const SourcePlanes planes = Source(y, u, v, 0, I420Walk(width));
        const auto expectSame = [&](auto render, auto known) {
            Buffer own, twin;
            render(planes, Plane{own.Data(), 4 * width}, width, height);
            known(y.samples, width, u.samples, width, v.samples, width, twin.Data(), 4 * width, width, height);
            EXPECT_EQ(own.bytes, Moved<4>(twin, {1, 0, 3, 2}).bytes);
        };
        expectSame([](auto... arguments) { I420ToXXXX_C_<kGbar>(arguments..., kRenderBt601); },
                   [](auto... arguments) { KorI420ToBGRA_C_(arguments..., KOR_VIDEOFRAMEDITHERLEVEL_Off); });
        expectSame([](auto... arguments) { I444ToXXXX_C_<kGbar>(arguments..., kRenderBt709); },
                   [](auto... arguments) { KorI444ToBGRAUsingBT709_C_(arguments..., KOR_VIDEOFRAMEDITHERLEVEL_Off); });
        for (const RenderCoefficients& matrix : {kRender, kRenderWide}) {
            expectSame([&](auto... arguments) { I420ToXXXXGeneral<kGbar>(arguments..., matrix); },
                       [&](auto... arguments) {
                           KorI420ToBGRAGeneral_C_(arguments..., matrix.rows, KOR_VIDEOFRAMEDITHERLEVEL_Off);
                       });
        }
    });
}

}  // namespace
