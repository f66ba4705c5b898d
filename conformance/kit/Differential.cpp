#include "conformance/kit/Differential.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "conformance/core/ScriptedRandom.h"
#include "conformance/kit/Contents.h"
#include "conformance/kit/Poison.h"

namespace kit {

namespace {

// Room for all usual cases, so that buffers are mapped once; pages that nobody touches cost nothing.
constexpr std::size_t kUsualBytes = std::size_t{1} << 20;

std::string DescribeDraws(const std::vector<std::size_t>& draws) {
    std::string text = std::to_string(draws.size()) + (draws.size() == 1 ? " draw" : " draws");
    for (std::size_t i = 0; i < draws.size(); ++i) {
        text += (i == 0 ? " (bytes: " : ", ") + std::to_string(draws[i]);
    }
    return text + (draws.empty() ? "" : ")");
}

std::string DescribeMemory(const Case& c) {
    static const char* const kPitches[] = {
        "tight", "of whole 16 bytes", "odd", "drawn", "of more than 16 bits", "of 30 bits, rows far apart", "of more than 32 bits"};
    return std::string("pitches ") + kPitches[static_cast<int>(c.pitches)] +
           (c.placement == Placement::Rear ? ", planes end before an unmapped page"
                                           : ", planes begin behind an unmapped page");
}

// Where sizes of zero are tried with null pointers as well.
bool TakesNullPointers(const Case& c) {
    return (c.width == 0 || c.height == 0) && c.pitches == Pitches::Loose;
}

}  // namespace

Differential::Differential(const Entry& entry, const AnyFunction& subject, const AnyFunction& model)
    : entry_(entry), options_(entry.options()), subject_(subject), model_(model) {}

Verdict Differential::Run(const Plan& plan, std::size_t onlyCase) {
    Verdict verdict;
    ForEachCase(plan, [&](const Part& part, const Case& options) {
        if (onlyCase != 0 && options.number != onlyCase) {
            return options.number < onlyCase;
        }
        ++verdict.cases;
        verdict.failing = options.number;
        verdict.seed = part.seed;
        options_ = part.sweep;
        verdict.finding = RunCase(options);
        return verdict.finding.None();
    });
    return verdict;
}

Finding Differential::RunCase(const Case& options) {
    finding_ = {};
    asked_ = options;
    case_ = options;
    Lay(options);
    RunModel();
    if (finding_.None()) {
        RunSubject();
    }
    if (!finding_.None()) {
        finding_.report += DescribeCall();
    }
    return finding_;
}

// ---- Memory ------------------------------------------------------------------------------------------------------

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
        if (shape.Empty() && TakesNullPointers(options)) {
            views_[i].data = nullptr;
        }
        FillNoise(MixSeed(options.seed, i), plane.allocation(), plane.allocationSize());
        if (layout_.planes[i].access != Access::Write) {
            FillSource(plane, layout_, i, options);
        }
    }
    PlaceMatrix();
    for (std::size_t i = 0; i < layout_.count; ++i) {
        const Plane& plane = planes_[i];
        initial_[i].assign(plane.allocation(), plane.allocation() + plane.allocationSize());
    }
}

// Moves the matrix into a plane that is written, if there is room: somewhere between its first byte and its last.
void Differential::PlaceMatrix() {
    if (case_.matrixPlace == MatrixPlace::Own) {
        return;
    }
    const std::size_t index = case_.matrixPlace == MatrixPlace::U ? 1 : case_.matrixPlace == MatrixPlace::V ? 2 : 0;
    const PlaneShape& shape = planes_[index].shape();
    std::size_t begin = 0;
    std::size_t end = shape.Span();
    if (case_.matrixPlace == MatrixPlace::SpareRow) {
        begin = shape.spareRows == 0 ? end : shape.rows * shape.pitch;
    }
    constexpr std::size_t kRoom = sizeof(Matrix) + alignof(Matrix);
    if (end < begin + kRoom) {
        case_.matrixPlace = MatrixPlace::Own;
        return;
    }
    const std::size_t places = end - begin - kRoom + 1;
    const bool middle = case_.matrixPlace == MatrixPlace::Middle;
    void* place = planes_[index].data() + begin + (middle ? (places - 1) / 2 : MixSeed(case_.seed, 300) % places);
    std::size_t room = kRoom;
    std::memcpy(std::align(alignof(Matrix), sizeof(Matrix), place, room), case_.matrix, sizeof(Matrix));
    case_.matrix = static_cast<const Matrix*>(place);
}

// Gives the subject another padding of its sources than the model: one that finds its way into the result shows.
void Differential::DisguisePadding() {
    for (std::size_t i = 0; i < layout_.count; ++i) {
        const Plane& plane = planes_[i];
        if (layout_.planes[i].access == Access::Read) {
            plane.ForEachGap([&](std::size_t offset, std::size_t size) {
                for (std::size_t k = offset; k < offset + size; ++k) {
                    plane.allocation()[k] = static_cast<std::uint8_t>(~initial_[i][k] & 0xff);
                    expected_[i][k] = plane.allocation()[k];
                }
            });
        }
    }
}

// Bytes between the rows and around the planes are not the subject's business.
void Differential::PoisonGaps() const {
    for (std::size_t i = 0; kPoisons && i < layout_.count; ++i) {
        planes_[i].ForEachGap(
            [&](std::size_t offset, std::size_t size) { Poison(planes_[i].allocation() + offset, size); });
    }
    if (kPoisons && case_.matrixPlace != MatrixPlace::Own) {
        Unpoison(static_cast<const std::uint8_t*>(static_cast<const void*>(case_.matrix)), sizeof(Matrix));
    }
}

