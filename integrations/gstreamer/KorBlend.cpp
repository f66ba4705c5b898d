// korblend: lays a second stream, or a still picture, over a video. What comes out is the first stream, frame by frame;
// the overlay is the latest picture whose time has come, and the last one stays when its stream ends.
#include "KorBlend.h"

#include <gst/base/gstaggregator.h>
#include <gst/video/video.h>

#include <cmath>

#include "Caps.h"
#include "Overlay.h"

GST_DEBUG_CATEGORY_STATIC(kor_blend_debug);
#define GST_CAT_DEFAULT kor_blend_debug

namespace {

enum Property { kPropertyNone, kX, kY, kAlpha };

constexpr const char* kSinkCaps = GST_VIDEO_CAPS_MAKE("{ I420, YV12 }");
constexpr const char* kOverlayCaps =
    GST_VIDEO_CAPS_MAKE("{ A420, I420, YV12, BGRA, RGBA, ARGB, ABGR, BGRx, RGBx, xRGB, xBGR, RGB, BGR }");

struct Settings {
    int x = 0;
    int y = 0;
    double alpha = 1;
};

// What the streaming thread knows.
struct State {
    GstVideoInfo info;
    GstVideoInfo overlayInfo;
    GstCaps* caps = nullptr;
    GstBuffer* picture = nullptr;  // that the overlay was made of, and what it is
    GstVideoInfo pictureInfo;
    korgst::Overlay overlay;
};

struct KorBlend {
    GstAggregator parent;
    GstAggregatorPad* sink;
    GstAggregatorPad* overlay;  // null until it is requested
    Settings* settings;         // under the object's lock
    State* state;
};

struct KorBlendClass {
    GstAggregatorClass parent_class;
};

G_DEFINE_TYPE(KorBlend, kor_blend, GST_TYPE_AGGREGATOR)

KorBlend* Self(gpointer object) {
    return static_cast<KorBlend*>(object);
}

Settings SettingsOf(KorBlend* self) {
    GST_OBJECT_LOCK(self);
    const Settings settings = *self->settings;
    GST_OBJECT_UNLOCK(self);
    return settings;
}

// ---- Properties ----

void SetProperty(GObject* object, guint id, const GValue* value, GParamSpec* pspec) {
    Settings& settings = *Self(object)->settings;
    GST_OBJECT_LOCK(object);
    switch (id) {
        case kX:
            settings.x = g_value_get_int(value);
            break;
        case kY:
            settings.y = g_value_get_int(value);
            break;
        case kAlpha:
            settings.alpha = g_value_get_double(value);
            break;
        default:
            G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
    }
    GST_OBJECT_UNLOCK(object);
}

void GetProperty(GObject* object, guint id, GValue* value, GParamSpec* pspec) {
    const Settings settings = SettingsOf(Self(object));
    switch (id) {
        case kX:
            g_value_set_int(value, settings.x);
            break;
        case kY:
            g_value_set_int(value, settings.y);
            break;
        case kAlpha:
            g_value_set_double(value, settings.alpha);
            break;
        default:
            G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
    }
}

// ---- Pads ----

GstAggregatorPad* NewPad(const char* name, GstPadTemplate* pads) {
    return GST_AGGREGATOR_PAD(
        g_object_new(GST_TYPE_AGGREGATOR_PAD, "name", name, "direction", GST_PAD_SINK, "template", pads, nullptr));
}

GstAggregatorPad* CreateNewPad(GstAggregator* aggregator, GstPadTemplate* pads, const gchar*, const GstCaps*) {
    KorBlend* self = Self(aggregator);
    GST_OBJECT_LOCK(self);
    const bool exists = self->overlay != nullptr;
    GST_OBJECT_UNLOCK(self);
    if (exists) {
        GST_WARNING_OBJECT(self, "there is one overlay; a second one needs another korblend");
        return nullptr;
    }
    GstAggregatorPad* pad = NewPad("overlay", pads);
    GST_OBJECT_LOCK(self);
    self->overlay = pad;
    GST_OBJECT_UNLOCK(self);
    return pad;
}

void ReleasePad(GstElement* element, GstPad* pad) {
    KorBlend* self = Self(element);
    GST_OBJECT_LOCK(self);
    self->overlay = nullptr;
    GST_OBJECT_UNLOCK(self);
    GST_ELEMENT_CLASS(kor_blend_parent_class)->release_pad(element, pad);
}

// Held by the caller.
GstAggregatorPad* OverlayPad(KorBlend* self) {
    GST_OBJECT_LOCK(self);
    GstAggregatorPad* pad = self->overlay;
    if (pad != nullptr) {
        gst_object_ref(pad);
    }
    GST_OBJECT_UNLOCK(self);
    return pad;
}

// ---- The overlay ----

void ForgetOverlay(State& state) {
    state.overlay.Clear();
    gst_buffer_replace(&state.picture, nullptr);
}

bool SetOverlay(KorBlend* self, GstBuffer* buffer, const GstVideoInfo& info) {
    State& state = *self->state;
    korgst::Matrix matrix = korgst::Matrix::None;
    if (korgst::IsRgb(GST_VIDEO_INFO_FORMAT(&info)) && !korgst::FindMatrix(info, state.info, &matrix)) {
        GST_ELEMENT_ERROR(self, STREAM, FORMAT,
                          ("An RGB overlay needs a video with the colours of BT.601, BT.709 or BT.2020."), (nullptr));
        return false;
    }
    if (!state.overlay.Set(buffer, info, matrix)) {
        GST_ELEMENT_ERROR(self, STREAM, FORMAT, ("The overlay cannot be read."), (nullptr));
        return false;
    }
    gst_buffer_replace(&state.picture, buffer);
    state.pictureInfo = info;
    return true;
}

// ---- Caps ----

bool TakeCaps(KorBlend* self, GstAggregatorPad* pad, GstCaps* caps) {
    State& state = *self->state;
    GstVideoInfo info;
    if (!gst_video_info_from_caps(&info, caps)) {
        return false;
    }
    if (GST_VIDEO_INFO_IS_INTERLACED(&info)) {
        GST_ELEMENT_ERROR(self, STREAM, FORMAT, ("korblend takes progressive video; deinterlace it first."), (nullptr));
        return false;
    }
    if (pad != self->sink) {
        state.overlayInfo = info;
        return true;
    }
    state.info = info;
    gst_caps_replace(&state.caps, caps);
    gst_pad_mark_reconfigure(GST_AGGREGATOR_SRC_PAD(self));
    // The colours may be others now, with which an RGB overlay has to be made again.
    return state.picture == nullptr || SetOverlay(self, state.picture, state.pictureInfo);
}

gboolean SinkEvent(GstAggregator* aggregator, GstAggregatorPad* pad, GstEvent* event) {
    KorBlend* self = Self(aggregator);
    if (GST_EVENT_TYPE(event) == GST_EVENT_CAPS) {
        GstCaps* caps = nullptr;
        gst_event_parse_caps(event, &caps);
        if (!TakeCaps(self, pad, caps)) {
            gst_event_unref(event);
            return FALSE;
        }
    } else if (GST_EVENT_TYPE(event) == GST_EVENT_SEGMENT && pad == self->sink) {
        const GstSegment* segment = nullptr;
        gst_event_parse_segment(event, &segment);
        gst_aggregator_update_segment(aggregator, segment);
    }
    return GST_AGGREGATOR_CLASS(kor_blend_parent_class)->sink_event(aggregator, pad, event);
}

// What comes out has the caps of the first stream.
gboolean SinkQuery(GstAggregator* aggregator, GstAggregatorPad* pad, GstQuery* query) {
    if (GST_QUERY_TYPE(query) != GST_QUERY_CAPS) {
        return GST_AGGREGATOR_CLASS(kor_blend_parent_class)->sink_query(aggregator, pad, query);
    }
    GstCaps* filter = nullptr;
    gst_query_parse_caps(query, &filter);
    GstCaps* caps = gst_pad_get_pad_template_caps(GST_PAD(pad));
    const auto narrow = [&caps](GstCaps* other) {
        GstCaps* both = gst_caps_intersect_full(other, caps, GST_CAPS_INTERSECT_FIRST);
        gst_caps_unref(caps);
        caps = both;
    };
    if (pad == Self(aggregator)->sink) {
        GstCaps* downstream = gst_pad_peer_query_caps(GST_AGGREGATOR_SRC_PAD(aggregator), nullptr);
        narrow(downstream);
        gst_caps_unref(downstream);
    }
    if (filter != nullptr) {
        narrow(filter);
    }
    gst_query_set_caps_result(query, caps);
    gst_caps_unref(caps);
    return TRUE;
}

GstFlowReturn UpdateSrcCaps(GstAggregator* aggregator, GstCaps*, GstCaps** result) {
    const State& state = *Self(aggregator)->state;
    if (state.caps == nullptr) {
        return GST_AGGREGATOR_FLOW_NEED_DATA;
    }
    *result = gst_caps_ref(state.caps);
    return GST_FLOW_OK;
}

// Any strides will do.
gboolean ProposeAllocation(GstAggregator*, GstAggregatorPad*, GstQuery*, GstQuery* query) {
    gst_query_add_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr);
    return TRUE;
}

