#include "Conversions.h"

#include <algorithm>
#include <iterator>

namespace korgst {

namespace {

// ITU-R BT.2020, limited range, in units of 1/256, for the functions that take the caller's matrix. The weights of Y
// sum to 220, those of U and V to 0, so nothing wraps.
constexpr KorInt kCaptureBt2020[3][3] = {{58, 149, 13}, {-31, -81, 112}, {112, -103, -9}};
constexpr KorInt kRenderBt2020[3][3] = {{298, 0, 430}, {298, -48, -167}, {298, 548, 0}};

void CaptureBt2020(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                   const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip) {
    KorBGRAToI420General(y, pitchY, u, pitchU, v, pitchV, x, pitchX, width, height, flip, kCaptureBt2020);
}

void RenderBt2020(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v,
                  KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                  KorVideoFrameDitherLevel ditherLevel) {
    KorI420ToBGRAGeneral(y, pitchY, u, pitchU, v, pitchV, x, pitchX, width, height, kRenderBt2020, ditherLevel);
}

// clang-format off
constexpr Capture kCaptures[] = {
    {GST_VIDEO_FORMAT_BGRA, GST_VIDEO_FORMAT_I420, Matrix::Bt601,  KorBGRAToI420,           true,  nullptr},
    {GST_VIDEO_FORMAT_RGBA, GST_VIDEO_FORMAT_I420, Matrix::Bt601,  KorRGBAToI420,           true,  nullptr},
    {GST_VIDEO_FORMAT_ARGB, GST_VIDEO_FORMAT_I420, Matrix::Bt601,  KorARGBToI420,           true,  nullptr},
    {GST_VIDEO_FORMAT_ABGR, GST_VIDEO_FORMAT_I420, Matrix::Bt601,  KorABGRToI420,           true,  nullptr},
    {GST_VIDEO_FORMAT_RGB,  GST_VIDEO_FORMAT_I420, Matrix::Bt601,  KorRawToI420,            true,  nullptr},
    {GST_VIDEO_FORMAT_BGR,  GST_VIDEO_FORMAT_I420, Matrix::Bt601,  Kor24BGToI420,           true,  nullptr},
    {GST_VIDEO_FORMAT_BGRA, GST_VIDEO_FORMAT_I420, Matrix::Bt709,  KorBGRAToI420UsingBT709, true,  nullptr},
    {GST_VIDEO_FORMAT_BGRA, GST_VIDEO_FORMAT_I420, Matrix::Bt2020, CaptureBt2020,           true,  nullptr},
    {GST_VIDEO_FORMAT_BGRA, GST_VIDEO_FORMAT_Y444, Matrix::Bt601,  KorBGRAToI444,           true,  nullptr},
    // Its flip would read below the picture.
    {GST_VIDEO_FORMAT_BGRA, GST_VIDEO_FORMAT_Y444, Matrix::Bt709,  KorBGRAToI444UsingBT709, false, nullptr},
    {GST_VIDEO_FORMAT_YUY2, GST_VIDEO_FORMAT_I420, Matrix::None,   KorYUY2ToI420,           true,  KorYUY2ToI420WithRotation},
    {GST_VIDEO_FORMAT_UYVY, GST_VIDEO_FORMAT_I420, Matrix::None,   KorUYVYToI420,           true,  KorUYVYToI420WithRotation},
};

constexpr Render kRenders[] = {
    {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_BGRA, Matrix::Bt601,  KorI420ToBGRA},
    {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_RGBA, Matrix::Bt601,  KorI420ToRGBA},
    {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_ARGB, Matrix::Bt601,  KorI420ToARGB},
    {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_ABGR, Matrix::Bt601,  KorI420ToABGR},
    {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_BGR,  Matrix::Bt601,  KorI420To24BG},
    {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_BGRA, Matrix::Bt709,  KorI420ToBGRAUsingBT709},
    {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_BGRA, Matrix::Bt2020, RenderBt2020},
    {GST_VIDEO_FORMAT_Y444, GST_VIDEO_FORMAT_BGRA, Matrix::Bt601,  KorI444ToBGRA},
    {GST_VIDEO_FORMAT_Y444, GST_VIDEO_FORMAT_BGRA, Matrix::Bt709,  KorI444ToBGRAUsingBT709},
    {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_YUY2, Matrix::None,   KorI420ToYUY2},
    {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_UYVY, Matrix::None,   KorI420ToUYVY},
};

// Split chroma, chroma rows averaged in pairs, or samples that only move.
constexpr GstVideoFormat kPlaneMoves[][2] = {
    {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_I420},
    {GST_VIDEO_FORMAT_NV12, GST_VIDEO_FORMAT_I420},
    {GST_VIDEO_FORMAT_NV21, GST_VIDEO_FORMAT_I420},
    {GST_VIDEO_FORMAT_Y42B, GST_VIDEO_FORMAT_I420},
    {GST_VIDEO_FORMAT_Y444, GST_VIDEO_FORMAT_Y444},
};

constexpr GstVideoFormat kSameBytes[][2] = {
    {GST_VIDEO_FORMAT_BGRx, GST_VIDEO_FORMAT_BGRA},
    {GST_VIDEO_FORMAT_RGBx, GST_VIDEO_FORMAT_RGBA},
    {GST_VIDEO_FORMAT_xRGB, GST_VIDEO_FORMAT_ARGB},
    {GST_VIDEO_FORMAT_xBGR, GST_VIDEO_FORMAT_ABGR},
    {GST_VIDEO_FORMAT_YV12, GST_VIDEO_FORMAT_I420},
};
// clang-format on

template <typename Row, std::size_t count>
const Row* Find(const Row (&rows)[count], GstVideoFormat from, GstVideoFormat to, Matrix matrix) {
    const auto row = std::find_if(std::begin(rows), std::end(rows),
                                  [=](const Row& r) { return r.from == from && r.to == to && r.matrix == matrix; });
    return row != std::end(rows) ? row : nullptr;
}

constexpr Matrix kMatrices[] = {Matrix::None, Matrix::Bt601, Matrix::Bt709, Matrix::Bt2020};

}  // namespace

GstVideoFormat Representative(GstVideoFormat format) {
    for (const auto& [same, representative] : kSameBytes) {
        if (same == format) {
            return representative;
        }
    }
    return format;
}

bool IsRgb(GstVideoFormat format) {
    const GstVideoFormatInfo* info = gst_video_format_get_info(format);
    return GST_VIDEO_FORMAT_INFO_IS_RGB(info);
}

bool Is420(GstVideoFormat format) {
    const GstVideoFormatInfo* info = gst_video_format_get_info(format);
    return GST_VIDEO_FORMAT_INFO_IS_YUV(info) && GST_VIDEO_FORMAT_INFO_W_SUB(info, 1) == 1 &&
           GST_VIDEO_FORMAT_INFO_H_SUB(info, 1) == 1;
}

const Capture* FindCapture(GstVideoFormat from, GstVideoFormat to, Matrix matrix) {
    const GstVideoFormat planes = Representative(to);
    if (const Capture* direct = Find(kCaptures, Representative(from), planes, matrix)) {
        return direct;
    }
    return IsRgb(from) ? Find(kCaptures, GST_VIDEO_FORMAT_BGRA, planes, matrix) : nullptr;
}

const Render* FindRender(GstVideoFormat from, GstVideoFormat to, Matrix matrix) {
    const GstVideoFormat planes = Representative(from);
    if (const Render* direct = Find(kRenders, planes, Representative(to), matrix)) {
        return direct;
    }
    return IsRgb(to) ? Find(kRenders, planes, GST_VIDEO_FORMAT_BGRA, matrix) : nullptr;
}

bool MovesPlanes(GstVideoFormat from, GstVideoFormat to) {
    return std::any_of(std::begin(kPlaneMoves), std::end(kPlaneMoves), [=](const GstVideoFormat(&pair)[2]) {
        return pair[0] == Representative(from) && pair[1] == Representative(to);
    });
}

bool HasPair(GstVideoFormat from, GstVideoFormat to) {
    const GstVideoFormat source = Representative(from);
    const GstVideoFormat target = Representative(to);
    return MovesPlanes(from, to) || std::any_of(std::begin(kMatrices), std::end(kMatrices), [=](Matrix matrix) {
               return Find(kCaptures, source, target, matrix) != nullptr ||
                      Find(kRenders, source, target, matrix) != nullptr;
           });
}

bool HasPair(GstVideoFormat from, GstVideoFormat to, Matrix matrix) {
    return HasPair(from, to) && (MovesPlanes(from, to) || FindCapture(from, to, matrix) != nullptr ||
                                 FindRender(from, to, matrix) != nullptr);
}

bool CanDither(GstVideoFormat to) {
    return Representative(to) != GST_VIDEO_FORMAT_Y444;
}

}  // namespace korgst
