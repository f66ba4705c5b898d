// Holds one function against another of the same shape: same planes, same options, every byte compared.
#ifndef KOR_CONFORMANCE_KIT_DIFFERENTIAL_H
#define KOR_CONFORMANCE_KIT_DIFFERENTIAL_H

#include <array>
#include <cstddef>
#include <memory>
#include <string>

#include "conformance/core/Case.h"
#include "conformance/core/Catalogue.h"
#include "conformance/core/Functions.h"
#include "conformance/kit/Plane.h"

namespace kit {

// What a comparison found. It stops at the first difference.
struct Verdict {
    bool same = true;
    std::size_t cases = 0;
    std::string report;  // names the function, the arguments, the seed, the place and the bytes
};

class Differential {
  public:
    Differential(const Entry& entry, const AnyFunction& subject, const AnyFunction& model);

    // Visits every case of the sweep.
    Verdict Run(const Sweep& sweep, std::uint64_t seed);
    // One case; returns an empty report when the two agree.
    std::string RunCase(const Case& options);

  private:
    void Lay(const Case& options);
    std::string RunModel(const Case& options);
    std::string RunSubject(const Case& options);
    void PoisonGaps() const;
    void UnpoisonPlanes() const;

    const Entry& entry_;
    AnyFunction subject_;
    AnyFunction model_;
    Layout layout_;
    std::array<std::shared_ptr<GuardedBuffer>, kMaximumPlanes> buffers_;
    std::array<Plane, kMaximumPlanes> planes_;
    std::array<PlaneView, kMaximumPlanes> views_;
    std::array<Bytes, kMaximumPlanes> initial_;
    std::array<Bytes, kMaximumPlanes> expected_;
    std::vector<std::size_t> expectedDraws_;
};

}  // namespace kit

#endif
