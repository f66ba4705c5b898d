// Planes whose rows lie so far apart that pitches and offsets need more than 16 or 32 bits. Only the rows are memory;
// the addresses between them are reserved, and a touch there ends in a signal.
#ifndef KOR_CONFORMANCE_KIT_FARPLANE_H
#define KOR_CONFORMANCE_KIT_FARPLANE_H

#include <cstddef>
#include <string>
#include <vector>

#include "conformance/core/Case.h"
#include "conformance/kit/Plane.h"

namespace kit {

class FarPlane {
  public:
    FarPlane() = default;
    // Takes over every watched byte of a plane, so that each row keeps what lies around it.
    FarPlane(const Plane& near, Pitches pitches, std::size_t index);
    ~FarPlane();
    FarPlane(FarPlane&& other) noexcept;
    FarPlane& operator=(FarPlane&& other) noexcept;

    PlaneView View() const { return {data_, pitch_, rows_}; }
    // Writes every byte back to where it was taken from.
    void ReturnTo(const Plane& near) const;
    bool IsNear(std::uintptr_t address) const;

  private:
    template <class Visitor>
    void ForEachWindow(const Plane& near, Visitor visit) const;

    std::uint8_t* mapping_ = nullptr;
    std::size_t size_ = 0;
    std::uint8_t* data_ = nullptr;
    std::size_t pitch_ = 0;
    std::size_t rows_ = 0;
};

// The pitches far apart that this system has addresses for.
std::vector<Pitches> FarPitches();
// Why some are missing, in a line; empty where none is.
std::string WhyNotFar();

}  // namespace kit

#endif
