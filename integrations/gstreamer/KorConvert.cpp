// korconvert: converts, rotates and dithers video. What is said about caps stands in Caps.h, about pixels in
// Converter.h.
#include "KorConvert.h"

#include <gst/video/gstvideofilter.h>
#include <gst/video/video.h>

#include <memory>
#include <optional>

#include "Caps.h"
#include "Converter.h"

GST_DEBUG_CATEGORY_STATIC(kor_convert_debug);
#define GST_CAT_DEFAULT kor_convert_debug

namespace {

using korgst::Converter;
using korgst::Direction;

// ---- Properties ----

enum Property { kPropertyNone, kVideoDirection, kDither, kThreads };

GType DitherType() {
    static const GEnumValue values[] = {
        {KOR_VIDEOFRAMEDITHERLEVEL_Off, "No noise", "off"},
        {KOR_VIDEOFRAMEDITHERLEVEL_0, "Weak noise", "0"},
        {KOR_VIDEOFRAMEDITHERLEVEL_1, "Noise of twice the strength", "1"},
        {KOR_VIDEOFRAMEDITHERLEVEL_2, "Noise of four times the strength", "2"},
        {0, nullptr, nullptr},
    };
    static const GType type = g_enum_register_static("KorConvertDither", values);
    return type;
}

struct Settings {
    GstVideoOrientationMethod method = GST_VIDEO_ORIENTATION_IDENTITY;
    GstVideoOrientationMethod tagged = GST_VIDEO_ORIENTATION_IDENTITY;  // what the stream's tag says, for "auto"
    KorVideoFrameDitherLevel dither = KOR_VIDEOFRAMEDITHERLEVEL_Off;
    unsigned threads = 1;

