#include "conformance/core/Functions.h"

#include <type_traits>

namespace kit {

namespace {

// The source of a plane-geometry function, as its first row in reading order and a signed pitch.
struct SignedSource {
    const KorUint8* data;
    KorDistanceT pitch;

    SignedSource(const PlaneView& plane, Walk walk) : data(plane.data), pitch(static_cast<KorDistanceT>(plane.pitch)) {
        if (walk == Walk::Up && plane.rows > 0 && data != nullptr) {
            data += (plane.rows - 1) * plane.pitch;
            pitch = -pitch;
        }
    }
};

// Hands the arguments of a shape to a function of that shape, or to anything else that takes them.
struct Arguments {
    const PlaneView* p;
    const Case& c;

    template <class Receiver, class... Rest>
    void FourPlanes(const Receiver& receive, Rest... rest) const {
        receive(p[0].data, p[0].pitch, p[1].data, p[1].pitch, p[2].data, p[2].pitch, p[3].data, p[3].pitch, c.width,
                c.height, rest...);
    }
    template <class Receiver, class... Rest>
    void SixPlanes(const Receiver& receive, const PlaneView* second, Rest... rest) const {
        receive(p[0].data, p[0].pitch, p[1].data, p[1].pitch, p[2].data, p[2].pitch, second[0].data, second[0].pitch,
                second[1].data, second[1].pitch, second[2].data, second[2].pitch, c.width, c.height, rest...);
    }
    const KorInt (*Coefficients() const)[3] { return c.matrix == nullptr ? nullptr : c.matrix->rows; }

    template <class Receiver>
    void Pass(CaptureFunction, const Receiver& receive) const {
        FourPlanes(receive, c.flip);
    }
    template <class Receiver>
    void Pass(CaptureGeneralFunction, const Receiver& receive) const {
        FourPlanes(receive, c.flip, Coefficients());
    }
    template <class Receiver>
    void Pass(CaptureRotatingFunction, const Receiver& receive) const {
        FourPlanes(receive, c.flip, c.rotationDegree);
    }
    template <class Receiver>
    void Pass(RenderFunction, const Receiver& receive) const {
        FourPlanes(receive, c.ditherLevel);
    }
    template <class Receiver>
    void Pass(RenderGeneralFunction, const Receiver& receive) const {
        FourPlanes(receive, Coefficients(), c.ditherLevel);
    }
    template <class Receiver>
    void Pass(RenderPlainFunction, const Receiver& receive) const {
        FourPlanes(receive);
    }
    template <class Receiver>
    void Pass(PlaneFunction, const Receiver& receive) const {
        const SignedSource src(p[0], c.walk);
        receive(src.data, src.pitch, p[1].data, p[1].pitch, c.width, c.height);
    }
    template <class Receiver>
    void Pass(SplitFunction, const Receiver& receive) const {
        const SignedSource src(p[0], c.walk);
        receive(src.data, src.pitch, p[1].data, p[1].pitch, p[2].data, p[2].pitch, c.width, c.height);
    }
    template <class Receiver>
    void Pass(PlaneRotationFunction, const Receiver& receive) const {
        const SignedSource src(p[0], c.walk);
        receive(src.data, src.pitch, p[1].data, p[1].pitch, c.width, c.height, c.rotationDegree);
    }
    template <class Receiver>
    void Pass(SplitRotationFunction, const Receiver& receive) const {
        const SignedSource src(p[0], c.walk);
        receive(src.data, src.pitch, p[1].data, p[1].pitch, p[2].data, p[2].pitch, c.width, c.height, c.rotationDegree);
    }
    template <class Receiver>
    void Pass(FlipVerticalFunction, const Receiver& receive) const {
        receive(p[0].data, p[0].pitch, p[1].data, p[1].pitch, p[2].data, p[2].pitch, c.width, c.height);
    }
    template <class Receiver>
    void Pass(DitherFunction, const Receiver& receive) const {
        SixPlanes(receive, c.inPlace ? p : p + 3, c.ditherLevel, c.randomizeNoiseOffsets);
    }
    template <class Receiver>
    void Pass(BlendFunction, const Receiver& receive) const {
        SixPlanes(receive, p + 3, c.xPosition, c.yPosition, c.alpha);
    }
    template <class Receiver>
    void Pass(BlendArrayFunction, const Receiver& receive) const {
        SixPlanes(receive, p + 3, c.xPosition, c.yPosition, p[6].data, p[6].pitch, p[7].data, p[7].pitch, p[8].data,
                  p[8].pitch);
    }
};

// Writes arguments down; a pointer is told by the plane that it points into.
struct Scribe {
    const PlaneView* planes;
    const char* const* names;
    const Case& options;
    std::string text;

    void Write(const KorUint8* pointer, std::size_t plane) {
        if (pointer == nullptr) {
            text += "NULL";
            return;
        }
        text += names[plane];
        if (pointer != planes[plane].data) {
            text += " + " + std::to_string(pointer - planes[plane].data);
        }
    }
    void Write(const KorInt (*coefficients)[3]) {
        text += coefficients == nullptr                   ? "NULL"
                : options.matrixPlace == MatrixPlace::Own ? "coeffs"
                                                          : "coeffs inside a plane";
    }
    template <class Number>
    void Write(Number number) {
        if constexpr (std::is_enum_v<Number>) {
            text += std::to_string(static_cast<std::underlying_type_t<Number>>(number));
        } else {
            text += std::to_string(number);
        }
    }
};

}  // namespace

bool IsNull(const AnyFunction& function) {
    return std::visit([](auto pointer) { return pointer == nullptr; }, function);
}

void Call(const AnyFunction& function, const PlaneView* planes, const Case& options) {
    std::visit([&](auto pointer) { Arguments{planes, options}.Pass(pointer, pointer); }, function);
}

MachineCall ToMachineCall(const AnyFunction& function, const PlaneView* planes, const Case& options) {
    MachineCall call;
    std::size_t count = 0;
    const auto write = [&](auto argument) {
        if constexpr (std::is_pointer_v<decltype(argument)>) {
            call.words[count++] = reinterpret_cast<std::uintptr_t>(argument);
        } else {
            // What lies above the 32 bits of a narrow argument is anything.
            constexpr std::uint64_t kAbove = sizeof(argument) < 8 ? UINT64_C(0xb5a5c5d5) << 32 : 0;
            call.words[count++] = static_cast<std::uint64_t>(argument) | kAbove;
        }
    };
    const auto writeAll = [&](auto... arguments) {
        static_assert(sizeof...(arguments) <= MachineCall::kMost);
        (write(arguments), ...);
    };
    std::visit(
        [&](auto pointer) {
            call.function = reinterpret_cast<void (*)()>(pointer);
            Arguments{planes, options}.Pass(pointer, writeAll);
        },
        function);
    return call;
}

std::string CallText(const AnyFunction& function, const PlaneView* planes, const char* const* names,
                     const Case& options) {
    Scribe scribe{planes, names, options, {}};
    std::size_t plane = 0;
    const auto write = [&](auto argument) {
        scribe.text += scribe.text.empty() ? "" : ", ";
        if constexpr (std::is_convertible_v<decltype(argument), const KorUint8*>) {
            // The planes of a filter that works in place come round again.
            scribe.Write(argument, options.inPlace ? plane % 3 : plane);
            ++plane;
        } else {
            scribe.Write(argument);
        }
    };
    const auto writeAll = [&](auto... arguments) { (write(arguments), ...); };
    std::visit([&](auto pointer) { Arguments{planes, options}.Pass(pointer, writeAll); }, function);
    return "(" + scribe.text + ")";
}

}  // namespace kit
