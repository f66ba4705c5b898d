#include "tests/support/Functions.h"

namespace kit {

namespace {

// The source of a plane-geometry function, as its first row in reading order and a signed pitch.
struct SignedSource {
    const KorUint8* data;
    KorDistanceT pitch;

    SignedSource(const Plane& plane, Walk walk)
        : data(plane.data()), pitch(static_cast<KorDistanceT>(plane.pitch())) {
        if (walk == Walk::Up && plane.shape().rows > 0) {
            data += (plane.shape().rows - 1) * plane.pitch();
            pitch = -pitch;
        }
    }
};

struct Caller {
    const Plane* p;
    const Case& c;

    const KorInt (*Matrix() const)[3] { return c.matrix->rows; }

    void operator()(CaptureFunction f) const {
        f(p[0].data(), p[0].pitch(), p[1].data(), p[1].pitch(), p[2].data(), p[2].pitch(), p[3].data(), p[3].pitch(),
          c.width, c.height, c.flip);
    }
    void operator()(CaptureGeneralFunction f) const {
        f(p[0].data(), p[0].pitch(), p[1].data(), p[1].pitch(), p[2].data(), p[2].pitch(), p[3].data(), p[3].pitch(),
          c.width, c.height, c.flip, Matrix());
    }
    void operator()(CaptureRotatingFunction f) const {
        f(p[0].data(), p[0].pitch(), p[1].data(), p[1].pitch(), p[2].data(), p[2].pitch(), p[3].data(), p[3].pitch(),
          c.width, c.height, c.flip, c.rotationDegree);
    }
    void operator()(RenderFunction f) const {
        f(p[0].data(), p[0].pitch(), p[1].data(), p[1].pitch(), p[2].data(), p[2].pitch(), p[3].data(), p[3].pitch(),
          c.width, c.height, c.ditherLevel);
    }
    void operator()(RenderGeneralFunction f) const {
        f(p[0].data(), p[0].pitch(), p[1].data(), p[1].pitch(), p[2].data(), p[2].pitch(), p[3].data(), p[3].pitch(),
          c.width, c.height, Matrix(), c.ditherLevel);
    }
    void operator()(RenderPlainFunction f) const {
        f(p[0].data(), p[0].pitch(), p[1].data(), p[1].pitch(), p[2].data(), p[2].pitch(), p[3].data(), p[3].pitch(),
          c.width, c.height);
    }
    void operator()(PlaneFunction f) const {
        const SignedSource src(p[0], c.walk);
        f(src.data, src.pitch, p[1].data(), p[1].pitch(), c.width, c.height);
    }
    void operator()(SplitFunction f) const {
        const SignedSource src(p[0], c.walk);
        f(src.data, src.pitch, p[1].data(), p[1].pitch(), p[2].data(), p[2].pitch(), c.width, c.height);
    }
    void operator()(PlaneRotationFunction f) const {
        const SignedSource src(p[0], c.walk);
        f(src.data, src.pitch, p[1].data(), p[1].pitch(), c.width, c.height, c.rotationDegree);
    }
    void operator()(SplitRotationFunction f) const {
        const SignedSource src(p[0], c.walk);
        f(src.data, src.pitch, p[1].data(), p[1].pitch(), p[2].data(), p[2].pitch(), c.width, c.height,
          c.rotationDegree);
    }
    void operator()(FlipVerticalFunction f) const {
        f(p[0].data(), p[0].pitch(), p[1].data(), p[1].pitch(), p[2].data(), p[2].pitch(), c.width, c.height);
    }
    void operator()(DitherFunction f) const {
        const Plane* out = c.inPlace ? p : p + 3;
        f(p[0].data(), p[0].pitch(), p[1].data(), p[1].pitch(), p[2].data(), p[2].pitch(), out[0].data(),
          out[0].pitch(), out[1].data(), out[1].pitch(), out[2].data(), out[2].pitch(), c.width, c.height,
          c.ditherLevel, c.randomizeNoiseOffsets);
    }
    void operator()(BlendFunction f) const {
        f(p[0].data(), p[0].pitch(), p[1].data(), p[1].pitch(), p[2].data(), p[2].pitch(), p[3].data(), p[3].pitch(),
          p[4].data(), p[4].pitch(), p[5].data(), p[5].pitch(), c.width, c.height, c.xPosition, c.yPosition, c.alpha);
    }
    void operator()(BlendArrayFunction f) const {
        f(p[0].data(), p[0].pitch(), p[1].data(), p[1].pitch(), p[2].data(), p[2].pitch(), p[3].data(), p[3].pitch(),
          p[4].data(), p[4].pitch(), p[5].data(), p[5].pitch(), c.width, c.height, c.xPosition, c.yPosition,
          p[6].data(), p[6].pitch(), p[7].data(), p[7].pitch(), p[8].data(), p[8].pitch());
    }
};

}  // namespace

void Call(const AnyFunction& function, const Plane* planes, const Case& options) {
    std::visit(Caller{planes, options}, function);
}

}  // namespace kit