    Direction WantedDirection() const {
        return korgst::DirectionOf(method == GST_VIDEO_ORIENTATION_AUTO ? tagged : method);
    }
};

// ---- The instance ----

struct KorConvert {
    GstVideoFilter parent;
    Settings* settings;  // under the object's lock
    // What was negotiated, of the streaming thread alone.
    std::unique_ptr<Converter>* converter;
    Direction* direction;
    korgst::Workers* workers;
};

struct KorConvertClass {
    GstVideoFilterClass parent_class;
};

void kor_convert_direction_init(GstVideoDirectionInterface*) {}

G_DEFINE_TYPE_WITH_CODE(KorConvert, kor_convert, GST_TYPE_VIDEO_FILTER,
                        G_IMPLEMENT_INTERFACE(GST_TYPE_VIDEO_DIRECTION, kor_convert_direction_init))

KorConvert* Self(gpointer object) {
    return static_cast<KorConvert*>(object);
}

Settings SettingsOf(KorConvert* self) {
    GST_OBJECT_LOCK(self);
    const Settings settings = *self->settings;
    GST_OBJECT_UNLOCK(self);
    return settings;
}

// Calls change(settings) under the lock, and negotiates anew if that makes other caps possible.
template <typename Change>
void ChangeSettings(KorConvert* self, Change change) {
    GST_OBJECT_LOCK(self);
    const Settings before = *self->settings;
    change(*self->settings);
    const Settings& now = *self->settings;
    const bool renegotiate = !(before.WantedDirection() == now.WantedDirection()) || before.dither != now.dither;
    GST_OBJECT_UNLOCK(self);
    if (renegotiate) {
        gst_base_transform_reconfigure_src(GST_BASE_TRANSFORM(self));
    }
}

void SetProperty(GObject* object, guint id, const GValue* value, GParamSpec* pspec) {
    KorConvert* self = Self(object);
    switch (id) {
        case kVideoDirection:
            ChangeSettings(self, [&](Settings& settings) {
                settings.method = static_cast<GstVideoOrientationMethod>(g_value_get_enum(value));
            });
            break;
        case kDither:
            ChangeSettings(self, [&](Settings& settings) {
                settings.dither = static_cast<KorVideoFrameDitherLevel>(g_value_get_enum(value));
            });
            break;
        case kThreads:
            ChangeSettings(self, [&](Settings& settings) { settings.threads = g_value_get_uint(value); });
            break;
        default:
            G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
    }
}

void GetProperty(GObject* object, guint id, GValue* value, GParamSpec* pspec) {
    const Settings settings = SettingsOf(Self(object));
    switch (id) {
        case kVideoDirection:
            g_value_set_enum(value, settings.method);
            break;
        case kDither:
            g_value_set_enum(value, static_cast<gint>(settings.dither));
            break;
        case kThreads:
            g_value_set_uint(value, settings.threads);
            break;
        default:
            G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
    }
}

// ---- Negotiation ----

GstCaps* TransformCaps(GstBaseTransform* transform, GstPadDirection side, GstCaps* caps, GstCaps* filter) {
    const Settings settings = SettingsOf(Self(transform));
    GstCaps* result =
        korgst::TransformCaps(caps, side, settings.WantedDirection(), settings.dither != KOR_VIDEOFRAMEDITHERLEVEL_Off);
    if (filter != nullptr) {
        GstCaps* unfiltered = result;
        result = gst_caps_intersect_full(filter, unfiltered, GST_CAPS_INTERSECT_FIRST);
        gst_caps_unref(unfiltered);
    }
    GST_DEBUG_OBJECT(transform, "%" GST_PTR_FORMAT " becomes %" GST_PTR_FORMAT, static_cast<gpointer>(caps),
                     static_cast<gpointer>(result));
    return result;
}

GstCaps* FixateCaps(GstBaseTransform*, GstPadDirection side, GstCaps* caps, GstCaps* othercaps) {
    return korgst::FixateCaps(caps, side, othercaps);
}

// Fields are converted one by one, and each needs whole pairs of rows where chroma has half as many.
bool TakesInterlaced(const GstVideoInfo& in, const GstVideoInfo& out) {
    const bool halved = korgst::Is420(GST_VIDEO_INFO_FORMAT(&in)) || korgst::Is420(GST_VIDEO_INFO_FORMAT(&out));
    const GstVideoInterlaceMode mode = GST_VIDEO_INFO_INTERLACE_MODE(&in);
    return mode == GST_VIDEO_INTERLACE_MODE_PROGRESSIVE ||
           ((mode == GST_VIDEO_INTERLACE_MODE_INTERLEAVED || mode == GST_VIDEO_INTERLACE_MODE_MIXED) &&
            (!halved || GST_VIDEO_INFO_HEIGHT(&in) % 4 == 0));
}

// Takes over the wanted direction, as far as it fits the sizes that were negotiated; otherwise they are about to be
// negotiated again. The base class does not call SetInfo() where new properties leave the caps as they were.
void Adopt(KorConvert* self, const Settings& settings) {
    GstVideoFilter* filter = GST_VIDEO_FILTER(self);
    if (settings.WantedDirection().SwapsSides() == self->direction->SwapsSides()) {
        *self->direction = settings.WantedDirection();
    }
    const bool same = GST_VIDEO_INFO_FORMAT(&filter->in_info) == GST_VIDEO_INFO_FORMAT(&filter->out_info);
    const bool passes = self->direction->IsIdentity() && settings.dither == KOR_VIDEOFRAMEDITHERLEVEL_Off;
    gst_base_transform_set_passthrough(GST_BASE_TRANSFORM(self), *self->converter == nullptr || (same && passes));
}

gboolean SetInfo(GstVideoFilter* filter, GstCaps*, GstVideoInfo* in, GstCaps*, GstVideoInfo* out) {
    KorConvert* self = Self(filter);
    self->converter->reset();
    *self->direction = SettingsOf(self).WantedDirection();
    korgst::Matrix matrix;
    const bool same = GST_VIDEO_INFO_FORMAT(in) == GST_VIDEO_INFO_FORMAT(out);
    if (!korgst::FindMatrix(*in, *out, &matrix)) {
        if (!same) {
            GST_ERROR_OBJECT(filter, "no function converts %s with these colours to %s", GST_VIDEO_INFO_NAME(in),
                             GST_VIDEO_INFO_NAME(out));
        }
        return same;  // what has no function may still pass unchanged
    }
    if (!TakesInterlaced(*in, *out)) {
        GST_ERROR_OBJECT(filter, "interlaced 4:2:0 needs a height that is a multiple of 4; this one is %d",
                         GST_VIDEO_INFO_HEIGHT(in));
        return FALSE;
    }
    *self->converter = std::make_unique<Converter>(GST_VIDEO_INFO_FORMAT(in), GST_VIDEO_INFO_FORMAT(out), matrix);
    return TRUE;
}

// ---- Events ----

// The orientation that the picture has got is taken out of the tags, or a sink would turn it once more.
GstEvent* WithoutOrientation(GstEvent* event, GstTagList* tags) {
    GstTagList* copy = gst_tag_list_copy(tags);
    gst_tag_list_add(copy, GST_TAG_MERGE_REPLACE, GST_TAG_IMAGE_ORIENTATION, "rotate-0", nullptr);
    GstEvent* changed = gst_event_new_tag(copy);
    gst_event_set_seqnum(changed, gst_event_get_seqnum(event));
    gst_event_unref(event);
    return changed;
}

gboolean SinkEvent(GstBaseTransform* transform, GstEvent* event) {
    KorConvert* self = Self(transform);
    GstVideoOrientationMethod tagged = GST_VIDEO_ORIENTATION_IDENTITY;
    if (GST_EVENT_TYPE(event) == GST_EVENT_STREAM_START) {
        ChangeSettings(self, [&](Settings& settings) { settings.tagged = tagged; });
    } else if (GST_EVENT_TYPE(event) == GST_EVENT_TAG) {
        GstTagList* tags = nullptr;
        gst_event_parse_tag(event, &tags);
        if (gst_video_orientation_from_tag(tags, &tagged)) {
            ChangeSettings(self, [&](Settings& settings) { settings.tagged = tagged; });
            if (SettingsOf(self).method == GST_VIDEO_ORIENTATION_AUTO) {
                event = WithoutOrientation(event, tags);
            }
        }
    }
    return GST_BASE_TRANSFORM_CLASS(kor_convert_parent_class)->sink_event(transform, event);
}

// A pointer over the turned picture is told where it is in the picture that comes in.
gboolean SrcEvent(GstBaseTransform* transform, GstEvent* event) {
    const GstVideoInfo& in = GST_VIDEO_FILTER(transform)->in_info;
    const Direction direction = SettingsOf(Self(transform)).WantedDirection();
    double x = 0;
    double y = 0;
    if (GST_EVENT_TYPE(event) == GST_EVENT_NAVIGATION && !direction.IsIdentity() &&
        gst_navigation_event_get_coordinates(event, &x, &y)) {
        const double width = GST_VIDEO_INFO_WIDTH(&in);
        const double height = GST_VIDEO_INFO_HEIGHT(&in);
        const double acrossX = direction.angle == 90    ? y
                               : direction.angle == 180 ? width - x
                               : direction.angle == 270 ? width - y
                                                        : x;
        const double acrossY = direction.angle == 90    ? height - x
                               : direction.angle == 180 ? height - y
                               : direction.angle == 270 ? x
                                                        : y;
        event = gst_event_make_writable(event);
        gst_navigation_event_set_coordinates(event, acrossX, direction.flip ? height - acrossY : acrossY);
    }
    return GST_BASE_TRANSFORM_CLASS(kor_convert_parent_class)->src_event(transform, event);
}

// ---- Metadata ----

bool HasTag(const GstMeta* meta, const char* tag) {
    return gst_meta_api_type_has_tag(meta->info->api, g_quark_from_static_string(tag));
}

gpointer CopyParameter(gconstpointer parameter, gpointer) {
    return gst_structure_copy(static_cast<const GstStructure*>(parameter));
}

void AddTurnedRegion(GstBuffer* out, const GstVideoRegionOfInterestMeta& region, const korgst::Rectangle& place) {
    GstVideoRegionOfInterestMeta* turned = gst_buffer_add_video_region_of_interest_meta_id(
        out, region.roi_type, place.x, place.y, place.width, place.height);
    turned->id = region.id;
    turned->parent_id = region.parent_id;
    turned->params = g_list_copy_deep(region.params, CopyParameter, nullptr);
}

void AddTurnedCrop(GstBuffer* out, const korgst::Rectangle& place) {
    GstVideoCropMeta* turned = gst_buffer_add_video_crop_meta(out);
    turned->x = place.x;
    turned->y = place.y;
    turned->width = place.width;
    turned->height = place.height;
}

// Everything is passed on but what describes the old memory. Rectangles follow the picture; what else depends on its
// direction, and is not known here, is left behind when that changes.
gboolean TransformMeta(GstBaseTransform* transform, GstBuffer* out, GstMeta* meta, GstBuffer*) {
    const GstVideoInfo& in = GST_VIDEO_FILTER(transform)->in_info;
    const Direction direction = *Self(transform)->direction;
    const guint width = static_cast<guint>(GST_VIDEO_INFO_WIDTH(&in));
    const guint height = static_cast<guint>(GST_VIDEO_INFO_HEIGHT(&in));
    if (HasTag(meta, GST_META_TAG_MEMORY_STR)) {
        return FALSE;
    }
    if (direction.IsIdentity()) {
        return TRUE;
    }
    if (meta->info->api == GST_VIDEO_REGION_OF_INTEREST_META_API_TYPE) {
        const auto& region = *reinterpret_cast<GstVideoRegionOfInterestMeta*>(meta);
        AddTurnedRegion(out, region,
                        korgst::Turned({region.x, region.y, region.w, region.h}, width, height, direction));
        return FALSE;
    }
    if (meta->info->api == GST_VIDEO_CROP_META_API_TYPE) {
        const auto& crop = *reinterpret_cast<GstVideoCropMeta*>(meta);
        AddTurnedCrop(out, korgst::Turned({crop.x, crop.y, crop.width, crop.height}, width, height, direction));
        return FALSE;
    }
    return !HasTag(meta, GST_META_TAG_VIDEO_ORIENTATION_STR) && !HasTag(meta, GST_META_TAG_VIDEO_SIZE_STR);
}

// ---- Frames ----

// Properties are up to date before the base class negotiates anew, and what they ask for after it.
GstFlowReturn SubmitInputBuffer(GstBaseTransform* transform, gboolean discontinuous, GstBuffer* buffer) {
    KorConvert* self = Self(transform);
    const GstClockTime time = gst_segment_to_stream_time(&transform->segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer));
    if (GST_CLOCK_TIME_IS_VALID(time)) {
        gst_object_sync_values(GST_OBJECT(transform), time);
    }
    const GstFlowReturn result =
        GST_BASE_TRANSFORM_CLASS(kor_convert_parent_class)->submit_input_buffer(transform, discontinuous, buffer);
    if (result == GST_FLOW_OK) {
        Adopt(self, SettingsOf(self));
    }
    return result;
}

