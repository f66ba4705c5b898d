// Holds one function against another of the same shape: same planes, same options, every byte compared.
#ifndef KOR_CONFORMANCE_KIT_DIFFERENTIAL_H
#define KOR_CONFORMANCE_KIT_DIFFERENTIAL_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "conformance/core/Case.h"
#include "conformance/core/Catalogue.h"
#include "conformance/core/Functions.h"
#include "conformance/kit/FarPlane.h"
#include "conformance/kit/Fault.h"
#include "conformance/kit/Plan.h"
#include "conformance/kit/Plane.h"

namespace kit {

// What two functions did differently with one case. No title: nothing.
struct Finding {
    std::string title;   // one line, the kind of the first difference and its place
    std::string report;  // everything: places, bytes, arguments

    bool None() const { return title.empty(); }
};

// What a comparison found. It stops at the first case that differs.
struct Verdict {
    std::size_t cases = 0;    // that were tried
    std::size_t failing = 0;  // the number of the one that differs
    std::uint64_t seed = 0;   // that it follows from
    Finding finding;

    bool Same() const { return finding.None(); }
};

class Differential {
  public:
    Differential(const Entry& entry, const AnyFunction& subject, const AnyFunction& model);

    // Visits every case of the plan, or the one that has the given number.
    Verdict Run(const Plan& plan, std::size_t onlyCase = 0);
    Verdict Run(const Sweep& sweep, std::uint64_t seed, std::size_t onlyCase = 0) {
        return Run(Plan{{sweep, seed}}, onlyCase);
    }
    Finding RunCase(const Case& options);

  private:
    void Lay(const Case& options);
    void PlaceMatrix();
    void RunModel();
    void RunSubject();
    std::optional<Fault> CallFarApart();
    void DisguisePadding();
    void ComparePlanes();
    void CompareDraws();
    void PoisonGaps() const;
    void UnpoisonPlanes() const;

    void Report(const std::string& text, std::size_t differing = 1);
    void ReportFault(const char* who, const Fault& fault);
    std::string DescribeCall() const;

    const Entry& entry_;
    Sweep options_;
    AnyFunction subject_;
    AnyFunction model_;
    FaultCatcher catcher_;

    Case asked_;  // as the sweep has it
    Case case_;   // as it is called: the matrix may lie elsewhere
    Layout layout_;
    std::array<std::shared_ptr<GuardedBuffer>, kMaximumPlanes> buffers_;
    std::array<Plane, kMaximumPlanes> planes_;
    std::array<FarPlane, kMaximumPlanes> farPlanes_;
    std::array<PlaneView, kMaximumPlanes> views_;
    std::array<Bytes, kMaximumPlanes> initial_;
    std::array<Bytes, kMaximumPlanes> expected_;
    std::vector<std::size_t> expectedDraws_;
    Finding finding_;
};

}  // namespace kit

#endif
