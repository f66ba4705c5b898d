#include "pipeline/Render.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "io/Errors.h"
#include "io/SizeChecks.h"
#include "Kor/Video/Common/KorYuv420.h"
#include "pipeline/LibraryCall.h"

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

// The top left part of a frame of one plane.
void Crop(const Frame& from, std::size_t width, std::size_t height, Frame& to) {
    to.Reset(from.Format(), width, height);
    for (std::size_t row = 0; row < height; ++row) {
        std::memcpy(to.Data() + row * to.Pitch(), from.Data() + row * from.Pitch(), to.Pitch());
    }
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
        Crop(*whole, image.Width(), image.Height(), frame);
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

Run ReorderAfter(Run render, const PixelFormat& order) {
    return [render = std::move(render), &order, rendered = std::make_shared<Frame>()](YuvImage& image, Frame& frame) {
        render(image, *rendered);
        Reorder(*rendered, order, frame);
    };
}

// Without the spare column and row.
void CopyPlane(const Plane& plane, std::uint8_t* packed) {
    CallLibrary(KorPlanarRotation, RowsOf(plane), packed, plane.width, plane.width, plane.height, 0u);
}

void CopyPlanes(YuvImage& image, Frame& frame) {
    frame.Reset(FormatOf(image.GetLayout()), image.Width(), image.Height());
    CopyPlane(image.y, frame.Plane(0));
    CopyPlane(image.u, frame.Plane(1));
    CopyPlane(image.v, frame.Plane(2));
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
    const Layout planes = source.format->layout;
    CheckParity(output, target, source.width, source.height);
    if (target.IsRgb()) {
        const Path* direct = FindPath(kRgbPaths, planes, matrix.kind, target.layout);
        const Path* path = direct != nullptr ? direct : FindPath(kRgbPaths, planes, matrix.kind, Layout::Bgra);
        if (path == nullptr) {
            FailUsage("--matrix " + matrix.name + ": a matrix file renders i420 only; for " + source.format->name +
                      " use 601 or 709");
        }
        run_ = RenderBy(*path, matrix, ditherLevel);
        if (direct == nullptr) {
            run_ = ReorderAfter(std::move(run_), target);
        }
        return;
    }
    if (const Path* path = FindPath(kPackedPaths, planes, MatrixKind::Bt601, target.layout)) {
        run_ = RenderBy(*path, matrix, ditherLevel);
        return;
    }
    if (target.layout == planes) {
        run_ = CopyPlanes;
    } else if (target.layout == Layout::Yuv2 && planes == Layout::I420) {
        run_ = RenderToYuv2();
    } else {
        FailUsage(output + ": there is no conversion from " + source.format->name + " to " + target.name);
    }
    if (ditherLevel != KOR_VIDEOFRAMEDITHERLEVEL_Off) {
        CheckDither(source);
        run_ = DitherBefore(std::move(run_), ditherLevel);
    }
}

bool Render::Reaches(Layout planes, Layout target) {
    if (FormatOf(target).IsRgb()) {
        return FindPath(kRgbPaths, planes, MatrixKind::Bt601, Layout::Bgra) != nullptr;
    }
    return target == planes || FindPath(kPackedPaths, planes, MatrixKind::Bt601, target) != nullptr ||
           (target == Layout::Yuv2 && planes == Layout::I420);
}

}  // namespace korframe
