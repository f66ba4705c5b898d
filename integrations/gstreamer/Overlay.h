// A picture that is laid over others: I420, with an opacity for each sample if it has one.
#ifndef KOR_GSTREAMER_OVERLAY_H
#define KOR_GSTREAMER_OVERLAY_H

#include <gst/video/video.h>

#include <vector>

#include "Converter.h"
#include "FrameView.h"

namespace korgst {

class Overlay {
  public:
    Overlay() = default;
    ~Overlay() { Clear(); }
    Overlay(const Overlay&) = delete;
    Overlay& operator=(const Overlay&) = delete;

    // Keeps the buffer, or what is made of it with this matrix. Returns false if it cannot be read.
    bool Set(GstBuffer* buffer, const GstVideoInfo& info, Matrix matrix);
    void Clear();
    bool IsSet() const { return isSet_; }

    // Whatever lies outside the background is left out. Left of it and above it, positions are rounded down to even
    // ones, because chroma has half as many samples.
    void BlendOver(const FrameView& background, int x, int y, KorUint8 opacity);

  private:
    void ConvertRgb(const GstVideoFrame& frame, Matrix matrix);
    void ReadOpacity(const GstVideoFrame& frame);
    void ScaleOpacity(KorUint8 opacity);

    bool isSet_ = false;
    bool isMapped_ = false;
    GstVideoFrame frame_;
    FrameView planes_;
    std::vector<KorUint8> converted_;
    std::vector<KorUint8> opacity_;  // of Y and of chroma, as it came
    std::vector<KorUint8> scaled_;   // the same, times what the whole picture has
    int scale_ = -1;                 // for which it was computed
};

}  // namespace korgst

#endif
