#include "Capture.h"

#include <cstring>
#include <memory>

#include "Errors.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "LibraryCall.h"

namespace korframe {

namespace {

using Run = std::function<void(const Frame&, YuvImage&)>;

// Steps that a converter does while it reads: bottom row first, then a turn or a mirror.
struct OnTheWay {
    bool flip = false;
    bool mirror = false;
    KorImageRotationDegree angle = 0;
};

bool TakeFront(std::vector<Step>& steps, StepKind kind, Step* taken = nullptr) {
    if (steps.empty() || steps.front().kind != kind) {
        return false;
    }
    if (taken != nullptr) {
        *taken = steps.front();
    }
    steps.erase(steps.begin());
    return true;
}

OnTheWay TakeFlip(std::vector<Step>& steps) {
    OnTheWay way;
    way.flip = TakeFront(steps, StepKind::Flip);
    return way;
}

void TakeTurn(std::vector<Step>& steps, OnTheWay& way) {
    Step turn = {StepKind::Turn};
    if (TakeFront(steps, StepKind::Turn, &turn)) {
        way.angle = turn.angle;
    }
}

// An image for the frame as it comes out of its turn.
void ResetImage(const Frame& frame, Layout target, const OnTheWay& way, YuvImage& image) {
    const bool across = way.angle % 180 != 0;
    image.Reset(target, across ? frame.Height() : frame.Width(), across ? frame.Width() : frame.Height());
}

// ---- Planar: a copy of each plane ----

Run CapturePlanar(Layout layout) {
    return [layout](const Frame& frame, YuvImage& image) {
        image.Reset(layout, frame.Width(), frame.Height());
        std::size_t plane = 0;
        for (Plane* to : {&image.y, &image.u, &image.v}) {
            CallLibrary(KorPlanarRotation_C_, RowsOf(frame, plane), *to, to->width, to->height, 0u);
            ++plane;
        }
    };
}

// ---- Planar 4:2:2: luma is copied, each pair of chroma rows averaged; the lone last row of an odd height stays ----

void HalveRows(const SourceRows& from, Plane& to, std::size_t rows) {
    CallLibrary(KorPlanarUV422To420_C_, from, to, to.width, rows / 2);
    if (rows % 2 != 0) {
        const KorDistanceT last = static_cast<KorDistanceT>(rows - 1) * from.pitch;
        std::memcpy(to.Row(rows / 2), from.first + last, to.width);
    }
}

Run CapturePlanar422(const OnTheWay& way) {
    return [way](const Frame& frame, YuvImage& image) {
        image.Reset(Layout::I420, frame.Width(), frame.Height());
        CallLibrary(KorPlanarRotation_C_, RowsOf(frame, 0, way.flip), image.y, image.y.width, image.y.height, 0u);
        HalveRows(RowsOf(frame, 1, way.flip), image.u, frame.Height());
        HalveRows(RowsOf(frame, 2, way.flip), image.v, frame.Height());
    };
}

// ---- Semi-planar: luma by itself, chroma split into two planes, both turned or mirrored in the same pass ----

Run CaptureSemiPlanar(Layout layout, const OnTheWay& way) {
    return [layout, way](const Frame& frame, YuvImage& image) {
        ResetImage(frame, Layout::I420, way, image);
        const std::size_t width = frame.Width();
        const std::size_t height = frame.Height();
        const std::size_t widthC = (width + 1) / 2;
        const std::size_t heightC = (height + 1) / 2;
        const SourceRows y = RowsOf(frame, 0, way.flip);
        const SourceRows uv = RowsOf(frame, 1, way.flip);
        Plane& first = layout == Layout::Nv12 ? image.u : image.v;
        Plane& second = layout == Layout::Nv12 ? image.v : image.u;
        if (way.mirror) {
            CallLibrary(KorPlanarMirror_C_, y, image.y, width, height);
            CallLibrary(KorPlanarUVDeinterlaceMirror_C_, uv, first, second, widthC, heightC);
        } else {
            CallLibrary(KorPlanarRotation_C_, y, image.y, width, height, way.angle);
            CallLibrary(KorPlanarUVDeinterlaceRotation_C_, uv, first, second, widthC, heightC, way.angle);
        }
    };
}

// ---- Packed 4:2:2 and M420 ----

using Converter = decltype(KorYUY2ToI420_C_);
using TurningConverter = decltype(KorYUY2ToI420WithRotation_C_);

struct PackedRoad {
    Layout source;
    Converter* convert;
    TurningConverter* convertAndTurn;  // null where there is none
    bool flips;                        // reads bottom-up when told to
};

// clang-format off
constexpr PackedRoad kPackedRoads[] = {
    {Layout::Yuy2, KorYUY2ToI420_C_, KorYUY2ToI420WithRotation_C_, true},
    {Layout::Uyvy, KorUYVYToI420_C_, KorUYVYToI420WithRotation_C_, true},
    {Layout::Yuv2, KorYuv2ToI420_C_, nullptr,                      true},
    {Layout::M420, KorM420ToI420_C_, nullptr,                      false},  // would flip pairs of rows, not rows
};
// clang-format on

const PackedRoad* FindPackedRoad(Layout source) {
    for (const PackedRoad& road : kPackedRoads) {
        if (road.source == source) {
            return &road;
        }
    }
    return nullptr;
}

Run CapturePacked(const PackedRoad& road, const OnTheWay& way) {
    return [road, way](const Frame& frame, YuvImage& image) {
        ResetImage(frame, Layout::I420, way, image);
        if (way.angle == 0) {
            CallLibrary(road.convert, image, frame, frame.Width(), frame.Height(), way.flip);
        } else {
            CallLibrary(road.convertAndTurn, image, frame, frame.Width(), frame.Height(), way.flip, way.angle);
        }
    };
}

// ---- RGB ----

struct RgbRoad {
    Layout source;
    MatrixKind matrix;
    Layout target;
    Converter* convert;
    bool flips;     // reads bottom-up when told to
    bool evenOnly;  // the last pixels of odd sizes would not come out by the matrix
};

// The converter with coefficients takes an argument more and is called by itself.
constexpr Converter* kOwnMatrix = nullptr;

// clang-format off
constexpr RgbRoad kRgbRoads[] = {
    {Layout::Bgra,  MatrixKind::Bt601, Layout::I420, KorBGRAToI420_C_,           true,  false},
    {Layout::Rgba,  MatrixKind::Bt601, Layout::I420, KorRGBAToI420_C_,           true,  false},
    {Layout::Argb,  MatrixKind::Bt601, Layout::I420, KorARGBToI420_C_,           true,  false},
    {Layout::Abgr,  MatrixKind::Bt601, Layout::I420, KorABGRToI420_C_,           true,  false},
    {Layout::Rgb24, MatrixKind::Bt601, Layout::I420, KorRawToI420_C_,            true,  true},
    {Layout::Bgr24, MatrixKind::Bt601, Layout::I420, Kor24BGToI420_C_,           true,  true},
    {Layout::Bgra,  MatrixKind::Bt709, Layout::I420, KorBGRAToI420UsingBT709_C_, true,  false},
    {Layout::Bgra,  MatrixKind::Own,   Layout::I420, kOwnMatrix,                 true,  true},
    {Layout::Bgra,  MatrixKind::Bt601, Layout::I444, KorBGRAToI444_C_,           true,  false},
    {Layout::Bgra,  MatrixKind::Bt709, Layout::I444, KorBGRAToI444UsingBT709_C_, false, false},
};
// clang-format on

const RgbRoad* FindRgbRoad(Layout source, MatrixKind matrix, Layout target) {
    for (const RgbRoad& road : kRgbRoads) {
        if (road.source == source && road.matrix == matrix && road.target == target) {
            return &road;
        }
    }
    return nullptr;
}

// Repeats the last column and row to make the size even, and puts the rows in the order in which they are to be read.
void PadToEven(const Frame& frame, bool flip, Frame& padded) {
    const std::size_t bytes = frame.Format().rgb.bytes;
    padded.Reset(frame.Format(), frame.Width() + frame.Width() % 2, frame.Height() + frame.Height() % 2);
    for (std::size_t row = 0; row < padded.Height(); ++row) {
        const std::size_t read = row < frame.Height() ? row : frame.Height() - 1;
        std::memcpy(padded.Pixel(0, row), frame.Pixel(0, flip ? frame.Height() - 1 - read : read), frame.Pitch());
        std::memcpy(padded.Pixel(padded.Width() - 1, row), padded.Pixel(frame.Width() - 1, row), bytes);
    }
}

void CaptureRgb(const RgbRoad& road, const Matrix& matrix, const Frame& frame, bool flip, YuvImage& image) {
    if (road.convert == kOwnMatrix) {
        CallLibrary(KorBGRAToI420General_C_, image, frame, frame.Width(), frame.Height(), flip, matrix.coefficients);
    } else {
        CallLibrary(road.convert, image, frame, frame.Width(), frame.Height(), flip);
    }
}

Run CaptureRgbInOrder(const RgbRoad& road, const Matrix& matrix, const OnTheWay& way) {
    return [road, matrix, way, padded = std::make_shared<Frame>()](const Frame& frame, YuvImage& image) {
        image.Reset(road.target, frame.Width(), frame.Height());
        if (road.evenOnly && (frame.Width() % 2 != 0 || frame.Height() % 2 != 0)) {
            PadToEven(frame, way.flip, *padded);
            CaptureRgb(road, matrix, *padded, false, image);
        } else {
            CaptureRgb(road, matrix, frame, way.flip, image);
        }
    };
}

Run ReorderFirst(const PixelFormat& order, Run capture) {
    return [&order, capture = std::move(capture), reordered = std::make_shared<Frame>()](const Frame& frame,
                                                                                         YuvImage& image) {
        Reorder(frame, order, *reordered);
        capture(*reordered, image);
    };
}

}  // namespace

Layout PlanesFor(const PixelFormat& source, const PixelFormat* asked) {
    if (source.IsPlanarYuv()) {
        return source.layout;
    }
    return asked != nullptr && asked->IsPlanarYuv() && source.IsRgb() ? asked->layout : Layout::I420;
}

Capture::Capture(const StreamInfo& source, Layout target, const Matrix& matrix, std::vector<Step>& steps) {
    const Layout layout = source.format->layout;
    if (source.format->IsRgb()) {
        const RgbRoad* direct = FindRgbRoad(layout, matrix.kind, target);
        const RgbRoad* road = direct != nullptr ? direct : FindRgbRoad(Layout::Bgra, matrix.kind, target);
        if (road == nullptr) {
            FailUsage("--matrix " + matrix.name + ": own coefficients lead to i420 only; for " + FormatOf(target).name +
                      " take 601 or 709");
        }
        const OnTheWay way = road->flips ? TakeFlip(steps) : OnTheWay();
        run_ = CaptureRgbInOrder(*road, matrix, way);
        if (direct == nullptr) {
            run_ = ReorderFirst(FormatOf(road->source), std::move(run_));
        }
        return;
    }
    const PackedRoad* road = FindPackedRoad(layout);
    const bool semiPlanar = layout == Layout::Nv12 || layout == Layout::Nv21;
    if (layout == target) {
        run_ = CapturePlanar(layout);
    } else if (layout == Layout::I422 && target == Layout::I420) {
        run_ = CapturePlanar422(TakeFlip(steps));
    } else if (semiPlanar && target == Layout::I420) {
        OnTheWay way = TakeFlip(steps);
        way.mirror = TakeFront(steps, StepKind::Mirror);
        if (!way.mirror) {
            TakeTurn(steps, way);
        }
        run_ = CaptureSemiPlanar(layout, way);
    } else if (road != nullptr && target == Layout::I420) {
        OnTheWay way = road->flips ? TakeFlip(steps) : OnTheWay();
        // The turning converters make an odd height even, which would add a column or row to the picture.
        if (road->convertAndTurn != nullptr && source.height % 2 == 0) {
            TakeTurn(steps, way);
        }
        run_ = CapturePacked(*road, way);
    } else {
        FailUsage(source.name + ": there is no conversion from " + source.format->name + " to " +
                  FormatOf(target).name);
    }
}

bool Capture::Reaches(Layout source, Layout target) {
    if (FormatOf(source).IsRgb()) {
        return FindRgbRoad(Layout::Bgra, MatrixKind::Bt601, target) != nullptr;
    }
    return source == target || (target == Layout::I420 && source != Layout::I444);
}

}  // namespace korframe
