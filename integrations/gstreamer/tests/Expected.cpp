#include "Expected.h"

#include <algorithm>
#include <cstring>

#include "Kor/Video/Common/C/KorYuv420_C_.h"

namespace korgst {

namespace {

using Formats = std::vector<GstVideoFormat>;

const Formats kI420 = {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_YV12};
const Formats kBgra = {GST_VIDEO_FORMAT_BGRA, GST_VIDEO_FORMAT_BGRx};
const Formats kRgb32 = {GST_VIDEO_FORMAT_BGRA, GST_VIDEO_FORMAT_BGRx, GST_VIDEO_FORMAT_RGBA, GST_VIDEO_FORMAT_RGBx,
                        GST_VIDEO_FORMAT_ARGB, GST_VIDEO_FORMAT_xRGB, GST_VIDEO_FORMAT_ABGR, GST_VIDEO_FORMAT_xBGR};

bool OneOf(GstVideoFormat format, const Formats& formats) {
    return std::find(formats.begin(), formats.end(), format) != formats.end();
}

void Append(std::vector<ExpectedPair>& pairs, const Formats& from, const Formats& to,
            const std::vector<Matrix>& matrices) {
    for (const GstVideoFormat source : from) {
        for (const GstVideoFormat target : to) {
            for (const Matrix matrix : matrices) {
                pairs.push_back({source, target, matrix});
            }
        }
    }
}

// Where the bytes of red, green and blue are, from GStreamer's own description.
struct Order {
    guint r, g, b;
    int bytes;
};

Order OrderOf(GstVideoFormat format) {
    const GstVideoFormatInfo* info = gst_video_format_get_info(format);
    return {GST_VIDEO_FORMAT_INFO_POFFSET(info, 0), GST_VIDEO_FORMAT_INFO_POFFSET(info, 1),
            GST_VIDEO_FORMAT_INFO_POFFSET(info, 2), GST_VIDEO_FORMAT_INFO_PSTRIDE(info, 0)};
}

Picture Reordered(const Picture& from, GstVideoFormat to) {
    Picture result(to, from.width, from.height);
    const Order source = OrderOf(from.format);
    const Order target = OrderOf(to);
    for (KorSizeT row = 0; row < from.height; ++row) {
        for (KorSizeT column = 0; column < from.width; ++column) {
            const KorUint8* pixel = from.Row(0, row) + column * static_cast<KorSizeT>(source.bytes);
            KorUint8* out = result.Row(0, row) + column * static_cast<KorSizeT>(target.bytes);
            std::memset(out, 255, static_cast<size_t>(target.bytes));
            out[target.r] = pixel[source.r];
            out[target.g] = pixel[source.g];
            out[target.b] = pixel[source.b];
        }
    }
    return result;
}

// Made even by repeating the last column and row; with flip, the last row comes first.
Picture EvenRgb(const Picture& from, bool flip) {
    Picture even(from.format, EvenUp(from.width), EvenUp(from.height));
    const KorSizeT bytes = static_cast<KorSizeT>(OrderOf(from.format).bytes);
    for (KorSizeT row = 0; row < even.height; ++row) {
        const KorSizeT read = std::min(row, from.height - 1);
        const KorUint8* source = from.Row(0, flip ? from.height - 1 - read : read);
        std::memcpy(even.Row(0, row), source, bytes * from.width);
        std::memcpy(even.Row(0, row) + bytes * (even.width - 1), source + bytes * (from.width - 1), bytes);
    }
    return even;
}

Picture EvenLuma(const Picture& from) {
    Picture even(from.format, EvenUp(from.width), EvenUp(from.height));
    for (KorSizeT row = 0; row < even.height; ++row) {
        const KorUint8* source = from.Row(0, std::min(row, from.height - 1));
        std::memcpy(even.Row(0, row), source, from.width);
        even.Row(0, row)[even.width - 1] = source[from.width - 1];
    }
    for (int i = 1; i < 3; ++i) {
        for (KorSizeT row = 0; row < even.Rows(i); ++row) {
            std::memcpy(even.Row(i, row), from.Row(i, row), even.RowBytes(i));
        }
    }
    return even;
}

Picture Cropped(const Picture& from, KorSizeT width, KorSizeT height) {
    Picture result(from.format, width, height);
    for (int i = 0; i < result.PlaneCount(); ++i) {
        for (KorSizeT row = 0; row < result.Rows(i); ++row) {
            std::memcpy(result.Row(i, row), from.Row(i, row), result.RowBytes(i));
        }
    }
    return result;
}

Picture Turned(const Picture& from, GstVideoFormat to, bool flip, KorImageRotationDegree angle) {
    const bool swaps = angle == 90 || angle == 270;
    Picture result(to, swaps ? from.height : from.width, swaps ? from.width : from.height);
    for (int i = 0; i < 3; ++i) {
        const KorDistanceT pitch = static_cast<KorDistanceT>(from.Pitch(i));
        KorPlanarRotation_C_(flip ? from.Row(i, from.Rows(i) - 1) : from.Row(i, 0), flip ? -pitch : pitch,
                             result.Row(i, 0), result.Pitch(i), from.RowBytes(i), from.Rows(i), angle);
    }
    return result;
}

using Capture_C_ = decltype(KorBGRAToI420_C_);
using Render_C_ = decltype(KorI420ToBGRA_C_);

constexpr KorInt kCapture2020[3][3] = {{58, 149, 13}, {-31, -81, 112}, {112, -103, -9}};
constexpr KorInt kRender2020[3][3] = {{298, 0, 430}, {298, -48, -167}, {298, 548, 0}};

Capture_C_* CaptureOf(GstVideoFormat from, GstVideoFormat to, Matrix matrix) {
    if (to == GST_VIDEO_FORMAT_Y444) {
        return matrix == Matrix::Bt709 ? KorBGRAToI444UsingBT709_C_ : KorBGRAToI444_C_;
    }
    if (matrix == Matrix::Bt709) {
        return KorBGRAToI420UsingBT709_C_;
    }
    switch (from) {
        case GST_VIDEO_FORMAT_RGBA:
        case GST_VIDEO_FORMAT_RGBx:
            return KorRGBAToI420_C_;
        case GST_VIDEO_FORMAT_ARGB:
        case GST_VIDEO_FORMAT_xRGB:
            return KorARGBToI420_C_;
        case GST_VIDEO_FORMAT_ABGR:
        case GST_VIDEO_FORMAT_xBGR:
            return KorABGRToI420_C_;
        case GST_VIDEO_FORMAT_RGB:
            return KorRawToI420_C_;
        case GST_VIDEO_FORMAT_BGR:
            return Kor24BGToI420_C_;
        case GST_VIDEO_FORMAT_YUY2:
            return KorYUY2ToI420_C_;
        case GST_VIDEO_FORMAT_UYVY:
            return KorUYVYToI420_C_;
        default:
            return KorBGRAToI420_C_;
    }
}

Render_C_* RenderOf(GstVideoFormat from, GstVideoFormat to, Matrix matrix) {
    if (from == GST_VIDEO_FORMAT_Y444) {
        return matrix == Matrix::Bt709 ? KorI444ToBGRAUsingBT709_C_ : KorI444ToBGRA_C_;
    }
    if (matrix == Matrix::Bt709) {
        return KorI420ToBGRAUsingBT709_C_;
    }
    switch (to) {
        case GST_VIDEO_FORMAT_RGBA:
        case GST_VIDEO_FORMAT_RGBx:
            return KorI420ToRGBA_C_;
        case GST_VIDEO_FORMAT_ARGB:
        case GST_VIDEO_FORMAT_xRGB:
            return KorI420ToARGB_C_;
        case GST_VIDEO_FORMAT_ABGR:
        case GST_VIDEO_FORMAT_xBGR:
            return KorI420ToABGR_C_;
        case GST_VIDEO_FORMAT_BGR:
            return KorI420To24BG_C_;
        case GST_VIDEO_FORMAT_YUY2:
            return KorI420ToYUY2_C_;
        case GST_VIDEO_FORMAT_UYVY:
            return KorI420ToUYVY_C_;
        default:
            return KorI420ToBGRA_C_;
    }
}

bool NeedsBgra(GstVideoFormat rgb, GstVideoFormat planes, Matrix matrix) {
    return !OneOf(rgb, kBgra) && (planes == GST_VIDEO_FORMAT_Y444 || matrix != Matrix::Bt601);
}

Picture ExpectedFromRgb(const Picture& from, GstVideoFormat to, Matrix matrix, Direction direction) {
    const Picture x = NeedsBgra(from.format, to, matrix) ? Reordered(from, GST_VIDEO_FORMAT_BGRA) : from;
    const bool even = x.width % 2 == 0 && x.height % 2 == 0;
    const bool cannotFlip = to == GST_VIDEO_FORMAT_Y444 && matrix == Matrix::Bt709;
    const bool flips = even && !cannotFlip;
    const Picture read = flips ? x : EvenRgb(x, direction.flip);
    const KorBool flip = flips && direction.flip;
    Picture planes(to, read.width, read.height);
    if (matrix == Matrix::Bt2020) {
        KorBGRAToI420General_C_(planes.Row(0, 0), planes.Pitch(0), planes.Row(1, 0), planes.Pitch(1), planes.Row(2, 0),
                                planes.Pitch(2), read.Row(0, 0), read.Pitch(0), read.width, read.height, flip,
                                kCapture2020);
    } else {
        CaptureOf(x.format, to, matrix)(planes.Row(0, 0), planes.Pitch(0), planes.Row(1, 0), planes.Pitch(1),
                                        planes.Row(2, 0), planes.Pitch(2), read.Row(0, 0), read.Pitch(0), read.width,
                                        read.height, flip);
    }
    return Turned(Cropped(planes, x.width, x.height), to, false, direction.angle);
}

Picture ExpectedFromPacked(const Picture& from, GstVideoFormat to, Direction direction) {
    const KorSizeT even = EvenUp(from.width);
    if (direction.angle != 0 && from.width % 2 == 0 && from.height % 2 == 0) {
        const bool swaps = direction.SwapsSides();
        Picture result(to, swaps ? from.height : from.width, swaps ? from.width : from.height);
        (from.format == GST_VIDEO_FORMAT_YUY2 ? KorYUY2ToI420WithRotation_C_ : KorUYVYToI420WithRotation_C_)(
            result.Row(0, 0), result.Pitch(0), result.Row(1, 0), result.Pitch(1), result.Row(2, 0), result.Pitch(2),
            from.Row(0, 0), from.Pitch(0), from.width, from.height, direction.flip, direction.angle);
        return result;
    }
    Picture planes(to, even, from.height);
    CaptureOf(from.format, to, Matrix::None)(planes.Row(0, 0), planes.Pitch(0), planes.Row(1, 0), planes.Pitch(1),
                                             planes.Row(2, 0), planes.Pitch(2), from.Row(0, 0), from.Pitch(0), even,
                                             from.height, direction.flip);
    return Turned(Cropped(planes, from.width, from.height), to, false, direction.angle);
}

Picture ExpectedFromPlanes(const Picture& from, GstVideoFormat to, Direction direction) {
    if (from.format == GST_VIDEO_FORMAT_Y42B) {
        const Picture read = direction.flip ? Turned(from, GST_VIDEO_FORMAT_Y42B, true, 0) : from;
        Picture planes(to, from.width, from.height);
        KorPlanarRotation_C_(read.Row(0, 0), static_cast<KorDistanceT>(read.Pitch(0)), planes.Row(0, 0),
                             planes.Pitch(0), read.width, read.height, 0);
        for (int i = 1; i < 3; ++i) {
            KorPlanarUV422To420_C_(read.Row(i, 0), static_cast<KorDistanceT>(read.Pitch(i)), planes.Row(i, 0),
                                   planes.Pitch(i), planes.RowBytes(i), read.height / 2);
            if (read.height % 2 != 0) {
                std::memcpy(planes.Row(i, read.height / 2), read.Row(i, read.height - 1), planes.RowBytes(i));
            }
        }
        return Turned(planes, to, false, direction.angle);
    }
    if (from.PlaneCount() == 2) {
        Picture planes(to, from.width, from.height);
        KorPlanarRotation_C_(from.Row(0, 0), static_cast<KorDistanceT>(from.Pitch(0)), planes.Row(0, 0),
                             planes.Pitch(0), from.width, from.height, 0);
        const int first = from.format == GST_VIDEO_FORMAT_NV12 ? 1 : 2;
        KorPlanarUVDeinterlace_C_(from.Row(1, 0), static_cast<KorDistanceT>(from.Pitch(1)), planes.Row(first, 0),
                                  planes.Pitch(first), planes.Row(3 - first, 0), planes.Pitch(3 - first),
                                  planes.RowBytes(1), planes.Rows(1));
        return Turned(planes, to, direction.flip, direction.angle);
    }
    return Turned(from, to, direction.flip, direction.angle);
}

Picture Rendered(const Picture& from, GstVideoFormat to, Matrix matrix, Direction direction) {
    const Picture turned = Turned(from, from.format, direction.flip, direction.angle);
    const bool blocks = from.format != GST_VIDEO_FORMAT_Y444;
    const Picture planes = blocks ? EvenLuma(turned) : turned;
    const bool via = IsRgb(to) && NeedsBgra(to, from.format, matrix);
    Picture x(via ? GST_VIDEO_FORMAT_BGRA : to, planes.width, planes.height);
    if (matrix == Matrix::Bt2020) {
        KorI420ToBGRAGeneral_C_(planes.Row(0, 0), planes.Pitch(0), planes.Row(1, 0), planes.Pitch(1), planes.Row(2, 0),
                                planes.Pitch(2), x.Row(0, 0), x.Pitch(0), planes.width, planes.height, kRender2020,
                                KOR_VIDEOFRAMEDITHERLEVEL_Off);
    } else {
        RenderOf(from.format, x.format, matrix)(planes.Row(0, 0), planes.Pitch(0), planes.Row(1, 0), planes.Pitch(1),
                                                planes.Row(2, 0), planes.Pitch(2), x.Row(0, 0), x.Pitch(0),
                                                planes.width, planes.height, KOR_VIDEOFRAMEDITHERLEVEL_Off);
    }
    const Picture cropped = Cropped(x, turned.width, turned.height);
    return via ? Reordered(cropped, to) : cropped;
}

}  // namespace

std::vector<ExpectedPair> ExpectedPairs() {
    const std::vector<Matrix> none = {Matrix::None};
    const std::vector<Matrix> all = {Matrix::Bt601, Matrix::Bt709, Matrix::Bt2020};
    const std::vector<Matrix> both = {Matrix::Bt601, Matrix::Bt709};
    const Formats y444 = {GST_VIDEO_FORMAT_Y444};
    std::vector<ExpectedPair> pairs;
    Append(pairs, kRgb32, kI420, all);
    Append(pairs, {GST_VIDEO_FORMAT_RGB, GST_VIDEO_FORMAT_BGR}, kI420, all);
    Append(pairs, kBgra, y444, both);
    Append(pairs, {GST_VIDEO_FORMAT_YUY2, GST_VIDEO_FORMAT_UYVY}, kI420, none);
    Append(pairs, {GST_VIDEO_FORMAT_NV12, GST_VIDEO_FORMAT_NV21, GST_VIDEO_FORMAT_Y42B}, kI420, none);
    Append(pairs, kI420, kI420, none);
    Append(pairs, y444, y444, none);
    Append(pairs, kI420, kRgb32, all);
    Append(pairs, kI420, {GST_VIDEO_FORMAT_BGR}, all);
    Append(pairs, y444, kBgra, both);
    Append(pairs, kI420, {GST_VIDEO_FORMAT_YUY2, GST_VIDEO_FORMAT_UYVY}, none);
    return pairs;
}

Picture Expected(const Picture& from, GstVideoFormat to, Matrix matrix, Direction direction) {
    const bool toPlanes = OneOf(to, kI420) || to == GST_VIDEO_FORMAT_Y444;
    if (IsRgb(from.format)) {
        return ExpectedFromRgb(from, to, matrix, direction);
    }
    if (from.PlaneCount() == 1) {
        return ExpectedFromPacked(from, to, direction);
    }
    return toPlanes ? ExpectedFromPlanes(from, to, direction) : Rendered(from, to, matrix, direction);
}

}  // namespace korgst
