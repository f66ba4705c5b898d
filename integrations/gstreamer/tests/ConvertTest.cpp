// korconvert in a harness, as an application uses it.
#include <gst/check/gstharness.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <string>

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
                harness.Negotiate(from, IsRgb(pair.from) ? "sRGB" : colours, expected,
                                  IsRgb(pair.to) ? "sRGB" : colours);
                EXPECT_EQ(Difference(harness.Convert(from, padding), expected), "")
                    << gst_video_format_to_string(pair.from) << " to " << gst_video_format_to_string(pair.to) << " "
                    << kDirections[method] << ", padding " << padding;
            }
        }
    }
}

// ---- Negotiation ----

// What korconvert makes of caps that come in, if anything may follow.
std::string CapsAfter(const char* properties, const char* in, const char* sink) {
    Harness harness(properties);
    gst_harness_set_sink_caps_str(harness.get(), sink);
    gst_harness_set_src_caps_str(harness.get(), in);
    GstBuffer* buffer = gst_buffer_new_allocate(nullptr, 64 * 48 * 4, nullptr);
    gst_buffer_memset(buffer, 0, 128, 64 * 48 * 4);
    GstCaps* caps = gst_harness_push(harness.get(), buffer) == GST_FLOW_OK
                        ? gst_pad_get_current_caps(harness.get()->sinkpad)
                        : nullptr;
    if (caps == nullptr) {
        return "not negotiated";
    }
    gchar* text = gst_caps_to_string(caps);
    const std::string result = text;
    g_free(text);
    gst_caps_unref(caps);
    return result;
}

bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

constexpr const char* kAny = "video/x-raw";

TEST(KorConvertCaps, SameFormatPassesThroughUnchanged) {
    const std::string in = "video/x-raw, format=(string)BGRA, width=(int)64, height=(int)48, framerate=(fraction)25/1";
    EXPECT_EQ(CapsAfter("", in.c_str(), kAny), in);
}

TEST(KorConvertCaps, OnlyPairsWithAFunctionAreOffered) {
    const char* nv12 = "video/x-raw,format=NV12,width=64,height=48,framerate=25/1";
    EXPECT_TRUE(Has(CapsAfter("", nv12, "video/x-raw,format=I420"), "I420"));
    EXPECT_EQ(CapsAfter("", nv12, "video/x-raw,format=BGRA"), "not negotiated");
    EXPECT_EQ(CapsAfter("", "video/x-raw,format=RGBA,width=64,height=48,framerate=25/1", "video/x-raw,format=BGRA"),
              "not negotiated");
    EXPECT_EQ(CapsAfter("", "video/x-raw,format=I420,width=64,height=48,framerate=25/1", "video/x-raw,format=RGB"),
              "not negotiated");
}

TEST(KorConvertCaps, ColoursFollowTheSizeUnlessTheyAreAskedFor) {
    const char* small = "video/x-raw,format=BGRA,width=64,height=48,framerate=25/1";
    const char* large = "video/x-raw,format=BGRA,width=4,height=720,framerate=25/1";
    const char* i420 = "video/x-raw,format=I420";
    EXPECT_TRUE(Has(CapsAfter("", small, i420), "bt601"));
    EXPECT_TRUE(Has(CapsAfter("", large, i420), "bt709"));
    EXPECT_TRUE(Has(CapsAfter("", small, "video/x-raw,format=I420,colorimetry=bt709"), "bt709"));
    EXPECT_TRUE(Has(CapsAfter("", small, i420), "chroma-site=(string)jpeg"));
    EXPECT_EQ(CapsAfter("", small, "video/x-raw,format=I420,colorimetry=1:4:0:0"), "not negotiated");
}

TEST(KorConvertCaps, UnknownMatricesAndFullRangeAreRefusedForRgbAlone) {
    for (const char* colours : {"1:4:0:0", "smpte240m", "2:2:5:1", "2:0:0:0"}) {
        const std::string in =
            std::string("video/x-raw,format=YV12,width=64,height=48,framerate=25/1,colorimetry=") + colours;
        EXPECT_EQ(CapsAfter("", in.c_str(), "video/x-raw,format=BGRA"), "not negotiated") << colours;
        EXPECT_TRUE(Has(CapsAfter("", in.c_str(), "video/x-raw,format=I420"), "I420")) << colours;
    }
    EXPECT_EQ(CapsAfter("", "video/x-raw,format=BGRA,width=64,height=48,framerate=25/1,colorimetry=2:1:7:1",
                        "video/x-raw,format=I420"),
              "not negotiated");
    EXPECT_EQ(CapsAfter("", "video/x-raw,format=Y444,width=64,height=48,framerate=25/1,colorimetry=bt2020",
                        "video/x-raw,format=BGRA"),
              "not negotiated");
}

