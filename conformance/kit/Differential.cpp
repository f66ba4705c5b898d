#include "conformance/kit/Differential.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "conformance/core/ScriptedRandom.h"
#include "conformance/kit/Allocation.h"
#include "conformance/kit/Contents.h"
#include "conformance/kit/Poison.h"
#include "conformance/kit/Shield.h"

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

// With rows on pages, the most bytes that a plane may take.
constexpr std::size_t kMostOnPages = std::size_t{1} << 17;

// A row or column of more samples is a long one.
constexpr std::size_t kLongSide = 4096;

// So many calls more of a case that is repeated; if the last ones all allocate, what they allocate is lost.
constexpr int kRepeats = 11;
constexpr int kGrowingCalls = 3;

std::string DescribeMemory(const Case& c, Reach reach) {
    static const char* const kPitches[] = {"tight",
                                           "of whole 16 bytes",
                                           "odd",
                                           "drawn",
                                           "tight for some planes",
                                           "of more than 16 bits",
                                           "of 30 bits, rows far apart",
                                           "of more than 32 bits"};
    return std::string("pitches ") +
           (reach == Reach::RowsOnPages ? "of whole pages" : kPitches[static_cast<int>(c.pitches)]) +
           (c.placement == Placement::Rear ? ", planes end before an unmapped page"
                                           : ", planes begin behind an unmapped page");
}

// Where sizes of zero are tried with null pointers as well.
bool TakesNullPointers(const Case& c) {
    return (c.width == 0 || c.height == 0) && c.pitches == Pitches::Loose;
}

}  // namespace

Differential::Differential(const Entry& entry, const AnyFunction& subject, const AnyFunction& model, Progress* progress)
    : entry_(entry),
      options_(entry.options()),
      subject_(subject),
      model_(model),
      progress_(progress == nullptr ? ownProgress_ : *progress) {}

Verdict Differential::Run(const Plan& plan, std::size_t onlyCase) {
    Verdict verdict;
    ForEachCase(plan, [&](const Part& part, const Case& options) {
        verdict.last = options.number;
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
    const Finding finding =
        RunCase(options, MannerOf(options.number, std::max(options.width, options.height) > kLongSide));
    if (finding.None() || repeating_ || !onlyTitle_.empty()) {
        return finding;
    }
    // What fails in the usual manner too is told more simply so.
    const Finding usual = RunCase(options, {});
    return usual.None() ? finding : usual;
}

Finding Differential::RunCase(const Case& options, const Manner& manner) {
    Prepare(options, manner);
    if (finding_.None()) {
        RunSubject();
    }
    return Found();
}

Finding Differential::Prepare(const Case& options, const Manner& manner, const std::string& circumstance) {
    finding_ = {};
    before_.clear();
    repeating_ = false;
    asked_ = options;
    case_ = options;
    manner_ = manner;
    circumstance_ = circumstance;
    progress_.number = static_cast<std::uint32_t>(options.number);
    progress_.Enter(Stage::Kit);
    Lay(options);
    if (!onlyTitle_.empty()) {
        return Blame(onlyTitle_);
    }
    RunModel();
    if (finding_.None()) {
        DisguisePadding();
    }
    return Found();
}

Finding Differential::CallSubject() {
    RunSubject();
    return Found();
}

Finding Differential::Blame(const std::string& title) {
    Report(title + "\n");
    return Found();
}

// With the description of the call, once.
Finding Differential::Found() {
    if (finding_.None()) {
        return {};
    }
    Finding found = finding_;
    found.report += DescribeCall();
    return found;
}

// ---- Memory ------------------------------------------------------------------------------------------------------

// Places the planes and makes up their content.
void Differential::Lay(const Case& options) {
    layout_ = LayOut(entry_, options);
    ChooseReach();
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

// Moves the rows to pages of their own, where all planes can have that.
void Differential::ChooseReach() {
    if (AreFarApart(case_.pitches)) {
        manner_.reach = Reach::Usual;
    }
    if (manner_.reach != Reach::RowsOnPages) {
        return;
    }
    const auto pitch = [](const PlaneShape& shape) {
        return (shape.rowBytes + shape.spareColumns + PageBytes() - 1) / PageBytes() * PageBytes() + PageBytes();
    };
    for (std::size_t i = 0; i < layout_.count; ++i) {
        const PlaneShape& shape = layout_.planes[i].shape;
        if (shape.drifts || shape.margin > 0 || case_.matrixPlace != MatrixPlace::Own ||
            (shape.rows + shape.spareRows) * pitch(shape) > kMostOnPages) {
            manner_.reach = Reach::Usual;
            return;
        }
    }
    for (std::size_t i = 0; i < layout_.count; ++i) {
        layout_.planes[i].shape.pitch = pitch(layout_.planes[i].shape);
    }
}

// Copies a matrix that has memory of its own next to an unmapped page, on the side where the planes have theirs. If
// there is nothing to write, nothing of it may be read: then it lies on that page.
void Differential::GuardMatrix() {
    case_.matrixPlace = MatrixPlace::Own;
    if (case_.matrix == nullptr) {
        return;
    }
    std::uint8_t* const end = ownMatrix_.end();
    void* place = end;
    if (WritesAnything()) {
        place = case_.placement == Placement::Rear ? end - sizeof(Matrix) : ownMatrix_.begin();
        std::memcpy(place, case_.matrix, sizeof(Matrix));
    }
    case_.matrix = static_cast<const Matrix*>(place);
}

bool Differential::WritesAnything() const {
    return std::any_of(layout_.planes.begin(), layout_.planes.begin() + layout_.count,
                       [](const auto& plane) { return plane.access != Access::Read && !plane.shape.Empty(); });
}

// Moves the matrix into a plane that is written, if there is room: somewhere between its first byte and its last.
void Differential::PlaceMatrix() {
    if (case_.matrixPlace == MatrixPlace::Own) {
        GuardMatrix();
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
        GuardMatrix();
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
                    initial_[i][k] = static_cast<std::uint8_t>(~initial_[i][k] & 0xff);
                    expected_[i][k] = initial_[i][k];
                }
            });
        }
    }
}