// ---- Frames ----

GstClockTime RunningTime(GstAggregatorPad* pad, GstBuffer* buffer) {
    GST_OBJECT_LOCK(pad);
    const GstClockTime time = gst_segment_to_running_time(&pad->segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer));
    GST_OBJECT_UNLOCK(pad);
    return time;
}

// Takes all pictures of the overlay whose time has come by now.
GstFlowReturn UpdateOverlay(KorBlend* self, GstAggregatorPad* pad, GstClockTime now, bool timeout) {
    GstFlowReturn result = GST_FLOW_OK;
    while (result == GST_FLOW_OK) {
        GstBuffer* next = gst_aggregator_pad_peek_buffer(pad);
        if (next == nullptr) {
            return timeout || gst_aggregator_pad_is_eos(pad) ? GST_FLOW_OK : GST_AGGREGATOR_FLOW_NEED_DATA;
        }
        const GstClockTime time = RunningTime(pad, next);
        const bool due = !GST_CLOCK_TIME_IS_VALID(time) || !GST_CLOCK_TIME_IS_VALID(now) || time <= now;
        if (due) {
            result = SetOverlay(self, next, self->state->overlayInfo) ? GST_FLOW_OK : GST_FLOW_NOT_NEGOTIATED;
            gst_aggregator_pad_drop_buffer(pad);
        }
        gst_buffer_unref(next);
        if (!due) {
            break;
        }
    }
    return result;
}