TEST(KorConvertCaps, PrimariesAndTransferAreKept) {
    const std::string caps = CapsAfter(
        "", "video/x-raw,format=I420,width=64,height=48,framerate=25/1,colorimetry=2:4:5:4", "video/x-raw,format=BGRA");
    EXPECT_TRUE(Has(caps, "1:1:5:4")) << caps;
}

TEST(KorConvertCaps, QuarterTurnsExchangeSizesAndPixelAspects) {
    const std::string caps = CapsAfter(
        "video-direction=90r", "video/x-raw,format=YUY2,width=64,height=48,framerate=25/1,pixel-aspect-ratio=16/11",
        "video/x-raw,format=I420");
    EXPECT_TRUE(Has(caps, "width=(int)48") && Has(caps, "height=(int)64") && Has(caps, "11/16")) << caps;
}

TEST(KorConvertCaps, FieldsAreNotTurnedIntoColumns) {
    const char* fields = "video/x-raw,format=YUY2,width=64,height=48,framerate=25/1,interlace-mode=interleaved";
    EXPECT_EQ(CapsAfter("video-direction=90r", fields, "video/x-raw,format=I420"), "not negotiated");
    EXPECT_EQ(CapsAfter("video-direction=ur-ll", fields, "video/x-raw,format=I420"), "not negotiated");
    EXPECT_TRUE(Has(CapsAfter("video-direction=180", fields, "video/x-raw,format=I420"), "interleaved"));
    EXPECT_EQ(CapsAfter("", "video/x-raw,format=YUY2,width=64,height=46,framerate=25/1,interlace-mode=interleaved",
                        "video/x-raw,format=I420"),
              "not negotiated");
}

TEST(KorConvertCaps, DitherRulesOutY444) {
    const char* bgra = "video/x-raw,format=BGRA,width=64,height=48,framerate=25/1";
    EXPECT_TRUE(Has(CapsAfter("dither=1", bgra, "video/x-raw,format=I420"), "I420"));
    EXPECT_EQ(CapsAfter("dither=1", bgra, "video/x-raw,format=Y444"), "not negotiated");
}

// ---- Streams ----

TEST(KorConvert, RenegotiatesInMidStream) {
    std::mt19937 random(12);
    Harness harness("");
    gst_harness_set_sink_caps_str(harness.get(), "video/x-raw,format=I420");
    for (int round = 0; round < 3; ++round) {
        for (const GstVideoFormat format : {GST_VIDEO_FORMAT_UYVY, GST_VIDEO_FORMAT_NV21, GST_VIDEO_FORMAT_Y42B}) {
            const Picture from = RandomPicture(format, 30 + random() % 40, 20 + random() % 40, random);
            gst_harness_set_src_caps(harness.get(), CapsOf(from, nullptr));
            EXPECT_EQ(Difference(harness.Convert(from, 0), Expected(from, GST_VIDEO_FORMAT_I420, Matrix::None, {})),
                      "");
        }
    }
}

// Converts to I420 in one direction after the other without a pause.
void ExpectDirections(const Picture& from, const char* colorimetry, Matrix matrix, std::initializer_list<int> methods) {
    Harness harness("");
    const std::string caps = "video/x-raw,format=I420";
    gst_harness_set_sink_caps_str(harness.get(),
                                  (matrix == Matrix::Bt709 ? caps + ",colorimetry=bt709" : caps).c_str());
    gst_harness_set_src_caps(harness.get(), CapsOf(from, colorimetry));
    GstElement* element = gst_harness_find_element(harness.get(), "korconvert");
    for (const int method : methods) {
        g_object_set(element, "video-direction", method, nullptr);
        const Direction direction = DirectionOf(static_cast<GstVideoOrientationMethod>(method));
        EXPECT_EQ(Difference(harness.Convert(from, 0), Expected(from, GST_VIDEO_FORMAT_I420, matrix, direction)), "")
            << method;
    }
    gst_object_unref(element);
}

