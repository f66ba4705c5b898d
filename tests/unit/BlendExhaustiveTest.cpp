// All 2^24 triples of background, foreground and weight through both blends.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "Kor/Video/Common/C/KorYuv420_C_.h"

namespace {

// Background samples count up from row to row, foreground samples from column to column.
struct AllPairs {
    std::vector<KorUint8> background, foreground;

    AllPairs() : background(65536), foreground(65536) {
        for (std::size_t i = 0; i < 65536; ++i) {
            background[i] = static_cast<KorUint8>(i / 256);
            foreground[i] = static_cast<KorUint8>(i % 256);
        }
    }
};

// The first sample that differs from the documented formula, or -1.
int FirstWrong(const std::vector<KorUint8>& blended, unsigned alpha) {
    for (unsigned i = 0; i < 65536; ++i) {
        const unsigned sum = i / 256 * (255 - alpha) + i % 256 * alpha;
        if (blended[i] != (sum + sum / 256 + 1) / 256) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

TEST(AllBlends, OneWeight) {
    const AllPairs pairs;
    for (unsigned alpha = 0; alpha < 256; ++alpha) {
        // The chroma planes are a quarter of the size, so they hold the first 128 rows and columns.
        std::vector<KorUint8> y = pairs.background, u = pairs.background, v = pairs.background;
        KorI420AlphaBlend_C_(y.data(), 256, u.data(), 256, v.data(), 256, pairs.foreground.data(), 256,
                             pairs.foreground.data(), 256, pairs.foreground.data(), 256, 256, 256, 0, 0,
                             static_cast<KorUint8>(alpha));
        ASSERT_EQ(FirstWrong(y, alpha), -1) << alpha;
        ASSERT_EQ(u, v);
        for (std::size_t row = 0; row < 128; ++row) {
            ASSERT_TRUE(std::equal(&u[row * 256], &u[row * 256 + 128], &y[row * 256])) << alpha;
        }
    }
}

TEST(AllBlends, WeightForEverySample) {
    const AllPairs pairs;
    for (unsigned alpha = 0; alpha < 256; ++alpha) {
        std::vector<KorUint8> weights(65536, static_cast<KorUint8>(alpha));
        std::vector<KorUint8> y = pairs.background, u = pairs.background, v = pairs.background;
        KorI420AlphaArrayBlend_C_(y.data(), 256, u.data(), 256, v.data(), 256, pairs.foreground.data(), 256,
                                  pairs.foreground.data(), 256, pairs.foreground.data(), 256, 256, 256, 0, 0,
                                  weights.data(), 256, weights.data(), 256, weights.data(), 256);
        ASSERT_EQ(FirstWrong(y, alpha), -1) << alpha;
        ASSERT_EQ(u, v);
    }
}

}  // namespace
