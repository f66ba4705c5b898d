#include "fuzz/Harness.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "conformance/core/Functions.h"
#include "conformance/core/ScriptedRandom.h"
#include "conformance/digest/Dispatched.h"
#include "conformance/kit/Plane.h"
#include "fuzz/Input.h"
#include "fuzz/Watch.h"
#include "tests/reference/Table.h"

namespace fuzz {

namespace {

// Room for nearly every plane that an input can ask for, so that memory is seldom mapped.
constexpr std::size_t kArenaBytes = std::size_t{1} << 21;

struct Call {
    const kit::Entry* entry = nullptr;
    kit::Case options;
    kit::Matrix matrix;
    std::array<std::size_t, kit::kMaximumPlanes> padding;
    std::array<kit::Placement, kit::kMaximumPlanes> placement;
};

// The functions of a family in the order of the catalogue, so that a stored input always makes the same call.
std::vector<const kit::Entry*> FunctionsOf(kit::Family family) {
    std::vector<const kit::Entry*> functions;
    for (const kit::Entry& entry : kit::Catalogue()) {
        if (entry.family == family) {
            functions.push_back(&entry);
        }
    }
    return functions;
}

// Mostly small sizes, where every edge is near; now and then rows or columns longer than any run or tile, and seldom
// frames of many tiles.
void TakeSize(Input& input, kit::Case& options) {
    constexpr std::uint32_t kWidths[] = {9, 41, 41, 300, 300, 1100, 20, 3};
    constexpr std::uint32_t kHeights[] = {9, 13, 5, 70, 3, 4, 300, 2};
    constexpr std::uint32_t kLargeWidths[] = {600, 4600, 40, 1300};
    constexpr std::uint32_t kLargeHeights[] = {600, 12, 1300, 140};
    const std::uint8_t choice = input.Byte();
    const bool large = choice >= 252;
    options.width = input.Below(large ? kLargeWidths[choice % 4] : kWidths[choice % 8]);
    options.height = input.Below(large ? kLargeHeights[choice % 4] : kHeights[choice % 8]);
}

KorImageRotationDegree TakeAngle(Input& input) {
    const std::uint8_t choice = input.Byte();
    return choice < 240 ? choice % 4 * 90u : input.Word();
}

// One of the levels, or a number that names none.
KorVideoFrameDitherLevel TakeLevel(Input& input) {
    const std::uint8_t choice = input.Byte();
    return static_cast<KorVideoFrameDitherLevel>(choice < 240 ? choice % 4 : input.Word());
}

// Coefficients of any magnitude: small ones as in real matrices, and others up to sums that wrap.
void TakeMatrix(Input& input, kit::Matrix& matrix) {
    const unsigned shift = input.Byte() % 25;
    for (auto& row : matrix.rows) {
        for (KorInt& coefficient : row) {
            coefficient = static_cast<KorInt>(input.Word()) >> shift;
        }
    }
}

void TakeCall(Input& input, const std::vector<const kit::Entry*>& functions, Call& call) {
    call.entry = functions[input.Byte() % functions.size()];
    kit::Case& options = call.options;
    TakeSize(input, options);
    const std::uint8_t flags = input.Byte();
    options.flip = static_cast<KorBool>(flags & 1 ? input.Byte() : 0);
    options.walk = flags & 2 ? kit::Walk::Up : kit::Walk::Down;
    options.randomizeNoiseOffsets = static_cast<KorBool>(flags & 4 ? input.Byte() : 0);
    options.inPlace = (flags & 8) != 0;
    options.ditherLevel = TakeLevel(input);
    options.rotationDegree = TakeAngle(input);
    options.xPosition = input.Byte() % 40;
    options.yPosition = input.Byte() % 9;
    options.alpha = input.Byte();
    TakeMatrix(input, call.matrix);
    options.matrix = &call.matrix;
    options.seed = input.Word();
    // Padding and placement differ from plane to plane, so that a pitch used for the wrong plane shows.
    const std::uint32_t places = input.Word();
    const std::uint8_t spread = input.Byte();
    for (std::size_t i = 0; i < kit::kMaximumPlanes; ++i) {
        call.padding[i] = spread == 0 ? 0 : static_cast<std::size_t>(kit::MixSeed(places, i) % spread);
        call.placement[i] = places >> i & 1 ? kit::Placement::Front : kit::Placement::Rear;
    }
}

// The planes of a call, each in memory of its own, and their contents before it.
class Arena {
  public:
    void Lay(const Call& call, const Input& pixels) {
        layout_ = kit::Layout();
        call.entry->describe(call.options, layout_);
        for (std::size_t i = 0; i < layout_.count; ++i) {
            kit::PlaneUse& use = layout_.planes[i];
            const std::size_t tight = std::max(use.nominalRowBytes, use.shape.rowBytes + use.shape.spareColumns);
            use.shape.pitch = tight + call.padding[i];
            use.shape.margin += use.marginRows * use.shape.pitch;
            const std::size_t bytes = kit::Plane::BytesFor(use.shape);
            if (buffers_[i] == nullptr || buffers_[i]->size() < bytes) {
                buffers_[i] = std::make_shared<kit::GuardedBuffer>(std::max(kArenaBytes, bytes));
            }
            planes_[i] = kit::Plane(use.shape, call.placement[i], buffers_[i]);
            views_[i] = planes_[i].View();
            Fill(planes_[i], kit::MixSeed(call.options.seed, i), pixels, i);
            initial_[i].assign(Begin(i), Begin(i) + Size(i));
        }
    }