TEST(KorConvert, TakesAnotherDirectionInMidStream) {
    std::mt19937 random(13);
    ExpectDirections(RandomPicture(GST_VIDEO_FORMAT_BGRA, 36, 20, random), "sRGB", Matrix::Bt709,
                     {0, 1, 3, 7, 6, 2, 5, 0, 4, 1, 0});
}

TEST(KorConvert, SameCapsAreRotatedAndThenPassedThroughAgain) {
    std::mt19937 random(14);
    ExpectDirections(RandomPicture(GST_VIDEO_FORMAT_I420, 33, 33, random), nullptr, Matrix::None, {0, 1, 3, 0, 5});
}

TEST(KorConvert, AutoFollowsTheTagAndTakesItAway) {
    std::mt19937 random(15);
    const Picture from = RandomPicture(GST_VIDEO_FORMAT_YUY2, 36, 20, random);
    Harness harness("video-direction=auto");
    gst_harness_set_sink_caps_str(harness.get(), "video/x-raw,format=I420");
    gst_harness_set_src_caps(harness.get(), CapsOf(from, nullptr));
    gst_harness_push_event(harness.get(),
                           gst_event_new_tag(gst_tag_list_new(GST_TAG_IMAGE_ORIENTATION, "rotate-90", nullptr)));
    EXPECT_EQ(Difference(harness.Convert(from, 0), Expected(from, GST_VIDEO_FORMAT_I420, Matrix::None, {false, 90})),
              "");
    bool rewritten = false;
    while (GstEvent* event = gst_harness_try_pull_event(harness.get())) {
        GstTagList* tags = nullptr;
        gchar* orientation = nullptr;
        if (GST_EVENT_TYPE(event) == GST_EVENT_TAG) {
            gst_event_parse_tag(event, &tags);
            gst_tag_list_get_string(tags, GST_TAG_IMAGE_ORIENTATION, &orientation);
            rewritten = g_strcmp0(orientation, "rotate-0") == 0;
            g_free(orientation);
        }
        gst_event_unref(event);
    }
    EXPECT_TRUE(rewritten);
    gst_harness_push_event(harness.get(),
                           gst_event_new_tag(gst_tag_list_new(GST_TAG_IMAGE_ORIENTATION, "flip-rotate-180", nullptr)));
    EXPECT_EQ(Difference(harness.Convert(from, 0), Expected(from, GST_VIDEO_FORMAT_I420, Matrix::None, {true, 0})), "");
}

TEST(KorConvert, InterlacedFramesAreConvertedFieldByField) {
    std::mt19937 random(16);
    for (const bool flip : {false, true}) {
        Picture from = RandomPicture(GST_VIDEO_FORMAT_UYVY, 20, 16, random);
        Harness harness(flip ? "video-direction=vert" : "");
        gst_harness_set_sink_caps_str(harness.get(), "video/x-raw,format=I420");
        gst_harness_set_src_caps_str(harness.get(),
                                     "video/x-raw,format=UYVY,width=20,height=16,framerate=25/1,"
                                     "interlace-mode=mixed");
        GstBuffer* in = BufferOf(from, 0);
        GST_BUFFER_FLAG_SET(in, GST_VIDEO_BUFFER_FLAG_INTERLACED | GST_VIDEO_BUFFER_FLAG_TFF);
        GstBuffer* out = gst_harness_push_and_pull(harness.get(), in);
        EXPECT_TRUE(GST_BUFFER_FLAG_IS_SET(out, GST_VIDEO_BUFFER_FLAG_INTERLACED));
        EXPECT_EQ(GST_BUFFER_FLAG_IS_SET(out, GST_VIDEO_BUFFER_FLAG_TFF), !flip);
        GstCaps* caps = gst_pad_get_current_caps(harness.get()->sinkpad);
        const Picture got = PictureOf(out, caps);
        gst_caps_unref(caps);
        gst_buffer_unref(out);
        for (KorSizeT field = 0; field < 2; ++field) {
            Picture half(GST_VIDEO_FORMAT_UYVY, 20, 8);
            for (KorSizeT row = 0; row < 8; ++row) {
                std::copy_n(from.Row(0, 2 * row + field), half.RowBytes(0), half.Row(0, row));
            }
            const Picture expected = Expected(half, GST_VIDEO_FORMAT_I420, Matrix::None, {flip, 0});
            const KorSizeT place = flip ? 1 - field : field;
            for (int plane = 0; plane < 3; ++plane) {
                for (KorSizeT row = 0; row < expected.Rows(plane); ++row) {
                    const KorUint8* wanted = expected.Row(plane, row);
                    EXPECT_TRUE(std::equal(wanted, wanted + expected.RowBytes(plane), got.Row(plane, 2 * row + place)))
                        << plane << " " << row;
                }
            }
        }
    }
}

