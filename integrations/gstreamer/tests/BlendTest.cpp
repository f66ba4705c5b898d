// korblend in a harness, beside the library's direct calls.
#include <gst/check/gstharness.h>
#include <gst/controller/gstdirectcontrolbinding.h>
#include <gst/controller/gstinterpolationcontrolsource.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "Expected.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"

namespace korgst {
namespace {

class Blend {
  public:
    Blend() : video_(gst_harness_new_with_padnames("korblend", "sink", "src")) {
        overlay_ = gst_harness_new_with_element(video_->element, "overlay", nullptr);
    }
    ~Blend() {
        gst_harness_teardown(overlay_);
        gst_harness_teardown(video_);
    }
    Blend(const Blend&) = delete;
    Blend& operator=(const Blend&) = delete;

    GstElement* Element() { return video_->element; }

    void Start(const Picture& video, const Picture& overlay, const char* colours = nullptr) {
        gst_harness_set_src_caps(overlay_, CapsOf(overlay, nullptr));
        SetVideo(video, colours);
    }
    void SetVideo(const Picture& video, const char* colours) {
        gst_harness_set_src_caps(video_, CapsOf(video, colours));
    }
    void PushOverlay(const Picture& picture, GstClockTime time) {
        gst_harness_push(overlay_, At(BufferOf(picture, 3), time));
    }
    void EndOverlay() { gst_harness_push_event(overlay_, gst_event_new_eos()); }

    Picture Run(const Picture& video, GstClockTime time) {
        GstBuffer* in = At(BufferOf(video, 0), time);
        gst_buffer_ref(in);  // somebody else looks at the frame as well, so it must not change
        GstBuffer* out = gst_harness_push_and_pull(video_, in);
        GstCaps* caps = gst_pad_get_current_caps(video_->sinkpad);
        Picture result = PictureOf(out, caps);
        EXPECT_EQ(GST_BUFFER_PTS(out), time);
        EXPECT_EQ(Difference(PictureOf(in, caps), video), "");
        gst_caps_unref(caps);
        gst_buffer_unref(out);
        gst_buffer_unref(in);
        return result;
    }

  private:
    static GstBuffer* At(GstBuffer* buffer, GstClockTime time) {
        GST_BUFFER_PTS(buffer) = time;
        GST_BUFFER_DURATION(buffer) = 40 * GST_MSECOND;
        return buffer;
    }

