#include "conformance/kit/Differential.h"

#include <algorithm>
#include <cstring>

#include "conformance/core/ScriptedRandom.h"
#include "conformance/kit/CrashNote.h"
#include "conformance/kit/Poison.h"

namespace kit {

namespace {

// Room for all usual cases, so that buffers are mapped once; pages that nobody touches cost nothing.
constexpr std::size_t kUsualBytes = std::size_t{1} << 20;

std::string DescribeDraws(const std::vector<std::size_t>& draws) {
    std::string text = std::to_string(draws.size()) + " draws:";
    for (const std::size_t count : draws) {
        text += " " + std::to_string(count);
    }
    return text;
}

}  // namespace

Differential::Differential(const Entry& entry, const AnyFunction& subject, const AnyFunction& model)
    : entry_(entry), subject_(subject), model_(model) {}

Verdict Differential::Run(const Sweep& sweep, std::uint64_t seed) {
    Verdict verdict;
    verdict.cases = ForEachCase(sweep, seed, [&](const Case& options) {
        const std::string difference = RunCase(options);
        if (difference.empty()) {
            return true;
        }
        verdict.same = false;
        verdict.report = std::string(entry_.name) + " with " + Describe(options) + "\n" + difference +
                         "To see it again: KOR_TEST_SEED=" + std::to_string(seed) + "\n";
        return false;
    });
    return verdict;
}

std::string Differential::RunCase(const Case& options) {
    const CrashNote note(entry_.name, options);
    Lay(options);
    const std::string trouble = RunModel(options);
    return trouble.empty() ? RunSubject(options) : "The model itself: " + trouble;
}

// Places the planes and makes up their content.
void Differential::Lay(const Case& options) {
    layout_ = LayOut(entry_, options);
    for (std::size_t i = 0; i < layout_.count; ++i) {
        const PlaneShape& shape = layout_.planes[i].shape;
        if (buffers_[i] == nullptr || buffers_[i]->size() < Plane::BytesFor(shape)) {
            buffers_[i] = std::make_shared<GuardedBuffer>(std::max(kUsualBytes, Plane::BytesFor(shape)));
        }
        planes_[i] = Plane(shape, options.placement, buffers_[i]);
        const Plane& plane = planes_[i];
        views_[i] = plane.View();
        FillNoise(MixSeed(options.seed, i), plane.allocation(), plane.allocationSize());
        if (layout_.planes[i].access != Access::Write) {
            plane.Fill(options.pattern, MixSeed(options.seed, 100 + i));
        }
        initial_[i].assign(plane.allocation(), plane.allocation() + plane.allocationSize());
    }
}

// Lets the model write what is expected, and holds the model to the bounds of the catalogue.
std::string Differential::RunModel(const Case& options) {
    ScriptedRandom::ServeSeed(options.seed);
    Call(model_, views_.data(), options);
    expectedDraws_ = ScriptedRandom::Draws();
    for (std::size_t i = 0; i < layout_.count; ++i) {
        const Plane& plane = planes_[i];
        const char* name = layout_.planes[i].name;
        const bool source = layout_.planes[i].access == Access::Read;
        const std::string difference = source ? plane.Difference(name, initial_[i].data())
                                              : plane.GapDifference(name, initial_[i].data());
        if (!difference.empty()) {
            return difference;
        }
        expected_[i].assign(plane.allocation(), plane.allocation() + plane.allocationSize());
    }
    return {};
}

std::string Differential::RunSubject(const Case& options) {
    for (std::size_t i = 0; i < layout_.count; ++i) {
        const Plane& plane = planes_[i];
        std::memcpy(plane.allocation(), initial_[i].data(), initial_[i].size());
        if (layout_.planes[i].access == Access::Read) {
            // The subject gets another padding than the model: one that finds its way into the result shows.
            plane.ForEachGap([&](std::size_t offset, std::size_t size) {
                for (std::size_t k = offset; k < offset + size; ++k) {
                    plane.allocation()[k] = static_cast<std::uint8_t>(~initial_[i][k] & 0xff);
                    expected_[i][k] = plane.allocation()[k];
                }
            });
        }
    }
    ScriptedRandom::ServeSeed(options.seed);
    PoisonGaps();
    Call(subject_, views_.data(), options);
    UnpoisonPlanes();
    std::string report;
    for (std::size_t i = 0; i < layout_.count; ++i) {
        report += planes_[i].Difference(layout_.planes[i].name, expected_[i].data());
    }
    if (ScriptedRandom::Draws() != expectedDraws_) {
        report +=
            "expected " + DescribeDraws(expectedDraws_) + ", found " + DescribeDraws(ScriptedRandom::Draws()) + "\n";
    }
    return report;
}

// Bytes between the rows and around the planes are not the subject's business.
void Differential::PoisonGaps() const {
    for (std::size_t i = 0; kPoisons && i < layout_.count; ++i) {
        planes_[i].ForEachGap(
            [&](std::size_t offset, std::size_t size) { Poison(planes_[i].allocation() + offset, size); });
    }
}

void Differential::UnpoisonPlanes() const {
    for (std::size_t i = 0; kPoisons && i < layout_.count; ++i) {
        Unpoison(planes_[i].allocation(), planes_[i].allocationSize());
    }
}

}  // namespace kit