GstFlowReturn TransformFrame(GstVideoFilter* filter, GstVideoFrame* in, GstVideoFrame* out) {
    KorConvert* self = Self(filter);
    const Settings settings = SettingsOf(self);
    Converter& converter = **self->converter;
    converter.SetDirection(*self->direction);
    converter.SetDither(settings.dither);
    self->workers->SetThreads(settings.threads);
    const korgst::FrameView from = korgst::ViewOf(*in);
    const korgst::FrameView to = korgst::ViewOf(*out);
    if (!GST_VIDEO_FRAME_IS_INTERLACED(in)) {
        converter.Run(from, to, *self->workers);
        return GST_FLOW_OK;
    }
    // Upside down, the rows of the upper field are those of the lower one, which is then the first in time.
    const bool swaps = self->direction->IsUpsideDown() && from.height % 2 == 0;
    if (swaps && GST_BUFFER_FLAG_IS_SET(out->buffer, GST_VIDEO_BUFFER_FLAG_TFF)) {
        GST_BUFFER_FLAG_UNSET(out->buffer, static_cast<guint>(GST_VIDEO_BUFFER_FLAG_TFF));
    } else if (swaps) {
        GST_BUFFER_FLAG_SET(out->buffer, GST_VIDEO_BUFFER_FLAG_TFF);
    }
    for (unsigned field = 0; field < 2; ++field) {
        converter.Run(korgst::FieldOf(from, field), korgst::FieldOf(to, swaps ? 1 - field : field), *self->workers);
    }
    return GST_FLOW_OK;
}

