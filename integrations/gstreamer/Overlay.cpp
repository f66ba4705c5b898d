#include "Overlay.h"

#include <algorithm>

namespace korgst {

namespace {

constexpr int kAlpha = 3;  // GStreamer's number of the component

Plane Part(const Plane& plane, KorSizeT column, KorSizeT row) {
    return {plane.Row(row) + column, plane.pitch, plane.width - column, plane.height - row};
}

// The opacity of a sample of chroma is the average of that of its pixels.
void AverageOpacity(const KorUint8* luma, KorSizeT width, KorSizeT height, KorUint8* chroma) {
    for (KorSizeT row = 0; row < height; row += 2) {
        const KorUint8* upper = luma + row * width;
        const KorUint8* lower = row + 1 < height ? upper + width : upper;
        for (KorSizeT column = 0; column < width; column += 2) {
            const KorSizeT right = column + 1 < width ? column + 1 : column;
            *chroma++ = static_cast<KorUint8>((upper[column] + upper[right] + lower[column] + lower[right] + 2) / 4);
        }
    }
}

}  // namespace

bool Overlay::Set(GstBuffer* buffer, const GstVideoInfo& info, Matrix matrix) {
    Clear();
    GstVideoInfo copy = info;
    if (!gst_video_frame_map(&frame_, &copy, buffer, GST_MAP_READ)) {
        return false;
    }
    isSet_ = true;
    isMapped_ = true;
    if (GST_VIDEO_INFO_HAS_ALPHA(&info)) {
        ReadOpacity(frame_);
    }
    if (IsRgb(GST_VIDEO_INFO_FORMAT(&info))) {
        ConvertRgb(frame_, matrix);
        gst_video_frame_unmap(&frame_);
        isMapped_ = false;
    } else {
        planes_ = ViewOf(frame_);
    }
    return true;
}

void Overlay::Clear() {
    if (isMapped_) {
        gst_video_frame_unmap(&frame_);
    }
    isMapped_ = false;
    isSet_ = false;
    opacity_.clear();
    scale_ = -1;
}

void Overlay::ConvertRgb(const GstVideoFrame& frame, Matrix matrix) {
    const FrameView from = ViewOf(frame);
    const KorSizeT widthC = (from.width + 1) / 2;
    const KorSizeT heightC = (from.height + 1) / 2;
    converted_.resize(from.width * from.height + 2 * widthC * heightC);
    KorUint8* y = converted_.data();
    KorUint8* u = y + from.width * from.height;
    KorUint8* v = u + widthC * heightC;
    planes_ = {GST_VIDEO_FORMAT_I420,
               from.width,
               from.height,
               {{y, from.width, from.width, from.height}, {u, widthC, widthC, heightC}, {v, widthC, widthC, heightC}}};
    Workers workers;
    Converter(from.format, GST_VIDEO_FORMAT_I420, matrix).Run(from, planes_, workers);
}

void Overlay::ReadOpacity(const GstVideoFrame& frame) {
    const KorSizeT width = static_cast<KorSizeT>(GST_VIDEO_FRAME_WIDTH(&frame));
    const KorSizeT height = static_cast<KorSizeT>(GST_VIDEO_FRAME_HEIGHT(&frame));
    const KorSizeT step = static_cast<KorSizeT>(GST_VIDEO_FRAME_COMP_PSTRIDE(&frame, kAlpha));
    const KorSizeT pitch = static_cast<KorSizeT>(GST_VIDEO_FRAME_COMP_STRIDE(&frame, kAlpha));
    const KorUint8* alpha = static_cast<const KorUint8*>(GST_VIDEO_FRAME_COMP_DATA(&frame, kAlpha));
    opacity_.resize(width * height + (width + 1) / 2 * ((height + 1) / 2));
    for (KorSizeT row = 0; row < height; ++row) {
        for (KorSizeT column = 0; column < width; ++column) {
            opacity_[row * width + column] = alpha[row * pitch + column * step];
        }
    }
    AverageOpacity(opacity_.data(), width, height, opacity_.data() + width * height);
}

void Overlay::ScaleOpacity(KorUint8 opacity) {
    if (scale_ == opacity) {
        return;
    }
    scale_ = opacity;
    scaled_.resize(opacity_.size());
    std::transform(opacity_.begin(), opacity_.end(), scaled_.begin(),
                   [=](KorUint8 own) { return static_cast<KorUint8>((own * opacity + 127) / 255); });
}

void Overlay::BlendOver(const FrameView& background, int x, int y, KorUint8 opacity) {
    // What lies to the left of the background and above it.
    const KorSizeT left = x < 0 ? EvenUp(static_cast<KorSizeT>(-static_cast<gint64>(x))) : 0;
    const KorSizeT top = y < 0 ? EvenUp(static_cast<KorSizeT>(-static_cast<gint64>(y))) : 0;
    const KorSizeT column = x < 0 ? 0 : static_cast<KorSizeT>(x);
    const KorSizeT row = y < 0 ? 0 : static_cast<KorSizeT>(y);
    if (opacity == 0 || left >= planes_.width || top >= planes_.height || column >= background.width ||
        row >= background.height) {
        return;
    }
    const KorSizeT width = std::min(planes_.width - left, background.width - column);
    const KorSizeT height = std::min(planes_.height - top, background.height - row);
    const Plane fore[3] = {Part(planes_.planes[0], left, top), Part(planes_.planes[1], left / 2, top / 2),
                           Part(planes_.planes[2], left / 2, top / 2)};
    const Plane(&back)[3] = background.planes;
    if (opacity_.empty()) {
        KorI420AlphaBlend(back[0].data, back[0].pitch, back[1].data, back[1].pitch, back[2].data, back[2].pitch,
                          fore[0].data, fore[0].pitch, fore[1].data, fore[1].pitch, fore[2].data, fore[2].pitch, width,
                          height, column, row, opacity);
        return;
    }
    ScaleOpacity(opacity);
    const KorSizeT widthC = (planes_.width + 1) / 2;
    KorUint8* alpha = scaled_.data() + top * planes_.width + left;
    KorUint8* alphaC = scaled_.data() + planes_.width * planes_.height + top / 2 * widthC + left / 2;
    KorI420AlphaArrayBlend(back[0].data, back[0].pitch, back[1].data, back[1].pitch, back[2].data, back[2].pitch,
                           fore[0].data, fore[0].pitch, fore[1].data, fore[1].pitch, fore[2].data, fore[2].pitch, width,
                           height, column, row, alpha, planes_.width, alphaC, widthC, alphaC, widthC);
}

}  // namespace korgst
