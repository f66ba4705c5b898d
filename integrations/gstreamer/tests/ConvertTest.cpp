// korconvert in a harness, as an application uses it.
#include <gst/check/gstharness.h>
#include <gtest/gtest.h>

#include "Expected.h"

namespace korgst {
namespace {

const char* ColorimetryOf(const ExpectedPair& pair) {
    switch (pair.matrix) {
        case Matrix::Bt601:
            return GST_VIDEO_COLORIMETRY_BT601;
        case Matrix::Bt709:
            return GST_VIDEO_COLORIMETRY_BT709;
        case Matrix::Bt2020:
            return GST_VIDEO_COLORIMETRY_BT2020;
        case Matrix::None:
            break;
    }
    return nullptr;
}

// A harness around korconvert with the properties of a pipeline description.
class Harness {
  public:
    explicit Harness(const std::string& properties)
        : harness_(gst_harness_new_parse(("korconvert " + properties).c_str())) {}
    ~Harness() { gst_harness_teardown(harness_); }
    Harness(const Harness&) = delete;
    Harness& operator=(const Harness&) = delete;

    GstHarness* get() const { return harness_; }

    // Fixed caps in, and what is wanted out.
    void Negotiate(const Picture& from, const char* colours, const Picture& to, const char* coloursOut) {
        gst_harness_set_sink_caps(harness_, CapsOf(to, coloursOut));
        gst_harness_set_src_caps(harness_, CapsOf(from, colours));
    }

    Picture Convert(const Picture& from, KorSizeT padding) {
        GstBuffer* out = gst_harness_push_and_pull(harness_, BufferOf(from, padding));
        GstCaps* caps = gst_pad_get_current_caps(harness_->sinkpad);
        Picture got = PictureOf(out, caps);
        gst_caps_unref(caps);
        gst_buffer_unref(out);
        return got;
    }

  private:
    GstHarness* harness_;
};

TEST(KorConvert, EveryPairAndDirectionWithAndWithoutPaddedStrides) {
    std::mt19937 random(11);
    constexpr const char* kDirections[] = {"identity", "90r", "180", "90l", "horiz", "vert", "ul-lr", "ur-ll"};
    for (const ExpectedPair& pair : ExpectedPairs()) {
        for (int method = 0; method < 8; ++method) {
            const Direction direction = DirectionOf(static_cast<GstVideoOrientationMethod>(method));
            for (const KorSizeT padding : {KorSizeT{0}, KorSizeT{13}}) {
                const Picture from = RandomPicture(pair.from, 34 + random() % 2, 18 + random() % 2, random);
                const Picture expected = Expected(from, pair.to, pair.matrix, direction);
                Harness harness(std::string("video-direction=") + kDirections[method]);
                const char* colours = ColorimetryOf(pair);
                harness.Negotiate(from, IsRgb(pair.from) ? "sRGB" : colours, expected, IsRgb(pair.to) ? "sRGB" : colours);
                EXPECT_EQ(Difference(harness.Convert(from, padding), expected), "")
                    << gst_video_format_to_string(pair.from) << " to " << gst_video_format_to_string(pair.to) << " "
                    << kDirections[method] << ", padding " << padding;
            }
        }
    }
}

}  // namespace
}  // namespace korgst
