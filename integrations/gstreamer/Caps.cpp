#include "Caps.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace korgst {

namespace {

// What passes unchanged may be any of these. In the order of preference.
constexpr GstVideoFormat kFormats[] = {
    GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_YV12, GST_VIDEO_FORMAT_Y444, GST_VIDEO_FORMAT_NV12, GST_VIDEO_FORMAT_NV21,
    GST_VIDEO_FORMAT_Y42B, GST_VIDEO_FORMAT_YUY2, GST_VIDEO_FORMAT_UYVY, GST_VIDEO_FORMAT_BGRA, GST_VIDEO_FORMAT_RGBA,
    GST_VIDEO_FORMAT_ARGB, GST_VIDEO_FORMAT_ABGR, GST_VIDEO_FORMAT_BGRx, GST_VIDEO_FORMAT_RGBx, GST_VIDEO_FORMAT_xRGB,
    GST_VIDEO_FORMAT_xBGR, GST_VIDEO_FORMAT_RGB,  GST_VIDEO_FORMAT_BGR,
};

struct MatrixName {
    GstVideoColorMatrix id;
    Matrix matrix;
    const char* colorimetry;  // what it usually comes with
};

// clang-format off
constexpr MatrixName kMatrices[] = {
    {GST_VIDEO_COLOR_MATRIX_BT601,  Matrix::Bt601,  GST_VIDEO_COLORIMETRY_BT601},
    {GST_VIDEO_COLOR_MATRIX_BT709,  Matrix::Bt709,  GST_VIDEO_COLORIMETRY_BT709},
    {GST_VIDEO_COLOR_MATRIX_BT2020, Matrix::Bt2020, GST_VIDEO_COLORIMETRY_BT2020},
};
// clang-format on

struct FreeCaps {
    void operator()(GstStructure* structure) const { gst_structure_free(structure); }
    void operator()(gchar* text) const { g_free(text); }
};
using OwnedStructure = std::unique_ptr<GstStructure, FreeCaps>;
using OwnedText = std::unique_ptr<gchar, FreeCaps>;

class Value {
  public:
    explicit Value(GType type) { g_value_init(&value_, type); }
    ~Value() { g_value_unset(&value_); }
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;
    GValue* operator&() { return &value_; }

