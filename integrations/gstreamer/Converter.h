// Converts frames of one format to another, in any direction: which function of the library, on which rows.
#ifndef KOR_GSTREAMER_CONVERTER_H
#define KOR_GSTREAMER_CONVERTER_H

#include <vector>

#include "Conversions.h"
#include "Direction.h"
#include "FrameView.h"
#include "Reorder.h"
#include "Workers.h"

namespace korgst {

// What the library's functions do not write for odd sizes is filled by repeating the last column and row; what they
// write beside the picture goes to memory of the converter.
class Converter {
  public:
    // There must be such a pair.
    Converter(GstVideoFormat from, GstVideoFormat to, Matrix matrix);

    void SetDirection(Direction direction) { direction_ = direction; }
    void SetDither(KorVideoFrameDitherLevel level) { dither_ = level; }

    // The bytes do not depend on the number of threads. A dithered frame stays on the caller's: its noise starts anew
    // in every call of the library.
    void Run(const FrameView& from, const FrameView& to, Workers& workers);

  private:
    // Rows between two stages, for one thread. They are few, so that they stay in the cache.
    struct Scratch {
        std::vector<KorUint8> packed;
        std::vector<KorUint8> planes;
    };

    // Rows of the destination of a renderer, or else of the source in the order of reading: from the bottom if flipped.
    struct Band {
        KorSizeT first;
        KorSizeT rows;
    };

    using RunBand = void (Converter::*)(const FrameView& from, const FrameView& to, Band band, Scratch& scratch) const;

    static Band BandOf(const Plane& plane, KorSizeT frameHeight, Band band);
    static FrameView ScratchPlanes(GstVideoFormat format, KorSizeT width, KorSizeT height, Scratch& scratch);
    static void DitherPlanes(const FrameView& frame, KorVideoFrameDitherLevel level, Scratch& scratch);

    KorSizeT RowsOfBand(const FrameView& from, const FrameView& to) const;
    Plane Read(const Plane& source, Band band) const;
    KorUint8* PlaceOf(const Plane& to, Band band, KorSizeT height) const;
    Plane Stage(const Plane& source, Band band, Scratch& scratch) const;

    void MovePlane(const Plane& from, Band band, const Plane& to) const;
    void MoveBand(const FrameView& from, const FrameView& to, Band band, Scratch& scratch) const;
    void SplitBand(const FrameView& from, const FrameView& to, Band band, Scratch& scratch) const;
    void HalveBand(const FrameView& from, const FrameView& to, Band band, Scratch& scratch) const;
    void CaptureBand(const FrameView& from, const FrameView& to, Band band, Scratch& scratch) const;
    FrameView PlanesFor(const FrameView& from, const FrameView& to, Band band, Scratch& scratch) const;
    void RenderBand(const FrameView& from, const FrameView& to, Band band, Scratch& scratch) const;

    RunBand run_;
    const Capture* capture_ = nullptr;
    const Render* render_ = nullptr;
    ReorderRow* reorder_ = nullptr;  // to or from BGRA, where only that has the matrix
    Direction direction_;
    KorVideoFrameDitherLevel dither_ = KOR_VIDEOFRAMEDITHERLEVEL_Off;
    std::vector<Scratch> scratch_;  // one for each thread
};

}  // namespace korgst

#endif