void Blend(KorBlend* self, GstBuffer* buffer) {
    State& state = *self->state;
    const GstClockTime time = gst_segment_to_stream_time(&self->sink->segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer));
    if (GST_CLOCK_TIME_IS_VALID(time)) {
        gst_object_sync_values(GST_OBJECT(self), time);
    }
    const Settings settings = SettingsOf(self);
    GstVideoFrame frame;
    if (state.overlay.IsSet() && gst_video_frame_map(&frame, &state.info, buffer, GST_MAP_READWRITE)) {
        state.overlay.BlendOver(korgst::ViewOf(frame), settings.x, settings.y,
                                static_cast<KorUint8>(std::lround(settings.alpha * 255)));
        gst_video_frame_unmap(&frame);
    }
}

GstFlowReturn Aggregate(GstAggregator* aggregator, gboolean timeout) {
    KorBlend* self = Self(aggregator);
    GstBuffer* buffer = gst_aggregator_pad_peek_buffer(self->sink);
    if (buffer == nullptr) {
        return gst_aggregator_pad_is_eos(self->sink) ? GST_FLOW_EOS : GST_AGGREGATOR_FLOW_NEED_DATA;
    }
    if (GstAggregatorPad* overlay = OverlayPad(self)) {
        const GstFlowReturn result = UpdateOverlay(self, overlay, RunningTime(self->sink, buffer), timeout != FALSE);
        gst_object_unref(overlay);
        if (result != GST_FLOW_OK) {
            gst_buffer_unref(buffer);
            return result;
        }
    }
    gst_aggregator_pad_drop_buffer(self->sink);
    buffer = gst_buffer_make_writable(buffer);
    Blend(self, buffer);
    if (GST_BUFFER_PTS_IS_VALID(buffer)) {
        GstSegment& segment = GST_AGGREGATOR_PAD(aggregator->srcpad)->segment;
        segment.position =
            GST_BUFFER_PTS(buffer) + (GST_BUFFER_DURATION_IS_VALID(buffer) ? GST_BUFFER_DURATION(buffer) : 0);
    }
    return gst_aggregator_finish_buffer(aggregator, buffer);
}

