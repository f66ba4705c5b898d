// Whole pipelines: every test pattern, state changes and other properties while they run.
#include <gst/app/gstappsink.h>
#include <gst/gst.h>
#include <gtest/gtest.h>

#include <memory>
#include <random>

#include "Expected.h"

namespace korgst {
namespace {

class Pipeline {
  public:
    explicit Pipeline(const std::string& description) : pipeline_(gst_parse_launch(description.c_str(), nullptr)) {}
    ~Pipeline() {
        SetState(GST_STATE_NULL);
        gst_object_unref(pipeline_);
    }
    Pipeline(const Pipeline&) = delete;
    Pipeline& operator=(const Pipeline&) = delete;

    void SetState(GstState state) {
        EXPECT_NE(gst_element_set_state(pipeline_, state), GST_STATE_CHANGE_FAILURE);
        EXPECT_NE(gst_element_get_state(pipeline_, nullptr, nullptr, 5 * GST_SECOND), GST_STATE_CHANGE_FAILURE);
    }

    void SetStateAsItMay(GstState state) {
        gst_element_set_state(pipeline_, state);
        gst_element_get_state(pipeline_, nullptr, nullptr, 5 * GST_SECOND);
    }

    GstElement* Find(const char* name) {
        GstElement* element = gst_bin_get_by_name(GST_BIN(pipeline_), name);
        gst_object_unref(element);  // the pipeline has it
        return element;
    }

    Picture Pull(const char* sink) {
        GstSample* sample = gst_app_sink_pull_sample(GST_APP_SINK(Find(sink)));
        Picture picture = PictureOf(gst_sample_get_buffer(sample), gst_sample_get_caps(sample));
        gst_sample_unref(sample);
        return picture;
    }

    // An error that an element has posted, or nothing.
    std::string Error() {
        GstBus* bus = gst_element_get_bus(pipeline_);
        GstMessage* message = gst_bus_pop_filtered(bus, GST_MESSAGE_ERROR);
        gst_object_unref(bus);
        if (message == nullptr) {
            return "";
        }
        GError* error = nullptr;
        gst_message_parse_error(message, &error, nullptr);
        const std::string text = error->message;
        g_error_free(error);
        gst_message_unref(message);
        return text;
    }

  private:
    GstElement* pipeline_;
};

std::vector<std::string> TestPatterns() {
    GstElement* source = gst_element_factory_make("videotestsrc", nullptr);
    GParamSpec* pspec = g_object_class_find_property(G_OBJECT_GET_CLASS(source), "pattern");
    const GEnumClass* values = G_PARAM_SPEC_ENUM(pspec)->enum_class;
    std::vector<std::string> names;
    for (guint i = 0; i < values->n_values; ++i) {
        names.emplace_back(values->values[i].value_nick);
    }
    gst_object_unref(source);
    return names;
}

TEST(KorConvertPipeline, EveryTestPattern) {
    const std::vector<std::string> patterns = TestPatterns();
    ASSERT_GT(patterns.size(), 20u);
    for (const std::string& pattern : patterns) {
        Pipeline pipeline(
            "videotestsrc num-buffers=2 pattern=" + pattern +
            " ! video/x-raw,format=BGRA,width=161,height=91,colorimetry=sRGB ! tee name=t"
            " t. ! queue ! appsink name=in sync=false"
            " t. ! queue ! korconvert n-threads=2 ! video/x-raw,format=I420,colorimetry=bt709 ! tee name=u"
            " u. ! queue ! appsink name=planes sync=false"
            " u. ! queue ! korconvert video-direction=90l ! video/x-raw,format=BGRA ! appsink name=out sync=false");
        pipeline.SetState(GST_STATE_PLAYING);
        for (int frame = 0; frame < 2; ++frame) {
            const Picture in = pipeline.Pull("in");
            const Picture planes = pipeline.Pull("planes");
            EXPECT_EQ(Difference(planes, Expected(in, GST_VIDEO_FORMAT_I420, Matrix::Bt709, {})), "") << pattern;
            EXPECT_EQ(
                Difference(pipeline.Pull("out"), Expected(planes, GST_VIDEO_FORMAT_BGRA, Matrix::Bt709, {false, 270})),
                "")
                << pattern;
        }
        EXPECT_EQ(pipeline.Error(), "");
    }
}

TEST(KorConvertPipeline, HighDefinitionIsConvertedWithItsUsualColours) {
    Pipeline pipeline(
        "videotestsrc num-buffers=1 pattern=snow ! video/x-raw,format=RGBA,width=1280,height=720 ! tee name=t"
        " t. ! queue ! appsink name=in sync=false"
        " t. ! queue ! korconvert ! video/x-raw,format=I420 ! tee name=u u. ! queue ! appsink name=planes sync=false"
        " u. ! queue ! korconvert ! video/x-raw,format=xRGB ! appsink name=out sync=false");
    pipeline.SetState(GST_STATE_PLAYING);
    const Picture in = pipeline.Pull("in");
    const Picture planes = pipeline.Pull("planes");
    EXPECT_EQ(Difference(planes, Expected(in, GST_VIDEO_FORMAT_I420, Matrix::Bt709, {})), "");
    EXPECT_EQ(Difference(pipeline.Pull("out"), Expected(planes, GST_VIDEO_FORMAT_xRGB, Matrix::Bt709, {})), "");
    EXPECT_EQ(pipeline.Error(), "");
}

TEST(KorConvertPipeline, StatesAndPropertiesChangeWhileItRuns) {
    std::mt19937 random(31);
    Pipeline pipeline(
        "videotestsrc ! video/x-raw,format=YUY2,width=160,height=120,framerate=120/1 ! korconvert name=k"
        " ! video/x-raw,format=I420 ! korblend name=b ! korconvert name=l n-threads=3 ! video/x-raw,format=BGRx"
        " ! fakesink sync=false"
        " videotestsrc pattern=ball ! video/x-raw,format=RGBA,width=40,height=30,framerate=30/1 ! b.overlay");
    for (int round = 0; round < 60; ++round) {
        pipeline.SetState(round % 7 == 6 ? GST_STATE_READY : round % 3 == 2 ? GST_STATE_PAUSED : GST_STATE_PLAYING);
        g_object_set(pipeline.Find("k"), "video-direction", static_cast<int>(random() % 8), nullptr);
        g_object_set(pipeline.Find("l"), "n-threads", static_cast<guint>(random() % 4), "dither",
                     static_cast<int>(random() % 4), nullptr);
        g_object_set(pipeline.Find("b"), "x", static_cast<int>(random() % 200) - 50, "alpha", 0.5, nullptr);
        g_usleep(5000);
    }
    EXPECT_EQ(pipeline.Error(), "");
}

TEST(KorBlendPipeline, RefusesInterlacedVideoWithAMessage) {
    Pipeline pipeline(
        "videotestsrc num-buffers=2 ! video/x-raw,format=I420,width=64,height=48"
        " ! capssetter caps=video/x-raw,interlace-mode=mixed ! korblend ! fakesink");
    pipeline.SetStateAsItMay(GST_STATE_PLAYING);
    EXPECT_NE(pipeline.Error().find("deinterlace"), std::string::npos);
}

}  // namespace
}  // namespace korgst
