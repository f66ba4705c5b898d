// Which cases the kit tries: that its lists hold what they promise.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "conformance/kit/Contents.h"
#include "conformance/kit/FarPlane.h"
#include "conformance/kit/Plan.h"
#include "tests/support/Frames.h"

namespace {

using Size = std::pair<std::size_t, std::size_t>;

// All cases of a function, in their order.
std::vector<kit::Case> CasesOf(const kit::Entry& entry, const kit::PlanOptions& options) {
    std::vector<kit::Case> cases;
    kit::ForEachCase(kit::MakePlan(entry, options), [&](const kit::Part&, const kit::Case& c) {
        cases.push_back(c);
        return true;
    });
    return cases;
}

kit::PlanOptions Full(std::size_t random = 5) {
    kit::PlanOptions options;
    options.seed = 420;
    options.randomSeed = 7;
    options.random = random;
    return options;
}

std::set<Size> SizesOf(const std::vector<kit::Case>& cases) {
    std::set<Size> sizes;
    for (const kit::Case& c : cases) {
        sizes.emplace(c.width, c.height);
    }
    return sizes;
}

// ---- Sizes and options -------------------------------------------------------------------------------------------

TEST(KitPlan, NumbersCasesThroughAndMakesTheSameOnesAgain) {
    const std::vector<kit::Case> first = CasesOf(kit::Find("KorI420AlphaBlend_C_"), Full());
    const std::vector<kit::Case> second = CasesOf(kit::Find("KorI420AlphaBlend_C_"), Full());
    ASSERT_EQ(first.size(), second.size());
    for (std::size_t i = 0; i < first.size(); ++i) {
        ASSERT_EQ(first[i].number, i + 1);
        ASSERT_EQ(kit::Describe(first[i]), kit::Describe(second[i]));
    }
}

TEST(KitPlan, MoreRandomCasesFollowTheSameOnes) {
    const std::vector<kit::Case> few = CasesOf(kit::Find("KorBGRAToI420_C_"), Full(5));
    const std::vector<kit::Case> many = CasesOf(kit::Find("KorBGRAToI420_C_"), Full(200));
    ASSERT_EQ(many.size(), few.size() + 195);
    for (std::size_t i = few.size() - 5; i < few.size(); ++i) {
        EXPECT_EQ(kit::Describe(few[i]), kit::Describe(many[i]));
    }
    std::size_t widest = 0, highest = 0;
    for (std::size_t i = few.size() - 5; i < many.size(); ++i) {
        widest = std::max(widest, many[i].width);
        highest = std::max(highest, many[i].height);
    }
    EXPECT_TRUE(widest > 1500 && widest <= 2000 && highest > 1500 && highest <= 2000) << widest << "x" << highest;
}

class KitPlanOf : public testing::TestWithParam<const kit::Entry*> {};

TEST_P(KitPlanOf, HasEveryWidthAndHeightUpToABlockAndTheLargeOnes) {
    const std::set<Size> sizes = SizesOf(CasesOf(*GetParam(), Full()));
    for (std::size_t size = 0; size <= 140; ++size) {
        const auto has = [&](auto accept) { return std::any_of(sizes.begin(), sizes.end(), accept); };
        EXPECT_TRUE(has([&](const Size& s) { return s.first == size && (size <= 40 || s.second >= 5); })) << size;
        EXPECT_TRUE(has([&](const Size& s) { return s.second == size && (size <= 12 || s.first >= 5); })) << size;
    }
    for (const Size& size :
         {Size{1280, 720}, {1366, 768}, {1921, 1081}, {16644, 4}, {65801, 2}, {2, 65538}, {64, 1200}}) {
        EXPECT_EQ(sizes.count(size), 1u) << size.first << "x" << size.second;
    }
}

TEST_P(KitPlanOf, ComesToEveryOptionAtLongRowsAndColumns) {
    const kit::Sweep options = GetParam()->options();
    std::set<std::string> wide, high;
    for (const kit::Case& c : CasesOf(*GetParam(), Full())) {
        if (c.width == 16644 || c.height == 1200) {
            (c.width == 16644 ? wide : high).insert(kit::NameOption(options, c));
        }
    }
    EXPECT_EQ(wide.size(), kit::CountOptions(options));
    EXPECT_EQ(high.size(), kit::CountOptions(options));
}

TEST_P(KitPlanOf, HasEveryOptionAtEveryDistanceOfRows) {
    kit::Sweep options = GetParam()->options();
    options.matrixPlaces = {kit::MatrixPlace::Own};
    std::set<std::string> found;
    for (const kit::Case& c : CasesOf(*GetParam(), Full())) {
        if (kit::AreFarApart(c.pitches) && c.width == 66) {
            found.insert(kit::NameOption(options, c) + ", pitches " + std::to_string(static_cast<int>(c.pitches)));
        }
    }
    EXPECT_EQ(found.size(), kit::CountOptions(options) * kit::FarPitches().size());
}

std::vector<const kit::Entry*> AllEntries() {
    std::vector<const kit::Entry*> entries;
    for (const kit::Entry& entry : kit::Catalogue()) {
        entries.push_back(&entry);
    }
    return entries;
}

std::string NameOf(const testing::TestParamInfo<const kit::Entry*>& function) {
    return function.param->name;
}

INSTANTIATE_TEST_SUITE_P(, KitPlanOf, testing::ValuesIn(AllEntries()), NameOf);

TEST(KitPlan, HasEveryWeightAndPlacesTheMatrixInEveryPlane) {
    std::set<int> alphas;
    std::set<std::size_t> rows;
    for (const kit::Case& c : CasesOf(kit::Find("KorI420AlphaBlend_C_"), Full())) {
        alphas.insert(c.pattern == kit::Pattern::Colours ? c.alpha : 0);
        rows.insert(c.yPosition);
    }
    EXPECT_EQ(alphas.size(), 256u);
    EXPECT_GT(*rows.rbegin(), 65536u);
    std::set<kit::MatrixPlace> places;
    for (const kit::Case& c : CasesOf(kit::Find("KorBGRAToI420General_C_"), Full())) {
        places.insert(c.matrixPlace);
    }
    EXPECT_EQ(places.size(), 6u);
}

// ---- Pictures ----------------------------------------------------------------------------------------------------

// The planes of a picture.
struct Picture {
    kit::Layout layout;
    std::vector<kit::Plane> planes;

