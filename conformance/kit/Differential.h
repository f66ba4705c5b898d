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
#include "conformance/kit/Manner.h"
#include "conformance/kit/Plan.h"
#include "conformance/kit/Plane.h"
#include "conformance/kit/Progress.h"
#include "conformance/kit/SecondThread.h"

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
    std::size_t last = 0;     // the highest number that was come across
    std::size_t failing = 0;  // the number of the one that differs
    std::uint64_t seed = 0;   // that it follows from
    Finding finding;

    bool Same() const { return finding.None(); }
};

class Differential {
  public:
    // Marks in the progress what it is about to do, if there is one.
    Differential(const Entry& entry, const AnyFunction& subject, const AnyFunction& model,
                 Progress* progress = nullptr);

    // Visits every case of the plan, or the one that has the given number.
    Verdict Run(const Plan& plan, std::size_t onlyCase = 0);
    Verdict Run(const Sweep& sweep, std::uint64_t seed, std::size_t onlyCase = 0) {
        return Run(Plan{{sweep, seed}}, onlyCase);
    }
    // One case in the manner that follows from its number.
    Finding RunCase(const Case& options);

    // The same in steps: what is expected, and then the subject any number of times. The circumstance is for the
    // description of the case, as in "called 1000 times".
    Finding Prepare(const Case& options, const Manner& manner, const std::string& circumstance = "");
    Finding CallSubject();
    // What somebody else found about the calls of this case.
    Finding Blame(const std::string& title);

    // From now on no function is called, but every case is reported under this title: for a case that ended the process
    // that tried it.
    void OnlyDescribe(const std::string& title) { onlyTitle_ = title; }

  private:
    Finding RunCase(const Case& options, const Manner& manner);
    void Lay(const Case& options);
    void ChooseReach();
    void GuardMatrix();
    bool WritesAnything() const;
    void PlaceMatrix();
    void RunModel();
    void RunSubject();
    void RepeatSubject();
    void CallOnce();
    void CallHere();
    void MoveFarApart();
    void MoveBack();
    void DisguisePadding();
    void ComparePlanes();
    void CompareDraws();
    void ShieldPlanes() const;
    void UnshieldPlanes() const;
    void PoisonGaps() const;
    void UnpoisonPlanes() const;

    void Report(const std::string& text, std::size_t differing = 1);
    void ReportFault(const char* who, const Fault& fault);
    std::string PlaceOf(std::uintptr_t address) const;
    bool IsReadOnly(std::uintptr_t address) const;
    std::string DescribeCall() const;
    Finding Found();

    // What a call of the subject leaves behind, apart from the planes.
    struct Aftermath {
        std::optional<Fault> fault;
        ProcessorChange change;
        std::vector<std::size_t> draws;
        std::ptrdiff_t allocated = 0;  // bytes that are allocated and were not before
    };

    const Entry& entry_;
    Sweep options_;
    AnyFunction subject_;
    AnyFunction model_;
    Progress ownProgress_;
    Progress& progress_;
    FaultCatcher catcher_;
    std::unique_ptr<SecondThread> secondThread_;  // started when it is needed
    std::string onlyTitle_;

    Case asked_;  // as the sweep has it
    Case case_;   // as it is called: the matrix may lie elsewhere
    Manner manner_;
    std::string circumstance_;
    Layout layout_;
    std::array<std::shared_ptr<GuardedBuffer>, kMaximumPlanes> buffers_;
    GuardedBuffer ownMatrix_{sizeof(Matrix)};
    std::array<Plane, kMaximumPlanes> planes_;
    std::array<FarPlane, kMaximumPlanes> farPlanes_;
    std::array<PlaneView, kMaximumPlanes> views_;
    std::array<Bytes, kMaximumPlanes> initial_;
    std::array<Bytes, kMaximumPlanes> expected_;
    std::vector<std::size_t> expectedDraws_;
    Aftermath aftermath_;
    std::string before_;  // what every finding begins with
    bool repeating_ = false;
    Finding finding_;
};

}  // namespace kit

#endif