    GstHarness* video_;
    GstHarness* overlay_;
};

using Plane_ = std::vector<KorUint8>;

// The opacity of pixels as A420 or RGB has it: for Y, then for chroma.
struct Opacity {
    Plane_ y, c;
};

Opacity OpacityFor(KorSizeT width, KorSizeT height, const std::function<int(KorSizeT, KorSizeT)>& alpha, int whole) {
    Opacity result;
    const auto scaled = [=](int own) { return static_cast<KorUint8>((own * whole + 127) / 255); };
    for (KorSizeT row = 0; row < height; ++row) {
        for (KorSizeT column = 0; column < width; ++column) {
            result.y.push_back(scaled(alpha(column, row)));
        }
    }
    for (KorSizeT row = 0; row < height; row += 2) {
        for (KorSizeT column = 0; column < width; column += 2) {
            const KorSizeT right = std::min(column + 1, width - 1);
            const KorSizeT below = std::min(row + 1, height - 1);
            result.c.push_back(
                scaled((alpha(column, row) + alpha(right, row) + alpha(column, below) + alpha(right, below) + 2) / 4));
        }
    }
    return result;
}

// On a background with a margin, of which the middle is then what is seen. To the right and below, what is outside is
// cut off first: its chroma is that of the pixels which are left.
Picture Blended(const Picture& video, const Picture& overlay, int x, int y, KorUint8 alpha, Opacity* opacity) {
    if (x >= static_cast<int>(video.width) || y >= static_cast<int>(video.height)) {
        return video;
    }
    constexpr KorSizeT margin = 256;
    const KorSizeT width = x < 0 ? overlay.width : std::min(overlay.width, video.width - static_cast<KorSizeT>(x));
    const KorSizeT height = y < 0 ? overlay.height : std::min(overlay.height, video.height - static_cast<KorSizeT>(y));
    Picture canvas(video.format, video.width + 2 * margin, video.height + 2 * margin);
    for (int i = 0; i < 3; ++i) {
        const KorSizeT shift = i == 0 ? margin : margin / 2;
        for (KorSizeT row = 0; row < video.Rows(i); ++row) {
            std::copy_n(video.Row(i, row), video.RowBytes(i), canvas.Row(i, row + shift) + shift);
        }
    }
    // Left of the video and above it, positions are rounded down to even ones.
    const auto inMargin = [](int at) {
        const int rounded = at < 0 ? at / 2 * 2 - (at % 2 != 0 ? 2 : 0) : at;
        const int place = static_cast<int>(margin) + rounded;
        return static_cast<KorSizeT>(place);
    };
    const KorSizeT column = inMargin(x);
    const KorSizeT line = inMargin(y);
    if (opacity == nullptr) {
        KorI420AlphaBlend_C_(canvas.Row(0, 0), canvas.Pitch(0), canvas.Row(1, 0), canvas.Pitch(1), canvas.Row(2, 0),
                             canvas.Pitch(2), overlay.Row(0, 0), overlay.Pitch(0), overlay.Row(1, 0), overlay.Pitch(1),
                             overlay.Row(2, 0), overlay.Pitch(2), width, height, column, line, alpha);
    } else {
        const KorSizeT widthC = (overlay.width + 1) / 2;
        KorI420AlphaArrayBlend_C_(canvas.Row(0, 0), canvas.Pitch(0), canvas.Row(1, 0), canvas.Pitch(1),
                                  canvas.Row(2, 0), canvas.Pitch(2), overlay.Row(0, 0), overlay.Pitch(0),
                                  overlay.Row(1, 0), overlay.Pitch(1), overlay.Row(2, 0), overlay.Pitch(2), width,
                                  height, column, line, opacity->y.data(), overlay.width, opacity->c.data(), widthC,
                                  opacity->c.data(), widthC);
    }
    Picture result(video.format, video.width, video.height);
    for (int i = 0; i < 3; ++i) {
        const KorSizeT shift = i == 0 ? margin : margin / 2;
        for (KorSizeT row = 0; row < video.Rows(i); ++row) {
            std::copy_n(canvas.Row(i, row + shift) + shift, video.RowBytes(i), result.Row(i, row));
        }
    }
    return result;
}

constexpr int kPlaces[][2] = {{0, 0},   {5, 3},   {12, 8},  {40, 30},     {-4, 6},      {6, -8},
                              {-3, -5}, {51, 37}, {300, 0}, {-100, -100}, {0, G_MININT}};

TEST(KorBlend, OneOpacityForAllAtEveryPlace) {
    std::mt19937 random(21);
    for (const auto& [x, y] : kPlaces) {
        for (const auto& [width, height] : {std::pair<KorSizeT, KorSizeT>{16, 12}, {17, 11}, {90, 70}}) {
            const Picture video =
                RandomPicture(random() % 2 != 0 ? GST_VIDEO_FORMAT_I420 : GST_VIDEO_FORMAT_YV12, 53, 39, random);
            const Picture overlay = RandomPicture(GST_VIDEO_FORMAT_I420, width, height, random);
            Blend blend;
            g_object_set(blend.Element(), "x", x, "y", y, "alpha", 0.4, nullptr);
            blend.Start(video, overlay);
            blend.PushOverlay(overlay, 0);
            blend.EndOverlay();
            const bool outside = y == G_MININT;
            EXPECT_EQ(Difference(blend.Run(video, 0),
                                 outside ? video : Blended(video, overlay, std::max(x, -200), y, 102, nullptr)),
                      "")
                << x << "," << y << " " << width << "x" << height;
        }
    }
}

TEST(KorBlend, OpacityOfPixels) {
    std::mt19937 random(22);
    const Picture video = RandomPicture(GST_VIDEO_FORMAT_I420, 53, 39, random);
    for (const GstVideoFormat format :
         {GST_VIDEO_FORMAT_BGRA, GST_VIDEO_FORMAT_RGBA, GST_VIDEO_FORMAT_ARGB, GST_VIDEO_FORMAT_ABGR}) {
        for (const char* colours : {"bt601", "bt709"}) {
            for (const auto& [x, y] : kPlaces) {
                if (y == G_MININT) {
                    continue;
                }
                const Picture overlay = RandomPicture(format, 19, 14, random);
                const guint at = GST_VIDEO_FORMAT_INFO_POFFSET(gst_video_format_get_info(format), 3);
                Opacity opacity = OpacityFor(
                    19, 14, [&](KorSizeT column, KorSizeT row) { return overlay.Row(0, row)[4 * column + at]; }, 204);
                const Matrix matrix = std::string(colours) == "bt601" ? Matrix::Bt601 : Matrix::Bt709;
                const Picture planes = Expected(overlay, GST_VIDEO_FORMAT_I420, matrix, {});
                Blend blend;
                g_object_set(blend.Element(), "x", x, "y", y, "alpha", 0.8, nullptr);
                blend.Start(video, overlay, colours);
                blend.PushOverlay(overlay, 0);
                blend.EndOverlay();
                EXPECT_EQ(Difference(blend.Run(video, 0), Blended(video, planes, x, y, 0, &opacity)), "")
                    << x << "," << y;
            }
        }
    }
}

TEST(KorBlend, OpacityPlaneOfA420) {
    std::mt19937 random(23);
    const Picture video = RandomPicture(GST_VIDEO_FORMAT_I420, 40, 30, random);
    const Picture planes = RandomPicture(GST_VIDEO_FORMAT_I420, 15, 9, random);
    GstVideoInfo info;
    gst_video_info_set_format(&info, GST_VIDEO_FORMAT_A420, 15, 9);
    GstBuffer* buffer = gst_buffer_new_allocate(nullptr, info.size, nullptr);
    GstVideoFrame frame;
    gst_video_frame_map(&frame, &info, buffer, GST_MAP_WRITE);
    Plane_ alpha(15 * 9);
    for (KorSizeT i = 0; i < alpha.size(); ++i) {
        alpha[i] = static_cast<KorUint8>(random());
        static_cast<KorUint8*>(GST_VIDEO_FRAME_COMP_DATA(
            &frame, 3))[i / 15 * static_cast<KorSizeT>(GST_VIDEO_FRAME_COMP_STRIDE(&frame, 3)) + i % 15] = alpha[i];
    }
    for (int i = 0; i < 3; ++i) {
        for (KorSizeT row = 0; row < planes.Rows(i); ++row) {
            std::copy_n(planes.Row(i, row), planes.RowBytes(i),
                        static_cast<KorUint8*>(GST_VIDEO_FRAME_COMP_DATA(&frame, i)) +
                            row * static_cast<KorSizeT>(GST_VIDEO_FRAME_COMP_STRIDE(&frame, i)));
        }
    }
    gst_video_frame_unmap(&frame);
    GstBuffer* in = BufferOf(video, 0);
    GST_BUFFER_PTS(buffer) = GST_BUFFER_PTS(in) = 0;

    GstHarness* harness = gst_harness_new_with_padnames("korblend", "sink", "src");
    GstHarness* second = gst_harness_new_with_element(harness->element, "overlay", nullptr);
    g_object_set(harness->element, "x", 7, "y", 2, nullptr);
    gst_harness_set_src_caps(second, gst_video_info_to_caps(&info));
    gst_harness_set_src_caps(harness, CapsOf(video, nullptr));
    gst_harness_push(second, buffer);
    gst_harness_push_event(second, gst_event_new_eos());
    GstBuffer* out = gst_harness_push_and_pull(harness, in);
    GstCaps* caps = gst_pad_get_current_caps(harness->sinkpad);
    Opacity opacity = OpacityFor(
        15, 9, [&](KorSizeT column, KorSizeT row) { return alpha[row * 15 + column]; }, 255);
    EXPECT_EQ(Difference(PictureOf(out, caps), Blended(video, planes, 7, 2, 0, &opacity)), "");
    gst_caps_unref(caps);
    gst_buffer_unref(out);
    gst_harness_teardown(second);
    gst_harness_teardown(harness);
}

TEST(KorBlend, ThePictureWhoseTimeHasComeIsUsedAndTheLastOneStays) {
    std::mt19937 random(24);
    const Picture video = RandomPicture(GST_VIDEO_FORMAT_I420, 32, 24, random);
    const Picture first = RandomPicture(GST_VIDEO_FORMAT_I420, 10, 8, random);
    const Picture second = RandomPicture(GST_VIDEO_FORMAT_I420, 10, 8, random);
    Blend blend;
    g_object_set(blend.Element(), "x", 4, "y", 6, nullptr);
    blend.Start(video, first);
    blend.PushOverlay(first, 50 * GST_MSECOND);
    EXPECT_EQ(Difference(blend.Run(video, 0), video), "") << "too early for an overlay";
    EXPECT_EQ(Difference(blend.Run(video, 40 * GST_MSECOND), video), "") << "still too early";
    blend.PushOverlay(second, 100 * GST_MSECOND);
    EXPECT_EQ(Difference(blend.Run(video, 80 * GST_MSECOND), Blended(video, first, 4, 6, 255, nullptr)), "");
    blend.EndOverlay();
    for (const GstClockTime time : {GstClockTime{120}, GstClockTime{160}, GstClockTime{4000}}) {
        EXPECT_EQ(Difference(blend.Run(video, time * GST_MSECOND), Blended(video, second, 4, 6, 255, nullptr)), "")
            << time;
    }
}

TEST(KorBlend, PassesTheVideoWithoutAnOverlay) {
    std::mt19937 random(25);
    const Picture video = RandomPicture(GST_VIDEO_FORMAT_YV12, 31, 21, random);
    GstHarness* harness = gst_harness_new_with_padnames("korblend", "sink", "src");
    gst_harness_set_src_caps(harness, CapsOf(video, nullptr));
    GstBuffer* in = BufferOf(video, 0);
    GST_BUFFER_PTS(in) = 0;
    GstBuffer* out = gst_harness_push_and_pull(harness, in);
    GstCaps* caps = gst_pad_get_current_caps(harness->sinkpad);
    EXPECT_EQ(Difference(PictureOf(out, caps), video), "");
    gst_caps_unref(caps);
    gst_buffer_unref(out);
    gst_harness_teardown(harness);
}

TEST(KorBlend, PlaceAndOpacityFollowTheirControllers) {
    std::mt19937 random(26);
    const Picture video = RandomPicture(GST_VIDEO_FORMAT_I420, 64, 24, random);
    const Picture overlay = RandomPicture(GST_VIDEO_FORMAT_I420, 10, 8, random);
    Blend blend;
    for (const char* property : {"x", "alpha"}) {
        GstControlSource* source = gst_interpolation_control_source_new();
        g_object_set(source, "mode", GST_INTERPOLATION_MODE_LINEAR, nullptr);
        const bool place = std::string(property) == "x";
        gst_timed_value_control_source_set(GST_TIMED_VALUE_CONTROL_SOURCE(source), 0, 0);
        gst_timed_value_control_source_set(GST_TIMED_VALUE_CONTROL_SOURCE(source), GST_SECOND, place ? 40 : 1);
        gst_object_add_control_binding(
            GST_OBJECT(blend.Element()),
            place ? gst_direct_control_binding_new_absolute(GST_OBJECT(blend.Element()), property, source)
                  : gst_direct_control_binding_new(GST_OBJECT(blend.Element()), property, source));
        gst_object_unref(source);
    }
    blend.Start(video, overlay);
    blend.PushOverlay(overlay, 0);
    blend.EndOverlay();
    EXPECT_EQ(Difference(blend.Run(video, 0), video), "");
    EXPECT_EQ(Difference(blend.Run(video, GST_SECOND / 5), Blended(video, overlay, 8, 0, 51, nullptr)), "");
    EXPECT_EQ(Difference(blend.Run(video, GST_SECOND), Blended(video, overlay, 40, 0, 255, nullptr)), "");
}

TEST(KorBlend, TheVideoMayChangeItsSizeAndColoursInMidStream) {
    std::mt19937 random(27);
    const Picture overlay = RandomPicture(GST_VIDEO_FORMAT_BGRx, 10, 8, random);
    Blend blend;
    for (const KorSizeT width : {KorSizeT{32}, KorSizeT{48}, KorSizeT{20}}) {
        const Picture video = RandomPicture(GST_VIDEO_FORMAT_I420, width, 24, random);
        const Matrix matrix = width == 48 ? Matrix::Bt709 : Matrix::Bt601;
        const char* colours = width == 48 ? GST_VIDEO_COLORIMETRY_BT709 : GST_VIDEO_COLORIMETRY_BT601;
        if (width == 32) {
            blend.Start(video, overlay, colours);
            blend.PushOverlay(overlay, 0);
            blend.EndOverlay();
        } else {
            blend.SetVideo(video, colours);
        }
        const Picture planes = Expected(overlay, GST_VIDEO_FORMAT_I420, matrix, {});
        EXPECT_EQ(Difference(blend.Run(video, width * GST_MSECOND), Blended(video, planes, 0, 0, 255, nullptr)), "")
            << width;
    }
}

}  // namespace
}  // namespace korgst