  private:
    GValue value_ = G_VALUE_INIT;
};

// Strings of a field that holds one or a list of them. None if there is no such field.
std::vector<std::string> StringsOf(const GstStructure* structure, const char* field) {
    std::vector<std::string> strings;
    const GValue* value = gst_structure_get_value(structure, field);
    if (value != nullptr && G_VALUE_HOLDS_STRING(value)) {
        strings.emplace_back(g_value_get_string(value));
    } else if (value != nullptr && GST_VALUE_HOLDS_LIST(value)) {
        for (guint i = 0; i < gst_value_list_get_size(value); ++i) {
            strings.emplace_back(g_value_get_string(gst_value_list_get_value(value, i)));
        }
    }
    return strings;
}

void SetStrings(GstStructure* structure, const char* field, const std::vector<std::string>& strings) {
    Value list(GST_TYPE_LIST);
    for (const std::string& text : strings) {
        Value item(G_TYPE_STRING);
        g_value_set_string(&item, text.c_str());
        gst_value_list_append_value(&list, &item);
    }
    if (strings.size() == 1) {
        gst_structure_set(structure, field, G_TYPE_STRING, strings.front().c_str(), nullptr);
    } else {
        gst_structure_set_value(structure, field, &list);
    }
}

std::vector<GstVideoFormat> FormatsOf(const GstStructure* structure) {
    const std::vector<std::string> names = StringsOf(structure, "format");
    std::vector<GstVideoFormat> formats;
    formats.reserve(names.size());
    for (const std::string& name : names) {
        formats.push_back(gst_video_format_from_string(name.c_str()));
    }
    return gst_structure_has_field(structure, "format")
               ? formats
               : std::vector<GstVideoFormat>(std::begin(kFormats), std::end(kFormats));
}

// ---- Colours ----

struct Pair {
    GstVideoFormat from;
    GstVideoFormat to;
};

std::string NameOf(GstVideoColorimetry colours, GstVideoColorRange range, GstVideoColorMatrix matrix) {
    colours.range = range;
    colours.matrix = matrix;
    const OwnedText name(gst_video_colorimetry_to_string(&colours));
    return name != nullptr ? name.get() : "";
}

const MatrixName* FindMatrixName(const GstVideoColorimetry& colours) {
    for (const MatrixName& name : kMatrices) {
        if (name.id == colours.matrix && colours.range == GST_VIDEO_COLOR_RANGE_16_235) {
            return &name;
        }
    }
    return nullptr;
}

bool IsFullRangeRgb(const GstVideoColorimetry& colours) {
    return colours.matrix == GST_VIDEO_COLOR_MATRIX_RGB && colours.range == GST_VIDEO_COLOR_RANGE_0_255;
}

void Add(std::vector<std::string>& names, const std::string& name) {
    if (!name.empty() && std::find(names.begin(), names.end(), name) == names.end()) {
        names.push_back(name);
    }
}

// The colours of RGB that this YUV may become, or be made from: primaries and transfer are kept, or are the usual ones
// of both sides.
void AddRgbColours(const GstVideoColorimetry& yuv, const Pair& pair, std::vector<std::string>& names) {
    const MatrixName* matrix = FindMatrixName(yuv);
    if (matrix == nullptr || !HasPair(pair.from, pair.to, matrix->matrix)) {
        return;
    }
    const std::string kept = NameOf(yuv, GST_VIDEO_COLOR_RANGE_0_255, GST_VIDEO_COLOR_MATRIX_RGB);
    if (gst_video_colorimetry_matches(&yuv, matrix->colorimetry)) {
        Add(names, GST_VIDEO_COLORIMETRY_SRGB);
    }
    Add(names, kept);
}

void AddYuvColours(const GstVideoColorimetry& rgb, const Pair& pair, std::vector<std::string>& names) {
    if (!IsFullRangeRgb(rgb)) {
        return;
    }
    for (const MatrixName& matrix : kMatrices) {
        if (!HasPair(pair.from, pair.to, matrix.matrix)) {
            continue;
        }
        if (gst_video_colorimetry_matches(&rgb, GST_VIDEO_COLORIMETRY_SRGB)) {
            Add(names, matrix.colorimetry);
        }
        Add(names, NameOf(rgb, GST_VIDEO_COLOR_RANGE_16_235, matrix.id));
    }
}

// Without colours, a side may have any that are usual.
std::vector<std::string> OtherColours(const GstStructure* structure, bool rgb, const Pair& pair) {
    std::vector<std::string> known = StringsOf(structure, "colorimetry");
    if (known.empty() && rgb) {
        known = {GST_VIDEO_COLORIMETRY_SRGB};
    } else if (known.empty()) {
        for (const MatrixName& matrix : kMatrices) {
            known.emplace_back(matrix.colorimetry);
        }
    }
    std::vector<std::string> others;
    for (const std::string& name : known) {
        GstVideoColorimetry colours;
        if (gst_video_colorimetry_from_string(&colours, name.c_str())) {
            (rgb ? AddYuvColours : AddRgbColours)(colours, pair, others);
        }
    }
    return others;
}

// The matrix that a size has by default, as GStreamer has it.
const char* UsualColours(GstVideoFormat format, int width, int height) {
    GstVideoInfo info;
    gst_video_info_set_format(&info, format, static_cast<guint>(width), static_cast<guint>(height));
    const MatrixName* name = FindMatrixName(info.colorimetry);
    return name != nullptr ? name->colorimetry : GST_VIDEO_COLORIMETRY_BT709;
}

// ---- Sizes ----

void InvertRatio(const GValue* from, GValue* to) {
    if (GST_VALUE_HOLDS_FRACTION(from)) {
        g_value_init(to, GST_TYPE_FRACTION);
        gst_value_set_fraction(to, gst_value_get_fraction_denominator(from), gst_value_get_fraction_numerator(from));
    } else if (GST_VALUE_HOLDS_FRACTION_RANGE(from)) {
        const GValue* least = gst_value_get_fraction_range_min(from);
        const GValue* most = gst_value_get_fraction_range_max(from);
        g_value_init(to, GST_TYPE_FRACTION_RANGE);
        gst_value_set_fraction_range_full(
            to, gst_value_get_fraction_denominator(most), gst_value_get_fraction_numerator(most),
            gst_value_get_fraction_denominator(least), gst_value_get_fraction_numerator(least));
    } else if (GST_VALUE_HOLDS_LIST(from)) {
        g_value_init(to, GST_TYPE_LIST);
        for (guint i = 0; i < gst_value_list_get_size(from); ++i) {
            GValue item = G_VALUE_INIT;
            InvertRatio(gst_value_list_get_value(from, i), &item);
            gst_value_list_append_and_take_value(to, &item);
        }
    }
}

void MoveField(const GstStructure* from, const char* name, GstStructure* to, const char* newName) {
    const GValue* value = gst_structure_get_value(from, name);
    if (value != nullptr) {
        gst_structure_set_value(to, newName, value);
    } else {
        gst_structure_remove_field(to, newName);
    }
}

// A quarter turn exchanges the sides. Fields would become columns, so that it takes progressive video only. Returns
// whether anything is left.
bool SwapSides(GstStructure* structure) {
    const OwnedStructure before(gst_structure_copy(structure));
    MoveField(before.get(), "width", structure, "height");
    MoveField(before.get(), "height", structure, "width");
    const GValue* ratio = gst_structure_get_value(before.get(), "pixel-aspect-ratio");
    if (ratio != nullptr) {
        GValue inverse = G_VALUE_INIT;
        InvertRatio(ratio, &inverse);
        gst_structure_take_value(structure, "pixel-aspect-ratio", &inverse);
    }
    const std::vector<std::string> modes = StringsOf(structure, "interlace-mode");
    gst_structure_set(structure, "interlace-mode", G_TYPE_STRING, "progressive", nullptr);
    return modes.empty() || std::find(modes.begin(), modes.end(), "progressive") != modes.end();
}

// Upside down, the first line belongs to the other field.
void SwapFields(GstStructure* structure) {
    const char* order = gst_structure_get_string(structure, "field-order");
    if (order != nullptr && g_str_equal(order, "top-field-first")) {
        gst_structure_set(structure, "field-order", G_TYPE_STRING, "bottom-field-first", nullptr);
    } else if (order != nullptr && g_str_equal(order, "bottom-field-first")) {
        gst_structure_set(structure, "field-order", G_TYPE_STRING, "top-field-first", nullptr);
    }
}

// ---- Structures ----

// Formats of one kind have functions with the same matrices.
enum class Kind { Planar420, OtherYuv, Rgb };

Kind KindOf(GstVideoFormat format) {
    return IsRgb(format) ? Kind::Rgb : Is420(format) ? Kind::Planar420 : Kind::OtherYuv;
}

// The other side of one format of a structure, as far as it is of one kind.
void AppendPartners(GstCaps* result, const GstStructure* structure, GstVideoFormat format, Kind kind,
                    GstPadDirection side, Direction direction, bool dithers) {
    std::vector<std::string> names;
    Pair pair = {};
    for (const GstVideoFormat other : kFormats) {
        const Pair tried = side == GST_PAD_SINK ? Pair{format, other} : Pair{other, format};
        if (KindOf(other) == kind && HasPair(tried.from, tried.to) && (!dithers || CanDither(tried.to))) {
            names.emplace_back(gst_video_format_to_string(other));
            pair = tried;
        }
    }
    if (names.empty()) {
        return;
    }
    OwnedStructure partner(gst_structure_copy(structure));
    SetStrings(partner.get(), "format", names);
    if (IsRgb(pair.from) != IsRgb(pair.to)) {
        const std::vector<std::string> colours = OtherColours(structure, IsRgb(format), pair);
        if (colours.empty()) {
            return;
        }
        SetStrings(partner.get(), "colorimetry", colours);
    }
    if (!direction.IsIdentity() || kind != Kind::Planar420 || KindOf(format) != kind) {
        gst_structure_remove_field(partner.get(), "chroma-site");
    }
    if (direction.IsUpsideDown()) {
        SwapFields(partner.get());
    }
    if (!direction.SwapsSides() || SwapSides(partner.get())) {
        gst_caps_append_structure(result, partner.release());
    }
}

bool IsKnown(GstVideoFormat format) {
    return std::find(std::begin(kFormats), std::end(kFormats), format) != std::end(kFormats);
}

GstCaps* TemplateCaps(bool read) {
    OwnedStructure structure(gst_structure_new_empty("video/x-raw"));
    std::vector<std::string> names;
    for (const GstVideoFormat format : kFormats) {
        for (const GstVideoFormat other : kFormats) {
            if (read ? HasPair(format, other) : HasPair(other, format)) {
                names.emplace_back(gst_video_format_to_string(format));
                break;
            }
        }
    }
    SetStrings(structure.get(), "format", names);
    gst_structure_set(structure.get(), "width", GST_TYPE_INT_RANGE, 1, G_MAXINT, "height", GST_TYPE_INT_RANGE, 1,
                      G_MAXINT, "framerate", GST_TYPE_FRACTION_RANGE, 0, 1, G_MAXINT, 1, nullptr);
    GstCaps* caps = gst_caps_new_empty();
    gst_caps_append_structure(caps, structure.release());
    return caps;
}

}  // namespace