gboolean Stop(GstAggregator* aggregator) {
    State& state = *Self(aggregator)->state;
    ForgetOverlay(state);
    gst_caps_replace(&state.caps, nullptr);
    return TRUE;
}

// A seek starts both streams anew.
GstFlowReturn Flush(GstAggregator* aggregator) {
    ForgetOverlay(*Self(aggregator)->state);
    return GST_FLOW_OK;
}

// ---- Classes ----

void Finalize(GObject* object) {
    KorBlend* self = Self(object);
    ForgetOverlay(*self->state);
    gst_caps_replace(&self->state->caps, nullptr);
    delete self->settings;
    delete self->state;
    G_OBJECT_CLASS(kor_blend_parent_class)->finalize(object);
}

void kor_blend_init(KorBlend* self) {
    self->settings = new Settings;
    self->state = new State;
    GstPadTemplate* pads = gst_element_class_get_pad_template(GST_ELEMENT_GET_CLASS(self), "sink");
    self->sink = NewPad("sink", pads);
    gst_element_add_pad(GST_ELEMENT(self), GST_PAD(self->sink));
}

void AddPadTemplate(GstElementClass* element, const char* name, GstPadDirection direction, GstPadPresence presence,
                    const char* text, GType type) {
    GstCaps* caps = gst_caps_from_string(text);
    gst_element_class_add_pad_template(element, gst_pad_template_new_with_gtype(name, direction, presence, caps, type));
    gst_caps_unref(caps);
}

void kor_blend_class_init(KorBlendClass* klass) {
    GObjectClass* object = G_OBJECT_CLASS(klass);
    object->set_property = SetProperty;
    object->get_property = GetProperty;
    object->finalize = Finalize;
    const GParamFlags flags = static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS |
                                                       GST_PARAM_CONTROLLABLE | GST_PARAM_MUTABLE_PLAYING);
    g_object_class_install_property(object, kX,
                                    g_param_spec_int("x", "X",
                                                     "Column of the video at which the overlay begins; negative ones "
                                                     "are rounded down to even",
                                                     G_MININT, G_MAXINT, 0, flags));
    g_object_class_install_property(object, kY,
                                    g_param_spec_int("y", "Y",
                                                     "Row of the video at which the overlay begins; negative ones "
                                                     "are rounded down to even",
                                                     G_MININT, G_MAXINT, 0, flags));
    g_object_class_install_property(
        object, kAlpha,
        g_param_spec_double("alpha", "Alpha", "Opacity of the overlay, which multiplies that of its pixels", 0, 1, 1,
                            flags));

    GstElementClass* element = GST_ELEMENT_CLASS(klass);
    element->release_pad = ReleasePad;
    gst_element_class_set_static_metadata(element, "Kor video blend", "Filter/Editor/Video/Compositor",
                                          "Lays a still picture or a second stream over a video",
                                          "Kor maintainers <maintainers@kor.invalid>");
    AddPadTemplate(element, "sink", GST_PAD_SINK, GST_PAD_ALWAYS, kSinkCaps, GST_TYPE_AGGREGATOR_PAD);
    AddPadTemplate(element, "overlay", GST_PAD_SINK, GST_PAD_REQUEST, kOverlayCaps, GST_TYPE_AGGREGATOR_PAD);
    AddPadTemplate(element, "src", GST_PAD_SRC, GST_PAD_ALWAYS, kSinkCaps, GST_TYPE_AGGREGATOR_PAD);

    GstAggregatorClass* aggregator = GST_AGGREGATOR_CLASS(klass);
    aggregator->create_new_pad = CreateNewPad;
    aggregator->sink_event = SinkEvent;
    aggregator->sink_query = SinkQuery;
    aggregator->update_src_caps = UpdateSrcCaps;
    aggregator->propose_allocation = ProposeAllocation;
    aggregator->get_next_time = gst_aggregator_simple_get_next_time;
    aggregator->aggregate = Aggregate;
    aggregator->flush = Flush;
    aggregator->stop = Stop;
    GST_DEBUG_CATEGORY_INIT(kor_blend_debug, "korblend", 0, "Kor video blend");
}

}  // namespace

GST_ELEMENT_REGISTER_DEFINE(korblend, "korblend", GST_RANK_NONE, kor_blend_get_type())
