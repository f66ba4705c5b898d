#include "Converter.h"

#include <algorithm>
#include <cstring>

namespace korgst {

namespace {

// Scratch rows of a band take about this much, so that they stay in a core's own cache.
constexpr KorSizeT kBandBytes = 256 * 1024;
// A rotated band becomes columns, of which a row should hold a cache line at least.
constexpr KorSizeT kRotatedRows = 64;

bool IsOdd(KorSizeT size) {
    return size % 2 != 0;
}

KorSizeT BytesOfPixel(GstVideoFormat format) {
    return static_cast<KorSizeT>(GST_VIDEO_FORMAT_INFO_PSTRIDE(gst_video_format_get_info(format), 0));
}

// A plane, walked from its first row or from its last.
struct Walk {
    const KorUint8* first;
    KorDistanceT pitch;
};

Walk WalkOf(const Plane& plane, bool flip) {
    const KorDistanceT pitch = static_cast<KorDistanceT>(plane.pitch);
    return flip ? Walk{plane.Row(plane.height - 1), -pitch} : Walk{plane.data, pitch};
}

void Turn(const Plane& from, bool flip, KorImageRotationDegree angle, KorUint8* to, KorSizeT pitch) {
    const Walk walk = WalkOf(from, flip);
    KorPlanarRotation(walk.first, walk.pitch, to, pitch, from.width, from.height, angle);
}

Plane RowsOf(const Plane& plane, KorSizeT first, KorSizeT rows) {
    return {plane.Row(first), plane.pitch, plane.width, rows};
}

Plane ColumnsOf(const Plane& plane, KorSizeT first, KorSizeT columns) {
    return {plane.data + first, plane.pitch, columns, plane.height};
}

// The part of a plane that becomes rows [first, first + rows) of the plane in its new direction.
Plane PartFor(const Plane& from, Direction direction, KorSizeT first, KorSizeT rows) {
    if (direction.SwapsSides()) {
        return ColumnsOf(from, direction.angle == 270 ? from.width - first - rows : first, rows);
    }
    return RowsOf(from, direction.IsUpsideDown() ? from.height - first - rows : first, rows);
}

// Repeats the last column and row, so that the size can be treated as even. There must be room.
void EvenOut(const Plane& plane, KorSizeT bytes) {
    if (IsOdd(plane.width)) {
        for (KorSizeT row = 0; row < plane.height; ++row) {
            KorUint8* last = plane.Row(row) + (plane.width - 1) * bytes;
            std::memcpy(last + bytes, last, bytes);
        }
    }
    if (IsOdd(plane.height)) {
        std::memcpy(plane.Row(plane.height), plane.Row(plane.height - 1), EvenUp(plane.width) * bytes);
    }
}

KorUint8* Grow(std::vector<KorUint8>& memory, KorSizeT size) {
    if (memory.size() < size) {
        memory.resize(size);
    }
    return memory.data();
}

}  // namespace

Converter::Converter(GstVideoFormat from, GstVideoFormat to, Matrix matrix) {
    if (MovesPlanes(from, to)) {
        const bool splits = from == GST_VIDEO_FORMAT_NV12 || from == GST_VIDEO_FORMAT_NV21;
        const bool halves = from == GST_VIDEO_FORMAT_Y42B;
        run_ = splits ? &Converter::SplitBand : halves ? &Converter::HalveBand : &Converter::MoveBand;
    } else if ((render_ = FindRender(from, to, matrix)) != nullptr) {
        run_ = &Converter::RenderBand;
        reorder_ = render_->to != Representative(to) ? ReorderFromBgra(to) : nullptr;
    } else {
        capture_ = FindCapture(from, to, matrix);
        run_ = &Converter::CaptureBand;
        reorder_ = capture_->from != Representative(from) ? ReorderToBgra(from) : nullptr;
    }
}

// Each thread has one part of the picture, which it converts band by band. All begin at even rows.
void Converter::Run(const FrameView& from, const FrameView& to, Workers& workers) {
    const bool dithers = dither_ != KOR_VIDEOFRAMEDITHERLEVEL_Off;
    const KorSizeT rows = render_ != nullptr ? to.height : from.height;
    const KorSizeT bandRows = RowsOfBand(from, to);
    const KorSizeT threads = dithers ? 1 : std::min<KorSizeT>(workers.Threads(), (rows + 1) / 2);
    const KorSizeT partRows = EvenUp((rows + threads - 1) / threads);
    scratch_.resize(std::max<KorSizeT>(scratch_.size(), threads));
    workers.Run(static_cast<unsigned>(threads), [&](unsigned part) {
        const KorSizeT end = std::min(rows, (part + 1) * partRows);
        for (KorSizeT first = part * partRows; first < end; first += bandRows) {
            (this->*run_)(from, to, {first, std::min(bandRows, end - first)}, scratch_[part]);
        }
    });
    if (dithers && render_ == nullptr) {
        DitherPlanes(to, dither_, scratch_[0]);
    }
}

// Where a band has no use for scratch memory, it is all that a thread has to do. Noise is for the whole frame.
KorSizeT Converter::RowsOfBand(const FrameView& from, const FrameView& to) const {
    const bool packed = capture_ != nullptr || render_ != nullptr;
    const bool odd = IsOdd(from.width) || IsOdd(from.height);
    const bool scratch =
        packed ? !direction_.IsIdentity() || odd || reorder_ != nullptr : from.format == GST_VIDEO_FORMAT_Y42B;
    if (!scratch || dither_ != KOR_VIDEOFRAMEDITHERLEVEL_Off) {
        return EvenUp(std::max(from.height, to.height));
    }
    const KorSizeT rowBytes = 6 * std::max(from.width, to.width);
    const KorSizeT rows = std::max<KorSizeT>(kBandBytes / rowBytes, 16) / 16 * 16;
    return direction_.SwapsSides() ? std::max(rows, kRotatedRows) : rows;
}

// The rows of a plane that belong to a band of the frame; a row of chroma that serves two rows is the upper one's.
Converter::Band Converter::BandOf(const Plane& plane, KorSizeT frameHeight, Band band) {
    if (plane.height == frameHeight) {
        return band;
    }
    return {band.first / 2, (band.rows + 1) / 2};
}

// The rows of a band that is counted in the order of reading.
Plane Converter::Read(const Plane& source, Band band) const {
    return RowsOf(source, direction_.flip ? source.height - band.first - band.rows : band.first, band.rows);
}

// Where the rows of such a band go: rows or columns of the destination. height is that of the source.
KorUint8* Converter::PlaceOf(const Plane& to, Band band, KorSizeT height) const {
    const bool fromTheEnd = direction_.angle == 90 || direction_.angle == 180;
    const KorSizeT place = fromTheEnd ? height - band.first - band.rows : band.first;
    return direction_.SwapsSides() ? to.data + place : to.Row(place);
}

// With room for an even size.
FrameView Converter::ScratchPlanes(GstVideoFormat format, KorSizeT width, KorSizeT height, Scratch& scratch) {
    const bool halved = Is420(format);
    const KorSizeT widthC = halved ? (width + 1) / 2 : width;
    const KorSizeT heightC = halved ? (height + 1) / 2 : height;
    const KorSizeT pitch = (EvenUp(width) + 63) / 64 * 64;
    const KorSizeT pitchC = (widthC + 63) / 64 * 64;
    const KorSizeT bytes = pitch * EvenUp(height);
    const KorSizeT bytesC = pitchC * (halved ? heightC : EvenUp(height));
    KorUint8* y = Grow(scratch.planes, bytes + 2 * bytesC);
    KorUint8* u = y + bytes;
    KorUint8* v = u + bytesC;
    return {
        format, width, height, {{y, pitch, width, height}, {u, pitchC, widthC, heightC}, {v, pitchC, widthC, heightC}}};
}

// ---- From planes to planes ----

void Converter::MovePlane(const Plane& from, Band band, const Plane& to) const {
    Turn(Read(from, band), direction_.flip, direction_.angle, PlaceOf(to, band, from.height), to.pitch);
}

void Converter::MoveBand(const FrameView& from, const FrameView& to, Band band, Scratch&) const {
    for (int i = 0; i < 3; ++i) {
        MovePlane(from.planes[i], BandOf(from.planes[i], from.height, band), to.planes[i]);
    }
}

void Converter::SplitBand(const FrameView& from, const FrameView& to, Band band, Scratch&) const {
    MovePlane(from.planes[0], band, to.planes[0]);
    const Plane& pairs = from.planes[1];
    const bool uFirst = from.format == GST_VIDEO_FORMAT_NV12;
    const Plane& uv1 = to.planes[uFirst ? 1 : 2];
    const Plane& uv2 = to.planes[uFirst ? 2 : 1];
    const Band bandC = BandOf(pairs, from.height, band);
    const Walk walk = WalkOf(Read(pairs, bandC), direction_.flip);
    KorPlanarUVDeinterlaceRotation(walk.first, walk.pitch, PlaceOf(uv1, bandC, pairs.height), uv1.pitch,
                                   PlaceOf(uv2, bandC, pairs.height), uv2.pitch, pairs.width, bandC.rows,
                                   direction_.angle);
}

// Pairs of rows are averaged in the order of reading; the last row of an odd height is kept.
void Converter::HalveBand(const FrameView& from, const FrameView& to, Band band, Scratch& scratch) const {
    MovePlane(from.planes[0], band, to.planes[0]);
    for (int i = 1; i < 3; ++i) {
        const Plane& source = from.planes[i];
        const Band bandC = {band.first / 2, (band.rows + 1) / 2};
        KorUint8* place = PlaceOf(to.planes[i], bandC, (source.height + 1) / 2);
        Plane half = {place, to.planes[i].pitch, source.width, bandC.rows};
        if (direction_.angle != 0) {
            half.pitch = source.width;
            half.data = Grow(scratch.planes, half.pitch * half.height);
        }
        const Walk walk = WalkOf(Read(source, band), direction_.flip);
        KorPlanarUV422To420(walk.first, walk.pitch, half.data, half.pitch, half.width, band.rows / 2);
        if (IsOdd(band.rows)) {
            const KorUint8* last = walk.first + static_cast<KorDistanceT>(band.rows - 1) * walk.pitch;
            std::memcpy(half.Row(half.height - 1), last, half.width);
        }
        if (direction_.angle != 0) {
            Turn(half, false, direction_.angle, place, to.planes[i].pitch);
        }
    }
}

// The filter leaves an odd last column and row alone, so luma is given another one of each.
void Converter::DitherPlanes(const FrameView& frame, KorVideoFrameDitherLevel level, Scratch& scratch) {
    const Plane& u = frame.planes[1];
    const Plane& v = frame.planes[2];
    Plane y = frame.planes[0];
    const bool odd = IsOdd(frame.width) || IsOdd(frame.height);
    if (odd) {
        y = ScratchPlanes(frame.format, frame.width, frame.height, scratch).planes[0];
        Turn(frame.planes[0], false, 0, y.data, y.pitch);
        EvenOut(y, 1);
    }
    KorI420Dither(y.data, y.pitch, u.data, u.pitch, v.data, v.pitch, y.data, y.pitch, u.data, u.pitch, v.data, v.pitch,
                  EvenUp(frame.width), EvenUp(frame.height), level, 1);
    if (odd) {
        Turn(y, false, 0, frame.planes[0].data, frame.planes[0].pitch);
    }
}

// ---- From packed pixels to planes ----

// Rows in the order of reading, as BGRA if need be, and of even size.
Plane Converter::Stage(const Plane& source, Band band, Scratch& scratch) const {
    const KorSizeT bytes = BytesOfPixel(capture_->from);
    const KorSizeT pitch = EvenUp(source.width) * bytes;
    const Plane staged = {Grow(scratch.packed, pitch * EvenUp(band.rows)), pitch, source.width, band.rows};
    for (KorSizeT row = 0; row < band.rows; ++row) {
        const KorSizeT read = band.first + row;
        const KorUint8* from = source.Row(direction_.flip ? source.height - 1 - read : read);
        if (reorder_ != nullptr) {
            reorder_(staged.Row(row), from, source.width);
        } else {
            std::memcpy(staged.Row(row), from, source.width * bytes);
        }
    }
    EvenOut(staged, bytes);
    return staged;
}

void Converter::CaptureBand(const FrameView& from, const FrameView& to, Band band, Scratch& scratch) const {
    const bool rgb = IsRgb(from.format);
    const bool odd = IsOdd(from.width) || IsOdd(band.rows);
    const bool stages = rgb && (odd || reorder_ != nullptr || (direction_.flip && !capture_->flips));
    const Plane x = stages ? Stage(from.planes[0], band, scratch) : Read(from.planes[0], band);
    const KorBool flip = direction_.flip && !stages;
    // Pixels of packed YUV come in pairs, of which the last one may be half outside the picture; it is there to be
    // read.
    const KorSizeT width = EvenUp(x.width);
    const KorSizeT height = rgb ? EvenUp(x.height) : x.height;

    const bool rotates = direction_.angle != 0;
    const bool direct = !odd && (!rotates || capture_->rotate != nullptr);
    FrameView planes = direct ? to : ScratchPlanes(to.format, x.width, x.height, scratch);
    KorUint8* places[3];
    for (int i = 0; i < 3; ++i) {
        const KorSizeT height0 = i == 0 || !Is420(to.format) ? from.height : (from.height + 1) / 2;
        const Band bandOfPlane = i == 0 || !Is420(to.format) ? band : Band{band.first / 2, (band.rows + 1) / 2};
        places[i] = PlaceOf(to.planes[i], bandOfPlane, height0);
        planes.planes[i].data = direct ? places[i] : planes.planes[i].data;
    }
    const Plane& y = planes.planes[0];
    const Plane& u = planes.planes[1];
    const Plane& v = planes.planes[2];
    if (direct && rotates) {
        capture_->rotate(y.data, y.pitch, u.data, u.pitch, v.data, v.pitch, x.data, x.pitch, width, height, flip,
                         direction_.angle);
        return;
    }
    capture_->run(y.data, y.pitch, u.data, u.pitch, v.data, v.pitch, x.data, x.pitch, width, height, flip);
    for (int i = 0; i < 3 && !direct; ++i) {
        Turn(planes.planes[i], false, direction_.angle, places[i], to.planes[i].pitch);
    }
}

// ---- From planes to packed pixels ----

// The planes of a band in their new direction. 4:2:0 is rendered in blocks of 2x2 pixels, so its size is made even.
FrameView Converter::PlanesFor(const FrameView& from, const FrameView& to, Band band, Scratch& scratch) const {
    const bool odd = Is420(from.format) && (IsOdd(to.width) || IsOdd(band.rows));
    if (direction_.IsIdentity() && !odd) {
        FrameView view = from;
        for (Plane& plane : view.planes) {
            const Band rows = BandOf(plane, from.height, band);
            plane = RowsOf(plane, rows.first, rows.rows);
        }
        return view;
    }
    const FrameView view = ScratchPlanes(from.format, to.width, band.rows, scratch);
    for (int i = 0; i < 3; ++i) {
        const bool halved = i != 0 && Is420(from.format);
        const Plane part =
            PartFor(from.planes[i], direction_, halved ? band.first / 2 : band.first, view.planes[i].height);
        Turn(part, direction_.flip, direction_.angle, view.planes[i].data, view.planes[i].pitch);
    }
    EvenOut(view.planes[0], 1);
    return view;
}

void Converter::RenderBand(const FrameView& from, const FrameView& to, Band band, Scratch& scratch) const {
    const FrameView planes = PlanesFor(from, to, band, scratch);
    const bool blocks = Is420(from.format);
    const KorSizeT width = blocks ? EvenUp(to.width) : to.width;
    const KorSizeT height = blocks ? EvenUp(band.rows) : band.rows;
    const Plane target = RowsOf(to.planes[0], band.first, band.rows);
    Plane x = target;
    const bool direct = reorder_ == nullptr && width == to.width && height == band.rows;
    if (!direct) {
        x.pitch = width * BytesOfPixel(render_->to);
        x.data = Grow(scratch.packed, x.pitch * height);
    }
    const Plane& y = planes.planes[0];
    const Plane& u = planes.planes[1];
    const Plane& v = planes.planes[2];
    render_->run(y.data, y.pitch, u.data, u.pitch, v.data, v.pitch, x.data, x.pitch, width, height, dither_);
    if (direct) {
        return;
    }
    // The last pair of packed YUV is whole, even if one of its pixels is outside the picture.
    const KorSizeT shown = IsRgb(to.format) ? to.width : std::min(width, target.pitch / 2);
    for (KorSizeT row = 0; row < band.rows; ++row) {
        if (reorder_ != nullptr) {
            reorder_(target.Row(row), x.Row(row), to.width);
        } else {
            std::memcpy(target.Row(row), x.Row(row), shown * BytesOfPixel(to.format));
        }
    }
}

}  // namespace korgst