// ---- Classes ----

void Finalize(GObject* object) {
    KorConvert* self = Self(object);
    delete self->settings;
    delete self->converter;
    delete self->direction;
    delete self->workers;
    G_OBJECT_CLASS(kor_convert_parent_class)->finalize(object);
}

void kor_convert_init(KorConvert* self) {
    self->settings = new Settings;
    self->converter = new std::unique_ptr<Converter>;
    self->direction = new Direction;
    self->workers = new korgst::Workers;
}

void AddPadTemplate(GstElementClass* element, const char* name, GstPadDirection direction, GstCaps* caps) {
    gst_element_class_add_pad_template(element, gst_pad_template_new(name, direction, GST_PAD_ALWAYS, caps));
    gst_caps_unref(caps);
}

void kor_convert_class_init(KorConvertClass* klass) {
    GObjectClass* object = G_OBJECT_CLASS(klass);
    object->set_property = SetProperty;
    object->get_property = GetProperty;
    object->finalize = Finalize;
    g_object_class_override_property(object, kVideoDirection, "video-direction");
    const GParamFlags flags =
        static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_MUTABLE_PLAYING);
    g_object_class_install_property(
        object, kDither,
        g_param_spec_enum("dither", "Dither",
                          "Strength of the noise that is added to hide banding; there is none for Y444", DitherType(),
                          KOR_VIDEOFRAMEDITHERLEVEL_Off, flags));
    g_object_class_install_property(
        object, kThreads,
        g_param_spec_uint(
            "n-threads", "Threads",
            "Number of threads that share a frame (0 = one for each processor); the bytes are the same for "
            "any number, and dithered frames stay on one",
            0, G_MAXUINT, 1, flags));

    GstElementClass* element = GST_ELEMENT_CLASS(klass);
    gst_element_class_set_static_metadata(
        element, "Kor video converter", "Filter/Converter/Video/Effect",
        "Converts video between RGB, packed, planar and semi-planar YUV, rotated, flipped and dithered on the way",
        "Kor maintainers <maintainers@kor.invalid>");
    AddPadTemplate(element, "sink", GST_PAD_SINK, korgst::SinkTemplateCaps());
    AddPadTemplate(element, "src", GST_PAD_SRC, korgst::SrcTemplateCaps());
    gst_type_mark_as_plugin_api(DitherType(), static_cast<GstPluginAPIFlags>(0));

    GstBaseTransformClass* transform = GST_BASE_TRANSFORM_CLASS(klass);
    transform->transform_caps = TransformCaps;
    transform->fixate_caps = FixateCaps;
    transform->sink_event = SinkEvent;
    transform->src_event = SrcEvent;
    transform->transform_meta = TransformMeta;
    transform->submit_input_buffer = SubmitInputBuffer;
    GstVideoFilterClass* filter = GST_VIDEO_FILTER_CLASS(klass);
    filter->set_info = SetInfo;
    filter->transform_frame = TransformFrame;
    GST_DEBUG_CATEGORY_INIT(kor_convert_debug, "korconvert", 0, "Kor video converter");
}

}  // namespace

GST_ELEMENT_REGISTER_DEFINE(korconvert, "korconvert", GST_RANK_NONE, kor_convert_get_type())