    Picture(const char* function, std::size_t number, KorUint8 alpha = 0) {
        kit::Case c;
        c.width = c.height = 512;
        c.pattern = kit::Pattern::Colours;
        c.picture = number;
        c.alpha = alpha;
        layout = kit::LayOut(kit::Find(function), c);
        for (std::size_t i = 0; i < layout.count; ++i) {
            planes.emplace_back(layout.planes[i].shape);
            kit::FillSource(planes[i], layout, i, c);
        }
    }
};

TEST(KitContents, PicturesOfACaptureHoldEveryColour) {
    for (const char* function : {"KorARGBToI420_C_", "KorBGRAToI444_C_", "KorRawToI420_C_"}) {
        const kit::ColourPictures pictures = kit::PicturesOf(kit::Find(function));
        ASSERT_EQ(pictures.count, 256u);
        const Picture picture(function, 77);
        const kit::Plane& x = picture.planes[3];
        const std::size_t bytes = x.shape().rowBytes / 512, first = function[3] == 'A' ? 1 : 0;
        std::set<std::vector<std::uint8_t>> colours;
        for (std::size_t row = 0; row < 512; row += 2) {
            for (std::size_t column = 0; column < 512; column += 2) {
                const std::uint8_t* pixel = &x.At(row, bytes * column + first);
                colours.emplace(pixel, pixel + 3);
                ASSERT_TRUE(std::equal(pixel, pixel + 3, pixel + bytes) &&
                            std::equal(pixel, pixel + 3, pixel + x.pitch()));
            }
        }
        EXPECT_EQ(colours.size(), 65536u);
    }
}

TEST(KitContents, PicturesOfARendererHoldEveryColour) {
    for (const char* function : {"KorI420ToBGRA_C_", "KorI444ToBGRA_C_"}) {
        ASSERT_EQ(kit::PicturesOf(kit::Find(function)).count, 64u);
        const Picture picture(function, 9);
        const std::size_t step = picture.planes[1].shape().rows == 512 ? 1 : 2;
        std::set<std::uint32_t> colours;
        for (std::size_t row = 0; row < 512; ++row) {
            for (std::size_t column = 0; column < 512; ++column) {
                colours.insert(std::uint32_t{picture.planes[0].At(row, column)} << 16 |
                               std::uint32_t{picture.planes[1].At(row / step, column / step)} << 8 |
                               picture.planes[2].At(row / step, column / step));
            }
        }
        EXPECT_EQ(colours.size(), 4u * 65536u);
    }
}

TEST(KitContents, PicturesOfABlendBringEveryWeightToEveryPair) {
    std::vector<std::uint32_t> seen;
    for (std::size_t number = 0; number < 256; ++number) {
        const Picture picture("KorI420AlphaArrayBlend_C_", number);
        for (std::size_t row = 0; row < 256; ++row) {
            for (std::size_t column = 0; column < 256; ++column) {
                seen.push_back(std::uint32_t{picture.planes[1].At(row, column)} << 16 |
                               std::uint32_t{picture.planes[4].At(row, column)} << 8 |
                               picture.planes[7].At(row, column));
            }
        }
    }
    std::sort(seen.begin(), seen.end());
    EXPECT_EQ(std::unique(seen.begin(), seen.end()) - seen.begin(), 1 << 24);
}

// ---- Rows that lie far apart -------------------------------------------------------------------------------------

TEST(KitFarPlane, KeepsEveryByteAndReturnsIt) {
    for (const kit::Pitches pitches : kit::FarPitches()) {
        for (const kit::Placement placement : {kit::Placement::Rear, kit::Placement::Front}) {
            kit::PlaneShape shape = kit::ShapeWithSpares(66, 9, 1, 1);
            shape.pitch = 400;
            shape.margin = 30;
            const kit::Plane near(shape, placement);
            const kit::Bytes before = near.Snapshot();
            const kit::FarPlane far(near, pitches, 2);
            const kit::PlaneView view = far.View();
            EXPECT_GT(view.pitch, 65536u);
            for (std::size_t row = 0; row < 10; ++row) {
                ASSERT_TRUE(
                    std::equal(view.data + row * view.pitch, view.data + row * view.pitch + 67, &near.At(row, 0)));
            }
            std::fill_n(near.allocation(), near.allocationSize(), std::uint8_t{0});
            view.data[3 * view.pitch + 5] ^= 1;
            far.ReturnTo(near);
            near.At(3, 5) ^= 1;
            EXPECT_EQ(near.Snapshot(), before);
        }
    }
}

TEST(KitFarPlaneDeathTest, NothingLiesBetweenTheRows) {
    const kit::Plane near(kit::Shape(66, 9, 320));
    const kit::FarPlane far(near, kit::Pitches::Wide, 0);
    volatile std::uint8_t* between = far.View().data + far.View().pitch / 2;
    EXPECT_DEATH(between[0] = 1, "");
}

}  // namespace