    // The reference's planes are the expected result; the reference itself must stay within the catalogue's bounds.
    void MakeExpected(const Call& call) {
        Make(call.entry->of(reference::Table()), call);
        expectedDraws_ = kit::ScriptedRandom::Draws();
        for (std::size_t i = 0; i < layout_.count; ++i) {
            expected_[i].assign(Begin(i), Begin(i) + Size(i));
            planes_[i].ForEachGap([&](std::size_t offset, std::size_t size) {
                if (std::memcmp(Begin(i) + offset, initial_[i].data() + offset, size) != 0) {
                    Fail(call, "the reference itself writes outside the plane", layout_.planes[i].name);
                }
            });
            if (layout_.planes[i].access == kit::Access::Read && expected_[i] != initial_[i]) {
                Fail(call, "the reference itself writes to the source", layout_.planes[i].name);
            }
        }
    }

    // The library gets sources with different padding, which it must not even read.
    void Compare(const Call& call) {
        for (std::size_t i = 0; i < layout_.count; ++i) {
            std::memcpy(Begin(i), initial_[i].data(), Size(i));
            planes_[i].ForEachGap([&](std::size_t offset, std::size_t size) {
                if (layout_.planes[i].access == kit::Access::Read) {
                    Complement(Begin(i) + offset, size);
                    Complement(expected_[i].data() + offset, size);
                }
                Forbid(Begin(i) + offset, size);
            });
        }
        Make(call.entry->of(kit::DispatchedTable()), call);
        for (std::size_t i = 0; i < layout_.count; ++i) {
            planes_[i].ForEachGap([&](std::size_t offset, std::size_t size) { Allow(Begin(i) + offset, size); });
            CheckDefined(Begin(i), Size(i));
            if (std::memcmp(Begin(i), expected_[i].data(), Size(i)) != 0) {
                Fail(call, "library and reference differ",
                     planes_[i].Difference(layout_.planes[i].name, expected_[i].data()).c_str());
            }
        }
        if (kit::ScriptedRandom::Draws() != expectedDraws_) {
            Fail(call, "library and reference differ", "in what they draw");
        }
    }

  private:
    std::uint8_t* Begin(std::size_t i) const { return planes_[i].allocation(); }
    std::size_t Size(std::size_t i) const { return planes_[i].allocationSize(); }

    // Noise, or the pixels of the input over and over, from a different start for each plane.
    static void Fill(const kit::Plane& plane, std::uint64_t seed, const Input& pixels, std::size_t i) {
        if (pixels.Size() == 0) {
            kit::FillNoise(seed, plane.allocation(), plane.allocationSize());
            return;
        }
        for (std::size_t k = 0, from = 7 * i; k < plane.allocationSize(); ++k, ++from) {
            plane.allocation()[k] = pixels.Bytes()[from % pixels.Size()];
        }
    }

    static void Complement(std::uint8_t* bytes, std::size_t count) {
        for (std::size_t k = 0; k < count; ++k) {
            bytes[k] = static_cast<std::uint8_t>(~bytes[k] & 0xff);
        }
    }

    void Make(const kit::AnyFunction& function, const Call& call) {
        kit::ScriptedRandom::ServeSeed(call.options.seed);
        kit::Call(function, views_.data(), call.options);
    }

    [[noreturn]] static void Fail(const Call& call, const char* what, const char* where) {
        std::fprintf(stderr, "fuzz: %s: %s with %s\n%s\n", what, call.entry->name, kit::Describe(call.options).c_str(),
                     where);
        std::abort();
    }

    kit::Layout layout_;
    std::array<std::shared_ptr<kit::GuardedBuffer>, kit::kMaximumPlanes> buffers_;
    std::array<kit::Plane, kit::kMaximumPlanes> planes_;
    std::array<kit::PlaneView, kit::kMaximumPlanes> views_;
    std::array<std::vector<std::uint8_t>, kit::kMaximumPlanes> initial_, expected_;
    std::vector<std::size_t> expectedDraws_;
};

// A target that this machine lacks must not pass for tried.
bool RequireTarget() {
    if (const std::string complaint = kit::ComplaintAboutEnvironment(); !complaint.empty()) {
        std::printf("skipped: %s\n", complaint.c_str());
        std::exit(77);
    }
    return true;
}

}  // namespace

void TryOne(kit::Family family, const std::uint8_t* input, std::size_t size) {
    static const bool isReady = RequireTarget();
    static_cast<void>(isReady);
    static Arena arena;
    static const std::vector<const kit::Entry*> functions = FunctionsOf(family);
    Input bytes(input, size);
    Call call;
    TakeCall(bytes, functions, call);
    arena.Lay(call, bytes);
    arena.MakeExpected(call);
    arena.Compare(call);
}

}  // namespace fuzz