void Differential::ShieldPlanes() const {
    for (std::size_t i = 0; i < layout_.count; ++i) {
        if (manner_.reach == Reach::SourcesReadOnly && layout_.planes[i].access == Access::Read) {
            ForbidWriting(planes_[i]);
        } else if (manner_.reach == Reach::RowsOnPages) {
            HideGaps(planes_[i]);
        }
    }
}

void Differential::UnshieldPlanes() const {
    for (std::size_t i = 0; manner_.reach != Reach::Usual && i < layout_.count; ++i) {
        AllowAll(planes_[i]);
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
    progress_.Enter(Stage::Model);
    const std::optional<Fault> fault = catcher_.Run([&] { Call(model_, views_.data(), case_); });
    progress_.Enter(Stage::Kit);
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
    CallOnce();
    if (finding_.None() && manner_.repeated) {
        RepeatSubject();
    }
}

// The same call on the same memory has the same result, and leaves as much allocated as before. The first calls may
// take what an allocator keeps at hand, which is not counted.
void Differential::RepeatSubject() {
    repeating_ = true;
    before_ = "differs when called again with the same arguments: ";
    int growing = 0;  // calls in a row that left more than there was
    for (int i = 0; i < kRepeats && finding_.None(); ++i) {
        CallOnce();
        growing = aftermath_.allocated > 0 ? growing + 1 : 0;
    }
    before_.clear();
    if (growing >= kGrowingCalls && finding_.None()) {
        Report("leaks memory: " + std::to_string(aftermath_.allocated) + " bytes at every call\n");
    }
}

void Differential::CallOnce() {
    for (std::size_t i = 0; i < layout_.count; ++i) {
        std::memcpy(planes_[i].allocation(), initial_[i].data(), initial_[i].size());
    }
    aftermath_.fault.reset();
    aftermath_.change.count = 0;
    if (AreFarApart(case_.pitches)) {
        MoveFarApart();
    }
    PoisonGaps();
    ShieldPlanes();
    progress_.Enter(Stage::Subject);
    if (manner_.secondThread) {
        if (secondThread_ == nullptr) {
            secondThread_ = std::make_unique<SecondThread>();
        }
        secondThread_->Run([this] { CallHere(); });
    } else {
        CallHere();
    }
    progress_.Enter(Stage::Kit);
    UnshieldPlanes();
    UnpoisonPlanes();
    if (AreFarApart(case_.pitches)) {
        MoveBack();
    }
    if (aftermath_.fault) {
        ReportFault("crashed", *aftermath_.fault);
        return;
    }
    ComparePlanes();
    CompareDraws();
    if (aftermath_.change.count > 0) {
        Report("left the processor changed: " + aftermath_.change.Text() + "\n");
    }
}

// The call itself, on whatever thread this is.
void Differential::CallHere() {
    ScriptedRandom::ServeSeed(case_.seed);
    const std::size_t allocated = manner_.repeated ? AllocatedBytes() : 0;
    aftermath_.fault =
        catcher_.Run([this] { CallWatched(subject_, views_.data(), case_, manner_.floats, aftermath_.change); });
    aftermath_.allocated = static_cast<std::ptrdiff_t>((manner_.repeated ? AllocatedBytes() : 0) - allocated);
    aftermath_.draws = ScriptedRandom::Draws();
}

// The same bytes in rows that lie far apart; what becomes of them is brought back.
void Differential::MoveFarApart() {
    for (std::size_t i = 0; i < layout_.count; ++i) {
        farPlanes_[i] = FarPlane(planes_[i], case_.pitches, i);
        views_[i] = farPlanes_[i].View();
    }
}

void Differential::MoveBack() {
    for (std::size_t i = 0; i < layout_.count; ++i) {
        farPlanes_[i].ReturnTo(planes_[i]);
        farPlanes_[i] = FarPlane();
    }
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
    const std::vector<std::size_t>& draws = aftermath_.draws;
    if (draws != expectedDraws_) {
        Report("drew other random bytes: expected " + DescribeDraws(expectedDraws_) + ", found " +
               DescribeDraws(draws) + "\n");
    }
}

// The first line of the first text becomes the title.
void Differential::Report(const std::string& text, std::size_t differing) {
    const std::string line = finding_.None() ? before_ + text : text;
    if (finding_.None()) {
        finding_.title = line.substr(0, line.find('\n'));
    }
    finding_.report += line;
    if (differing > 1) {
        finding_.report += "(" + std::to_string(differing) + " such bytes)\n";
    }
}

void Differential::ReportFault(const char* who, const Fault& fault) {
    const std::string place = PlaceOf(fault.address);
    if (!fault.memory) {
        Report(std::string(who) + ": " + fault.signal + "\n");
    } else if (secondThread_ != nullptr && secondThread_->IsBelowStack(fault.address)) {
        Report("needs more stack than " + std::to_string(SecondThread::StackBytes() / 1024) + " KiB: " + fault.signal +
               " below the stack of a second thread\n");
    } else if (IsReadOnly(fault.address)) {
        Report("wrote to a source that it may only read: " + place + "\n");
    } else {
        Report(std::string(who) + ": " + fault.signal +
               (!place.empty()          ? " on touching " + place
                : fault.address < 65536 ? " at a null pointer or near it"
                                        : " at an address far from all planes") +
               "\n");
    }
}

// The place in words, if it is in a plane or near one, or in the matrix.
std::string Differential::PlaceOf(std::uintptr_t address) const {
    for (std::size_t i = 0; i < layout_.count; ++i) {
        if (planes_[i].IsNear(address)) {
            const auto place =
                static_cast<std::ptrdiff_t>(address - reinterpret_cast<std::uintptr_t>(planes_[i].data()));
            return std::string("plane ") + layout_.planes[i].name + ", " + planes_[i].Where(place);
        }
    }
    if (case_.matrix != nullptr && address - reinterpret_cast<std::uintptr_t>(case_.matrix) < sizeof(Matrix)) {
        return "coeffs";
    }
    return "";
}

// Whether the address lies in a source that only writing could fail for.
bool Differential::IsReadOnly(std::uintptr_t address) const {
    for (std::size_t i = 0; manner_.reach == Reach::SourcesReadOnly && i < layout_.count; ++i) {
        const auto begin = reinterpret_cast<std::uintptr_t>(planes_[i].allocation());
        if (layout_.planes[i].access == Access::Read && address - begin < planes_[i].allocationSize()) {
            return true;
        }
    }
    return false;
}

std::string Differential::DescribeCall() const {
    std::array<const char*, kMaximumPlanes> names;
    for (std::size_t i = 0; i < names.size(); ++i) {
        names[i] = layout_.planes[i].name;
    }
    std::string text = "call: " + std::string(entry_.name) + CallText(subject_, views_.data(), names.data(), case_) +
                       "\ncase: " + std::to_string(case_.width) + "x" + std::to_string(case_.height);
    const std::string option = NameOption(options_, asked_);
    text += (option == "-" ? "" : ", " + option) + "; " + DescribeMemory(case_, manner_.reach) + "; content " +
            NameOf(case_.pattern) + "; seed of the case " + std::to_string(case_.seed) + Describe(manner_) +
            (circumstance_.empty() ? "" : "; " + circumstance_) + "\n";
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
