#include "pipeline/Capture.h"

#include <cstring>
#include <memory>

#include "io/Errors.h"
#include "Kor/Video/Common/KorYuv420.h"
#include "pipeline/LibraryCall.h"
#include "pipeline/Resample.h"

namespace korframe {

namespace {

using Run = std::function<void(Frame&, YuvImage&)>;

// Steps that a converter does while it reads: bottom row first, then a rotation or a mirror.
struct FusedSteps {
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

FusedSteps TakeFlip(std::vector<Step>& steps) {
    FusedSteps fused;
    fused.flip = TakeFront(steps, StepKind::Flip);
    return fused;
}

void TakeRotation(std::vector<Step>& steps, FusedSteps& fused) {
    Step rotation = {StepKind::Rotate};
    if (TakeFront(steps, StepKind::Rotate, &rotation)) {
        fused.angle = rotation.angle;
    }
}

// Sizes an image for the rotated frame.
void ResetImage(const Frame& frame, Layout target, const FusedSteps& fused, YuvImage& image) {
    const bool swapped = fused.angle % 180 != 0;
    image.Reset(target, swapped ? frame.Height() : frame.Width(), swapped ? frame.Width() : frame.Height());
}

// ---- Planar: as it is, or with another chroma grid ----

Run CapturePlanar(Layout target) {
    return [target, spare = std::make_shared<YuvImage>()](Frame& frame, YuvImage& image) {
        image.Take(frame);
        ResampleChroma(target, image, *spare);
    };
}

// ---- Planar 4:2:2: luma is copied, pairs of chroma rows are averaged; the last row of an odd height is kept ----

void HalveRows(const SourceRows& from, Plane& to, std::size_t rows) {
    CallLibrary(KorPlanarUV422To420, from, to, to.width, rows / 2);
    if (rows % 2 != 0) {
        const KorDistanceT last = static_cast<KorDistanceT>(rows - 1) * from.pitch;
        std::memcpy(to.Row(rows / 2), from.first + last, to.width);
    }
}

Run CapturePlanar422(const FusedSteps& fused) {
    return [fused](const Frame& frame, YuvImage& image) {
        image.Reset(Layout::I420, frame.Width(), frame.Height());
        CallLibrary(KorPlanarRotation, RowsOf(frame, 0, fused.flip), image.y, image.y.width, image.y.height, 0u);
        HalveRows(RowsOf(frame, 1, fused.flip), image.u, frame.Height());
        HalveRows(RowsOf(frame, 2, fused.flip), image.v, frame.Height());
    };
}

// ---- Semi-planar: luma as it is, chroma split in two; rotated or mirrored in the same pass ----

Run CaptureSemiPlanar(Layout layout, const FusedSteps& fused) {
    return [layout, fused](const Frame& frame, YuvImage& image) {
        ResetImage(frame, Layout::I420, fused, image);
        const std::size_t width = frame.Width();
        const std::size_t height = frame.Height();
        const std::size_t widthC = (width + 1) / 2;
        const std::size_t heightC = (height + 1) / 2;
        const SourceRows y = RowsOf(frame, 0, fused.flip);
        const SourceRows uv = RowsOf(frame, 1, fused.flip);
        Plane& first = layout == Layout::Nv12 ? image.u : image.v;
        Plane& second = layout == Layout::Nv12 ? image.v : image.u;
        if (fused.mirror) {
            CallLibrary(KorPlanarMirror, y, image.y, width, height);
            CallLibrary(KorPlanarUVDeinterlaceMirror, uv, first, second, widthC, heightC);
        } else {
            CallLibrary(KorPlanarRotation, y, image.y, width, height, fused.angle);
            CallLibrary(KorPlanarUVDeinterlaceRotation, uv, first, second, widthC, heightC, fused.angle);
        }
    };
}

// ---- Packed 4:2:2 and M420 ----

using Converter = decltype(KorYUY2ToI420);
using RotatingConverter = decltype(KorYUY2ToI420WithRotation);

struct PackedPath {
    Layout source;
    Converter* convert;
    RotatingConverter* convertAndRotate;  // null if there is none
    bool flips;                           // can read bottom-up
};

// clang-format off
constexpr PackedPath kPackedPaths[] = {
    {Layout::Yuy2, KorYUY2ToI420, KorYUY2ToI420WithRotation, true},
    {Layout::Uyvy, KorUYVYToI420, KorUYVYToI420WithRotation, true},
    {Layout::Yuv2, KorYuv2ToI420, nullptr,                      true},
    {Layout::M420, KorM420ToI420, nullptr,                      false},  // would flip pairs of rows, not rows
};
// clang-format on

const PackedPath* FindPackedPath(Layout source) {
    for (const PackedPath& path : kPackedPaths) {
        if (path.source == source) {
            return &path;
        }
    }
    return nullptr;
}

Run CapturePacked(const PackedPath& path, const FusedSteps& fused) {
    return [path, fused](const Frame& frame, YuvImage& image) {
        ResetImage(frame, Layout::I420, fused, image);
        if (fused.angle == 0) {
            CallLibrary(path.convert, image, frame, frame.Width(), frame.Height(), fused.flip);
        } else {
            CallLibrary(path.convertAndRotate, image, frame, frame.Width(), frame.Height(), fused.flip, fused.angle);
        }
    };
}

// ---- RGB ----

struct RgbPath {
    Layout source;
    MatrixKind matrix;
    Layout target;
    Converter* convert;
    bool flips;     // can read bottom-up
    bool evenOnly;  // the matrix would not apply to the last pixels of odd sizes
};

// The converter with coefficients takes one more argument, so it is called separately.
constexpr Converter* kOwnMatrix = nullptr;

// clang-format off
constexpr RgbPath kRgbPaths[] = {
    {Layout::Bgra,  MatrixKind::Bt601, Layout::I420, KorBGRAToI420,           true,  false},
    {Layout::Rgba,  MatrixKind::Bt601, Layout::I420, KorRGBAToI420,           true,  false},
    {Layout::Argb,  MatrixKind::Bt601, Layout::I420, KorARGBToI420,           true,  false},
    {Layout::Abgr,  MatrixKind::Bt601, Layout::I420, KorABGRToI420,           true,  false},
    {Layout::Rgb24, MatrixKind::Bt601, Layout::I420, KorRawToI420,            true,  true},
    {Layout::Bgr24, MatrixKind::Bt601, Layout::I420, Kor24BGToI420,           true,  true},
    {Layout::Bgra,  MatrixKind::Bt709, Layout::I420, KorBGRAToI420UsingBT709, true,  false},
    {Layout::Bgra,  MatrixKind::Own,   Layout::I420, kOwnMatrix,                 true,  true},
    {Layout::Bgra,  MatrixKind::Bt601, Layout::I444, KorBGRAToI444,           true,  false},
    {Layout::Bgra,  MatrixKind::Bt709, Layout::I444, KorBGRAToI444UsingBT709, false, false},
};
// clang-format on

const RgbPath* FindRgbPath(Layout source, MatrixKind matrix, Layout target) {
    for (const RgbPath& path : kRgbPaths) {
        if (path.source == source && path.matrix == matrix && path.target == target) {
            return &path;
        }
    }
    return nullptr;
}

// Repeats the last column and row to make the size even, and stores the rows in the order to read them.
void PadToEven(const Frame& frame, bool flip, Frame& padded) {
    const std::size_t bytes = frame.Format().rgb.bytes;
    padded.Reset(frame.Format(), frame.Width() + frame.Width() % 2, frame.Height() + frame.Height() % 2);
    for (std::size_t row = 0; row < padded.Height(); ++row) {
        const std::size_t read = row < frame.Height() ? row : frame.Height() - 1;
        std::memcpy(padded.Pixel(0, row), frame.Pixel(0, flip ? frame.Height() - 1 - read : read), frame.Pitch());
        std::memcpy(padded.Pixel(padded.Width() - 1, row), padded.Pixel(frame.Width() - 1, row), bytes);
    }
}

void CaptureRgb(const RgbPath& path, const Matrix& matrix, const Frame& frame, bool flip, YuvImage& image) {
    if (path.convert == kOwnMatrix) {
        CallLibrary(KorBGRAToI420General, image, frame, frame.Width(), frame.Height(), flip, matrix.coefficients);
    } else {
        CallLibrary(path.convert, image, frame, frame.Width(), frame.Height(), flip);
    }
}

Run CaptureRgbInOrder(const RgbPath& path, const Matrix& matrix, const FusedSteps& fused) {
    return [path, matrix, fused, padded = std::make_shared<Frame>()](const Frame& frame, YuvImage& image) {
        image.Reset(path.target, frame.Width(), frame.Height());
        if (path.evenOnly && (frame.Width() % 2 != 0 || frame.Height() % 2 != 0)) {
            PadToEven(frame, fused.flip, *padded);
            CaptureRgb(path, matrix, *padded, false, image);
        } else {
            CaptureRgb(path, matrix, frame, fused.flip, image);
        }
    };
}

Run MoveSamplesFirst(const PixelFormat& format, Run capture) {
    return [&format, capture = std::move(capture), moved = std::make_shared<Frame>()](Frame& frame, YuvImage& image) {
        MoveSamples(frame, format, *moved);
        capture(*moved, image);
    };
}

bool Is444(const PixelFormat* format) {
    return format != nullptr && format->layout == Layout::I444;
}

bool Is422(const PixelFormat* format) {
    return format != nullptr && HoldSameSamples(*format, FormatOf(Layout::I422));
}

}  // namespace

Layout PlanesFor(const PixelFormat& source, const PixelFormat* asked) {
    // Full chroma if the source has it and the output can hold more than 4:2:0, or if 4:2:2 is to become 4:4:4.
    const bool finer = asked == nullptr || asked->IsRgb() || Is444(asked) || Is422(asked);
    const bool full = (Is444(&source) && finer) ||
                      (source.IsRgb() && (Is444(asked) || asked == &FormatOf(Layout::I422))) ||
                      (Is422(&source) && Is444(asked));
    return full ? Layout::I444 : Layout::I420;
}

Capture::Capture(const StreamInfo& source, Layout target, const Matrix& matrix, std::vector<Step>& steps) {
    const Layout layout = source.format->layout;
    if (source.format->IsRgb()) {
        const RgbPath* direct = FindRgbPath(layout, matrix.kind, target);
        const RgbPath* path = direct != nullptr ? direct : FindRgbPath(Layout::Bgra, matrix.kind, target);
        if (path == nullptr) {
            FailUsage("--matrix " + matrix.name + ": a matrix file captures to i420 only; for " +
                      FormatOf(target).name + " use 601 or 709");
        }
        const FusedSteps fused = path->flips ? TakeFlip(steps) : FusedSteps();
        run_ = CaptureRgbInOrder(*path, matrix, fused);
        if (direct == nullptr) {
            run_ = MoveSamplesFirst(FormatOf(path->source), std::move(run_));
        }
        return;
    }
    const PackedPath* path = FindPackedPath(layout);
    const bool semiPlanar = layout == Layout::Nv12 || layout == Layout::Nv21;
    if (layout == Layout::I422 && target == Layout::I420) {
        run_ = CapturePlanar422(TakeFlip(steps));
    } else if (source.format->IsPlanarYuv()) {
        run_ = CapturePlanar(target);
    } else if (Is422(source.format) && target == Layout::I444) {
        run_ = MoveSamplesFirst(FormatOf(Layout::I422), CapturePlanar(target));
    } else if (semiPlanar && target == Layout::I420) {
        FusedSteps fused = TakeFlip(steps);
        fused.mirror = TakeFront(steps, StepKind::Mirror);
        if (!fused.mirror) {
            TakeRotation(steps, fused);
        }
        run_ = CaptureSemiPlanar(layout, fused);
    } else if (path != nullptr && target == Layout::I420) {
        FusedSteps fused = path->flips ? TakeFlip(steps) : FusedSteps();
        // The rotating converters round an odd height up, which would add a column or row to the picture.
        if (path->convertAndRotate != nullptr && source.height % 2 == 0) {
            TakeRotation(steps, fused);
        }
        run_ = CapturePacked(*path, fused);
    } else {
        FailUsage(source.name + ": there is no conversion from " + source.format->name + " to " +
                  FormatOf(target).name);
    }
}

}  // namespace korframe
