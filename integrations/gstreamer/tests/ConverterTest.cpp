// Every pair, matrix, direction, many sizes, bands and threads: the bytes are those of the direct call.
#include "Converter.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "Expected.h"

namespace korgst {
namespace {

constexpr GstVideoOrientationMethod kMethods[] = {
    GST_VIDEO_ORIENTATION_IDENTITY, GST_VIDEO_ORIENTATION_90R,   GST_VIDEO_ORIENTATION_180,
    GST_VIDEO_ORIENTATION_90L,      GST_VIDEO_ORIENTATION_HORIZ, GST_VIDEO_ORIENTATION_VERT,
    GST_VIDEO_ORIENTATION_UL_LR,    GST_VIDEO_ORIENTATION_UR_LL,
};

std::string Name(const ExpectedPair& pair, Direction direction, const Picture& from) {
    return std::string(gst_video_format_to_string(pair.from)) + " to " + gst_video_format_to_string(pair.to) +
           ", matrix " + std::to_string(static_cast<int>(pair.matrix)) +
           (direction.flip ? ", flip, angle " : ", angle ") + std::to_string(direction.angle) + ", " +
           std::to_string(from.width) + "x" + std::to_string(from.height);
}

// Bytes beside the picture keep this value.
void Fill(Picture& picture, KorUint8 value) {
    for (std::vector<KorUint8>& plane : picture.planes) {
        std::fill(plane.begin(), plane.end(), value);
    }
}

void ExpectNothingBeside(const Picture& picture, KorUint8 value, const std::string& name) {
    for (int i = 0; i < picture.PlaneCount(); ++i) {
        for (KorSizeT row = 0; row <= picture.Rows(i); ++row) {
            for (KorSizeT column = row < picture.Rows(i) ? picture.RowBytes(i) : 0; column < picture.Pitch(i);
                 ++column) {
                ASSERT_EQ(picture.Row(i, row)[column], value) << name << ", plane " << i << ", beside row " << row;
            }
        }
    }
}

void Check(const ExpectedPair& pair, Direction direction, const Picture& from, unsigned threads) {
    const std::string name = Name(pair, direction, from) + ", " + std::to_string(threads) + " threads";
    const Picture expected = Expected(from, pair.to, pair.matrix, direction);
    Picture got(pair.to, expected.width, expected.height);
    Fill(got, 0x5a);
    Picture source = from;
    Workers workers;
    workers.SetThreads(threads);
    Converter converter(pair.from, pair.to, pair.matrix);
    converter.SetDirection(direction);
    converter.Run(source.View(), got.View(), workers);
    ASSERT_EQ(Difference(got, expected), "") << name;
    ExpectNothingBeside(got, 0x5a, name);
}

TEST(Converter, HasExactlyTheExpectedPairs) {
    const std::vector<ExpectedPair> expected = ExpectedPairs();
    for (int from = GST_VIDEO_FORMAT_I420; from < GST_VIDEO_FORMAT_P012_BE; ++from) {
        for (int to = GST_VIDEO_FORMAT_I420; to < GST_VIDEO_FORMAT_P012_BE; ++to) {
            const bool wanted = std::any_of(expected.begin(), expected.end(), [&](const ExpectedPair& pair) {
                return pair.from == from && pair.to == to;
            });
            EXPECT_EQ(HasPair(static_cast<GstVideoFormat>(from), static_cast<GstVideoFormat>(to)), wanted)
                << from << " " << to;
        }
    }
    for (const ExpectedPair& pair : expected) {
        EXPECT_TRUE(HasPair(pair.from, pair.to, pair.matrix)) << pair.from << " " << pair.to;
    }
    EXPECT_FALSE(HasPair(GST_VIDEO_FORMAT_BGRA, GST_VIDEO_FORMAT_Y444, Matrix::Bt2020));
}

TEST(Converter, SmallSizesInEveryDirection) {
    std::mt19937 random(1);
    constexpr KorSizeT sizes[][2] = {{1, 1}, {2, 1}, {1, 2},  {2, 2},   {3, 3},
                                     {5, 4}, {4, 5}, {16, 9}, {33, 18}, {7, 131}};
    for (const ExpectedPair& pair : ExpectedPairs()) {
        for (const auto& [width, height] : sizes) {
            const Picture from = RandomPicture(pair.from, width, height, random);
            for (const GstVideoOrientationMethod method : kMethods) {
                ASSERT_NO_FATAL_FAILURE(Check(pair, DirectionOf(method), from, 1));
            }
        }
    }
}

TEST(Converter, SeveralBandsAndThreads) {
    std::mt19937 random(2);
    constexpr KorSizeT sizes[][2] = {{402, 262}, {403, 265}};
    for (const ExpectedPair& pair : ExpectedPairs()) {
        for (const auto& [width, height] : sizes) {
            const Picture from = RandomPicture(pair.from, width, height, random);
            for (const GstVideoOrientationMethod method : kMethods) {
                ASSERT_NO_FATAL_FAILURE(
                    Check(pair, DirectionOf(method), from, 1 + static_cast<unsigned>(random() % 5)));
            }
        }
    }
}

TEST(Converter, MoreThreadsThanRows) {
    std::mt19937 random(3);
    for (const ExpectedPair& pair : ExpectedPairs()) {
        ASSERT_NO_FATAL_FAILURE(Check(pair, {false, 90}, RandomPicture(pair.from, 6, 5, random), 9));
    }
}

// The noise differs from call to call and is at most 8 steps of luma at the strongest level.
TEST(Converter, DitherIsCloseToThePlainResultAndCoversIt) {
    std::mt19937 random(4);
    for (const ExpectedPair& pair : ExpectedPairs()) {
        if (!CanDither(pair.to)) {
            continue;
        }
        Picture from = RandomPicture(pair.from, 37, 23, random);
        Fill(from, 128);
        const Picture plain = Expected(from, pair.to, pair.matrix, {});
        Picture got(pair.to, 37, 23);
        Workers workers;
        Converter converter(pair.from, pair.to, pair.matrix);
        converter.SetDither(KOR_VIDEOFRAMEDITHERLEVEL_2);
        converter.Run(from.View(), got.View(), workers);
        KorSizeT changed = 0;
        for (KorSizeT row = 0; row < 23; ++row) {
            for (KorSizeT i = 0; i < got.RowBytes(0); ++i) {
                const int difference = got.Row(0, row)[i] - plain.Row(0, row)[i];
                ASSERT_LT(std::abs(difference), 200) << Name(pair, {}, from);
                changed += difference != 0;
            }
            // Also in the last column and row of an odd size: nothing is left undithered by rule.
        }
        EXPECT_GT(changed, got.RowBytes(0) * 23 / 4) << Name(pair, {}, from);
    }
}

TEST(Converter, FieldsAreRowsOfTheFrame) {
    std::mt19937 random(5);
    Picture frame = RandomPicture(GST_VIDEO_FORMAT_I420, 8, 8, random);
    const FrameView view = frame.View();
    const FrameView lower = FieldOf(view, 1);
    EXPECT_EQ(lower.height, 4u);
    EXPECT_EQ(lower.planes[0].Row(1), frame.Row(0, 3));
    EXPECT_EQ(lower.planes[1].height, 2u);
    EXPECT_EQ(lower.planes[2].Row(1), frame.Row(2, 3));
}

}  // namespace
}  // namespace korgst