TEST(KorConvert, TimesAndMetadataArePassedOnAndRegionsFollowThePicture) {
    std::mt19937 random(17);
    const Picture from = RandomPicture(GST_VIDEO_FORMAT_NV12, 40, 30, random);
    Harness harness("video-direction=90r");
    gst_harness_set_sink_caps_str(harness.get(), "video/x-raw,format=I420");
    gst_harness_set_src_caps(harness.get(), CapsOf(from, nullptr));
    GstBuffer* in = BufferOf(from, 5);
    GST_BUFFER_PTS(in) = 7 * GST_SECOND;
    GST_BUFFER_DURATION(in) = 40 * GST_MSECOND;
    GST_BUFFER_OFFSET(in) = 99;
    GstCaps* reference = gst_caps_new_empty_simple("timestamp/x-test");
    gst_buffer_add_reference_timestamp_meta(in, reference, 123, GST_CLOCK_TIME_NONE);
    gst_caps_unref(reference);
    gst_buffer_add_video_region_of_interest_meta(in, "face", 2, 3, 10, 5);
    const guint8 caption[] = {1, 2, 3};
    gst_buffer_add_video_caption_meta(in, GST_VIDEO_CAPTION_TYPE_CEA608_RAW, caption, sizeof caption);
    GstBuffer* out = gst_harness_push_and_pull(harness.get(), in);
    EXPECT_EQ(GST_BUFFER_PTS(out), 7 * GST_SECOND);
    EXPECT_EQ(GST_BUFFER_DURATION(out), 40 * GST_MSECOND);
    EXPECT_EQ(GST_BUFFER_OFFSET(out), 99u);
    EXPECT_NE(gst_buffer_get_reference_timestamp_meta(out, nullptr), nullptr);
    EXPECT_NE(gst_buffer_get_video_caption_meta(out), nullptr);
    const auto* region = reinterpret_cast<GstVideoRegionOfInterestMeta*>(
        gst_buffer_get_meta(out, GST_VIDEO_REGION_OF_INTEREST_META_API_TYPE));
    ASSERT_NE(region, nullptr);
    EXPECT_EQ(region->x, 30u - 3 - 5);
    EXPECT_EQ(region->y, 2u);
    EXPECT_EQ(region->w, 5u);
    EXPECT_EQ(region->h, 10u);
    gst_buffer_unref(out);
}

TEST(KorConvert, PointersAreToldWhereTheyAreInThePictureThatComesIn) {
    std::mt19937 random(18);
    const Picture from = RandomPicture(GST_VIDEO_FORMAT_NV12, 40, 30, random);
    for (int method = 0; method < 8; ++method) {
        const Direction direction = DirectionOf(static_cast<GstVideoOrientationMethod>(method));
        Harness harness("");
        GstElement* element = gst_harness_find_element(harness.get(), "korconvert");
        g_object_set(element, "video-direction", method, nullptr);
        gst_object_unref(element);
        gst_harness_set_sink_caps_str(harness.get(), "video/x-raw,format=I420");
        gst_harness_set_src_caps(harness.get(), CapsOf(from, nullptr));
        harness.Convert(from, 0);
        // The point in the middle of pixel (7, 4) is where that pixel goes.
        const Rectangle place = Turned({7, 4, 1, 1}, 40, 30, direction);
        gst_harness_push_upstream_event(harness.get(), gst_navigation_event_new_mouse_move(
                                                           place.x + 0.5, place.y + 0.5, GST_NAVIGATION_MODIFIER_NONE));
        double x = 0;
        double y = 0;
        while (GstEvent* event = gst_harness_try_pull_upstream_event(harness.get())) {
            if (GST_EVENT_TYPE(event) == GST_EVENT_NAVIGATION) {
                gst_navigation_event_get_coordinates(event, &x, &y);
            }
            gst_event_unref(event);
        }
        EXPECT_EQ(x, 7.5) << method;
        EXPECT_EQ(y, 4.5) << method;
    }
}

}  // namespace
}  // namespace korgst
