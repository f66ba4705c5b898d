#include "pipeline/Render.h"

#include <algorithm>
#include <memory>

#include "io/Errors.h"
#include "io/SizeChecks.h"
#include "Kor/Video/Common/KorYuv420.h"
#include "pipeline/LibraryCall.h"
#include "pipeline/Resample.h"

namespace korframe {

namespace {

using Run = std::function<void(YuvImage&, Frame&)>;
using Renderer = decltype(KorI420ToBGRA);

// To RGB, and to the packed layouts that have noise of their own.
struct Path {
    Layout source;
    MatrixKind matrix;
    Layout target;
    Renderer* render;
};

// The renderer with coefficients takes one more argument, so it is called separately.
constexpr Renderer* kOwnMatrix = nullptr;

// clang-format off
constexpr Path kRgbPaths[] = {
    {Layout::I420, MatrixKind::Bt601, Layout::Bgra,  KorI420ToBGRA},
    {Layout::I420, MatrixKind::Bt601, Layout::Rgba,  KorI420ToRGBA},
    {Layout::I420, MatrixKind::Bt601, Layout::Argb,  KorI420ToARGB},
    {Layout::I420, MatrixKind::Bt601, Layout::Abgr,  KorI420ToABGR},
    {Layout::I420, MatrixKind::Bt601, Layout::Bgr24, KorI420To24BG},
    {Layout::I420, MatrixKind::Bt709, Layout::Bgra,  KorI420ToBGRAUsingBT709},
    {Layout::I420, MatrixKind::Own,   Layout::Bgra,  kOwnMatrix},
    {Layout::I444, MatrixKind::Bt601, Layout::Bgra,  KorI444ToBGRA},
    {Layout::I444, MatrixKind::Bt709, Layout::Bgra,  KorI444ToBGRAUsingBT709},
};

constexpr Path kPackedPaths[] = {
    {Layout::I420, MatrixKind::Bt601, Layout::Yuy2,  KorI420ToYUY2},
    {Layout::I420, MatrixKind::Bt601, Layout::Uyvy,  KorI420ToUYVY},
};
// clang-format on

template <std::size_t count>
const Path* FindPath(const Path (&paths)[count], Layout source, MatrixKind matrix, Layout target) {
    const auto path = std::find_if(std::begin(paths), std::end(paths), [=](const Path& r) {
        return r.source == source && r.matrix == matrix && r.target == target;
    });
    return path != std::end(paths) ? path : nullptr;
}

// 4:2:0 is rendered in 2x2 blocks, so an odd size is padded to even by repeating its edge, rendered and cropped.
Run RenderInBlocks(const PixelFormat& format,
                   std::function<void(const YuvImage&, std::size_t, std::size_t, Frame&)> render) {
    return [&format, render = std::move(render), whole = std::make_shared<Frame>()](YuvImage& image, Frame& frame) {
        const bool blocks = image.GetLayout() == Layout::I420;
        const std::size_t width = blocks ? image.EvenWidth() : image.Width();
        const std::size_t height = blocks ? image.EvenHeight() : image.Height();
        if (width == image.Width() && height == image.Height()) {
            frame.Reset(format, width, height);
            render(image, width, height, frame);
            return;
        }
        image.EvenOut();
        whole->Reset(format, width, height);
        render(image, width, height, *whole);
        CropFrame(*whole, 0, 0, image.Width(), image.Height(), frame);
    };
}

Run RenderBy(const Path& path, const Matrix& matrix, KorVideoFrameDitherLevel ditherLevel) {
    return RenderInBlocks(FormatOf(path.target), [path, matrix, ditherLevel](const YuvImage& image, std::size_t width,
                                                                             std::size_t height, Frame& frame) {
        if (path.render == kOwnMatrix) {
            CallLibrary(KorI420ToBGRAGeneral, image, frame, width, height, matrix.coefficients, ditherLevel);
        } else {
            CallLibrary(path.render, image, frame, width, height, ditherLevel);
        }
    });
}

Run RenderToYuv2() {
    return RenderInBlocks(FormatOf(Layout::Yuv2),
                          [](const YuvImage& image, std::size_t width, std::size_t height, Frame& frame) {
                              CallLibrary(KorI420toYuv2, image, frame, width, height);
                          });
}

Run MoveSamplesAfter(Run render, const PixelFormat& format) {
    return [render = std::move(render), &format, rendered = std::make_shared<Frame>()](YuvImage& image, Frame& frame) {
        render(image, *rendered);
        MoveSamples(*rendered, format, frame);
    };
}

void GivePlanes(YuvImage& image, Frame& frame) {
    image.Give(frame);
}

Run ResampleFirst(Layout planes, Run next) {
    return [planes, next = std::move(next), spare = std::make_shared<YuvImage>()](YuvImage& image, Frame& frame) {
        ResampleChroma(planes, image, *spare);
        next(image, frame);
    };
}

// The renderers expand limited range.
Run LimitRangeFirst(Run next) {
    return [next = std::move(next)](YuvImage& image, Frame& frame) {
        LimitRange(image);
        next(image, frame);
    };
}

// The planes from which the samples of a layout other than RGB are put together.
Layout PlanesOf(const PixelFormat& target) {
    for (const Layout planar : {Layout::I422, Layout::I444}) {
        if (target.layout == planar) {
            return planar;
        }
    }
    return Layout::I420;
}

// For targets whose renderers have no noise of their own.
Run DitherBefore(Run next, KorVideoFrameDitherLevel ditherLevel) {
    return [next = std::move(next), ditherLevel](YuvImage& image, Frame& frame) {
        DitherImage(image, ditherLevel);
        next(image, frame);
    };
}

}  // namespace

void CheckDither(const StreamInfo& planes) {
    if (planes.format->layout != Layout::I420) {
        FailUsage(std::string("--dither: the filter works on i420 only, and the frames are ") + planes.format->name);
    }
}

// The filter leaves odd edges alone, so the size is made even first.
void DitherImage(YuvImage& image, KorVideoFrameDitherLevel ditherLevel) {
    image.EvenOut();
    CallLibrary(KorI420Dither, image, image, image.EvenWidth(), image.EvenHeight(), ditherLevel, true);
}

Render::Render(const StreamInfo& source, const std::string& output, const PixelFormat& target, const Matrix& matrix,
               KorVideoFrameDitherLevel ditherLevel) {
    CheckParity(output, target, source.width, source.height);
    if (target.IsRgb()) {
        const Layout planes = source.format->layout;
        const Path* direct = FindPath(kRgbPaths, planes, matrix.kind, target.layout);
        const Path* path = direct != nullptr ? direct : FindPath(kRgbPaths, planes, matrix.kind, Layout::Bgra);
        if (path == nullptr) {
            FailUsage("--matrix " + matrix.name + ": a matrix file renders i420 only; for " + source.format->name +
                      " use 601 or 709");
        }
        run_ = RenderBy(*path, matrix, ditherLevel);
        if (direct == nullptr) {
            run_ = MoveSamplesAfter(std::move(run_), target);
        }
        if (IsFullRange(source.tags)) {
            run_ = LimitRangeFirst(std::move(run_));
        }
        return;
    }
    const Layout planes = PlanesOf(target);
    if (const Path* path = FindPath(kPackedPaths, planes, MatrixKind::Bt601, target.layout)) {
        run_ = RenderBy(*path, matrix, ditherLevel);
        ditherLevel = KOR_VIDEOFRAMEDITHERLEVEL_Off;  // done
    } else if (target.layout == Layout::Yuv2) {
        run_ = RenderToYuv2();
    } else if (target.layout == planes) {
        run_ = GivePlanes;
    } else {
        run_ = MoveSamplesAfter(GivePlanes, target);
    }
    if (planes != source.format->layout) {
        run_ = ResampleFirst(planes, std::move(run_));
    }
    if (ditherLevel != KOR_VIDEOFRAMEDITHERLEVEL_Off) {
        CheckDither(source);
        run_ = DitherBefore(std::move(run_), ditherLevel);
    }
}

}  // namespace korframe