GstCaps* SinkTemplateCaps() {
    return TemplateCaps(true);
}
GstCaps* SrcTemplateCaps() {
    return TemplateCaps(false);
}

GstCaps* TransformCaps(GstCaps* caps, GstPadDirection side, Direction direction, bool dithers) {
    GstCaps* result = gst_caps_new_empty();
    if (direction.IsIdentity() && !dithers) {
        gst_caps_append(result, gst_caps_copy(caps));
    }
    for (guint i = 0; i < gst_caps_get_size(caps); ++i) {
        const GstCapsFeatures* features = gst_caps_get_features(caps, i);
        if (features != nullptr && !gst_caps_features_is_equal(features, GST_CAPS_FEATURES_MEMORY_SYSTEM_MEMORY)) {
            continue;
        }
        const GstStructure* structure = gst_caps_get_structure(caps, i);
        for (const GstVideoFormat format : FormatsOf(structure)) {
            if (IsKnown(format)) {
                for (const Kind kind : {Kind::Planar420, Kind::OtherYuv, Kind::Rgb}) {
                    AppendPartners(result, structure, format, kind, side, direction, dithers);
                }
            }
        }
    }
    return result;
}

GstCaps* FixateCaps(GstCaps* caps, GstPadDirection side, GstCaps* othercaps) {
    GstVideoInfo known;
    if (!gst_video_info_from_caps(&known, caps)) {
        return gst_caps_fixate(othercaps);
    }
    const char* format = gst_video_format_to_string(GST_VIDEO_INFO_FORMAT(&known));
    GstStructure* best = nullptr;
    for (guint i = 0; i < gst_caps_get_size(othercaps) && best == nullptr; ++i) {
        GstStructure* structure = gst_caps_get_structure(othercaps, i);
        for (const std::string& name : StringsOf(structure, "format")) {
            best = name == format ? structure : best;
        }
    }
    OwnedStructure fixed(gst_structure_copy(best != nullptr ? best : gst_caps_get_structure(othercaps, 0u)));
    gst_caps_unref(othercaps);

    gst_structure_fixate_field_string(fixed.get(), "format", format);
    const char* chosen = gst_structure_get_string(fixed.get(), "format");
    const GstVideoFormat other = gst_video_format_from_string(chosen != nullptr ? chosen : format);
    const bool toYuv = IsRgb(GST_VIDEO_INFO_FORMAT(&known)) && !IsRgb(other);
    if (toYuv) {
        int height = GST_VIDEO_INFO_HEIGHT(&known);
        gst_structure_get_int(fixed.get(), "height", &height);
        const char* usual = UsualColours(other, GST_VIDEO_INFO_WIDTH(&known), height);
        gst_structure_fixate_field_string(fixed.get(), "colorimetry", usual);
    }
    // The captures average blocks of two by two pixels, so chroma lies in their middle.
    if (toYuv && side == GST_PAD_SINK && Is420(other) && !gst_structure_has_field(fixed.get(), "chroma-site")) {
        gst_structure_set(fixed.get(), "chroma-site", G_TYPE_STRING, "jpeg", nullptr);
    }
    GstCaps* result = gst_caps_new_empty();
    gst_caps_append_structure(result, fixed.release());
    return gst_caps_fixate(result);
}

bool FindMatrix(const GstVideoInfo& from, const GstVideoInfo& to, Matrix* matrix) {
    const bool fromRgb = IsRgb(GST_VIDEO_INFO_FORMAT(&from));
    const bool toRgb = IsRgb(GST_VIDEO_INFO_FORMAT(&to));
    *matrix = Matrix::None;
    if (fromRgb != toRgb) {
        const MatrixName* name = FindMatrixName(fromRgb ? to.colorimetry : from.colorimetry);
        if (name == nullptr || !IsFullRangeRgb(fromRgb ? from.colorimetry : to.colorimetry)) {
            return false;
        }
        *matrix = name->matrix;
    }
    return HasPair(GST_VIDEO_INFO_FORMAT(&from), GST_VIDEO_INFO_FORMAT(&to), *matrix);
}

}  // namespace korgst
