// Calls the library's functions with whole images: CallLibrary(KorBGRAToI420, image, frame, width, height, flip).
//
// The functions take each plane as a pointer and a pitch. A YuvImage argument expands to its three planes, a Frame to
// its packed pixels, a Plane or SourceRows to itself, and anything else to its value.
#ifndef KORFRAME_LIBRARYCALL_H
#define KORFRAME_LIBRARYCALL_H

#include <tuple>

#include "image/Image.h"
#include "Kor/Utils/SysDep/KorBaseTypes.h"

namespace korframe {

// A plane as the plane functions read it; the sign of the pitch gives the direction.
struct SourceRows {
    const std::uint8_t* first;
    KorDistanceT pitch;
};

inline SourceRows RowsOf(const std::uint8_t* plane, std::size_t pitch, std::size_t rows, bool bottomUp = false) {
    const auto distance = static_cast<KorDistanceT>(pitch);
    return bottomUp ? SourceRows{plane + (rows - 1) * pitch, -distance} : SourceRows{plane, distance};
}

inline SourceRows RowsOf(const Plane& plane, bool bottomUp = false) {
    return RowsOf(plane.Data(), plane.pitch, plane.height, bottomUp);
}

inline SourceRows RowsOf(const Frame& frame, std::size_t plane, bool bottomUp = false) {
    return RowsOf(frame.Plane(plane), frame.Pitch(plane), frame.Format().planes[plane].Rows(frame.Height()), bottomUp);
}

template <typename Value>
auto PlanesOf(Value value) {
    return std::make_tuple(value);
}

template <typename Image>
auto ThreePlanesOf(Image& image) {
    return std::make_tuple(image.y.Data(), image.y.pitch, image.u.Data(), image.u.pitch, image.v.Data(), image.v.pitch);
}

inline auto PlanesOf(YuvImage& image) {
    return ThreePlanesOf(image);
}

inline auto PlanesOf(const YuvImage& image) {
    return ThreePlanesOf(image);
}

inline auto PlanesOf(Plane& plane) {
    return std::make_tuple(plane.Data(), plane.pitch);
}

inline auto PlanesOf(SourceRows& rows) {
    return std::make_tuple(rows.first, rows.pitch);
}

inline auto PlanesOf(const SourceRows& rows) {
    return std::make_tuple(rows.first, rows.pitch);
}

inline auto PlanesOf(Frame& frame) {
    return std::make_tuple(frame.Data(), frame.Pitch());
}

inline auto PlanesOf(const Frame& frame) {
    return std::make_tuple(frame.Data(), frame.Pitch());
}

template <typename Function, typename... Arguments>
void CallLibrary(Function* function, Arguments&&... arguments) {
    std::apply(function, std::tuple_cat(PlanesOf(arguments)...));
}

}  // namespace korframe

#endif