void Differential::UnpoisonPlanes() const {
    for (std::size_t i = 0; kPoisons && i < layout_.count; ++i) {
        Unpoison(planes_[i].allocation(), planes_[i].allocationSize());
    }
}

// ---- The two calls -----------------------------------------------------------------------------------------------

// Lets the model write what is expected, and holds the model to the bounds of the catalogue.
void Differential::RunModel() {
    ScriptedRandom::ServeSeed(case_.seed);
    const std::optional<Fault> fault = catcher_.Call(model_, views_.data(), case_);
    if (fault) {
        ReportFault("the model crashed", *fault);
        return;
    }
    expectedDraws_ = ScriptedRandom::Draws();
    for (std::size_t i = 0; i < layout_.count; ++i) {
        const Plane& plane = planes_[i];
        const Plane::Differences differences = plane.Compare(initial_[i].data());
        const bool source = layout_.planes[i].access == Access::Read;
        if (differences.outside > 0 || (source && differences.inside > 0)) {
            Report("the model wrote where it may not: " +
                   plane.Describe(layout_.planes[i].name, initial_[i].data(),
                                  differences.outside > 0 ? differences.firstOutside : differences.firstInside));
        }
        expected_[i].assign(plane.allocation(), plane.allocation() + plane.allocationSize());
    }
}

void Differential::RunSubject() {
    for (std::size_t i = 0; i < layout_.count; ++i) {
        std::memcpy(planes_[i].allocation(), initial_[i].data(), initial_[i].size());
    }
    DisguisePadding();
    ScriptedRandom::ServeSeed(case_.seed);
    PoisonGaps();
    const std::optional<Fault> fault = AreFarApart(case_.pitches) ? CallFarApart() : catcher_.Call(subject_, views_.data(), case_);
    UnpoisonPlanes();
    if (fault) {
        ReportFault("crashed", *fault);
        return;
    }
    ComparePlanes();
    CompareDraws();
}

// The same bytes in rows that lie far apart; what becomes of them is brought back.
std::optional<Fault> Differential::CallFarApart() {
    for (std::size_t i = 0; i < layout_.count; ++i) {
        farPlanes_[i] = FarPlane(planes_[i], case_.pitches, i);
        views_[i] = farPlanes_[i].View();
    }
    const std::optional<Fault> fault = catcher_.Call(subject_, views_.data(), case_);
    for (std::size_t i = 0; i < layout_.count; ++i) {
        farPlanes_[i].ReturnTo(planes_[i]);
        farPlanes_[i] = FarPlane();
    }
    return fault;
}

// ---- What differs ------------------------------------------------------------------------------------------------

void Differential::ComparePlanes() {
    for (std::size_t i = 0; i < layout_.count; ++i) {
        const Plane& plane = planes_[i];
        const char* name = layout_.planes[i].name;
        const std::uint8_t* expected = expected_[i].data();
        const Plane::Differences differences = plane.Compare(expected);
        if (differences.inside > 0) {
            const bool source = layout_.planes[i].access == Access::Read;
            Report((source ? "changed a source: " : "wrong byte in a destination: ") +
                       plane.Describe(name, expected, differences.firstInside),
                   differences.inside);
        }
        if (differences.outside > 0) {
            Report("wrote outside of a plane: " + plane.Describe(name, expected, differences.firstOutside),
                   differences.outside);
        }
    }
}

void Differential::CompareDraws() {
    const std::vector<std::size_t>& draws = ScriptedRandom::Draws();
    if (draws != expectedDraws_) {
        Report("drew other random bytes: expected " + DescribeDraws(expectedDraws_) + ", found " +
               DescribeDraws(draws) + "\n");
    }
}

// The first line of the first text becomes the title.
void Differential::Report(const std::string& text, std::size_t differing) {
    if (finding_.None()) {
        finding_.title = text.substr(0, text.find('\n'));
    }
    finding_.report += text;
    if (differing > 1) {
        finding_.report += "(" + std::to_string(differing) + " such bytes)\n";
    }
}

void Differential::ReportFault(const char* who, const Fault& fault) {
    std::string text = std::string(who) + ": " + fault.signal;
    if (fault.memory) {
        std::string where = fault.address < 65536 ? "at a null pointer or near it" : "at an address far from all planes";
        for (std::size_t i = 0; i < layout_.count; ++i) {
            if (planes_[i].IsNear(fault.address)) {
                const auto place = static_cast<std::ptrdiff_t>(
                    fault.address - reinterpret_cast<std::uintptr_t>(planes_[i].data()));
                where = std::string("on touching plane ") + layout_.planes[i].name + ", " + planes_[i].Where(place);
            }
        }
        text += " " + where;
    }
    Report(text + "\n");
}

std::string Differential::DescribeCall() const {
    std::array<const char*, kMaximumPlanes> names;
    for (std::size_t i = 0; i < names.size(); ++i) {
        names[i] = layout_.planes[i].name;
    }
    std::string text = "call: " + std::string(entry_.name) + CallText(subject_, views_.data(), names.data(), case_) +
                       "\ncase: " + std::to_string(case_.width) + "x" + std::to_string(case_.height);
    const std::string option = NameOption(options_, asked_);
    text += (option == "-" ? "" : ", " + option) + "; " + DescribeMemory(case_) + "; content " +
            NameOf(case_.pattern) + "; seed of the case " + std::to_string(case_.seed) + "\n";
    if (asked_.matrix != nullptr) {
        text += "coeffs:";
        for (const auto& row : asked_.matrix->rows) {
            text += " {" + std::to_string(row[0]) + ", " + std::to_string(row[1]) + ", " + std::to_string(row[2]) + "}";
        }
        text += "\n";
    }
    return text;
}

}  // namespace kit
