#include "bench/Cases.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "bench/Baselines.h"
#include "conformance/core/Catalogue.h"

namespace bench {

namespace {

// --- Measured calls ---

// The arguments of a call besides planes and sizes, and their name in a label.
struct Option {
    std::string name;
    bool isBrief = true;
    kit::Case arguments;
    bool matrixInside = false;  // the matrix lies in the first plane
};

using Options = std::vector<Option>;

constexpr kit::Matrix kCaptureMatrix = {{{47, 157, 16}, {-26, -87, 112}, {112, -102, -10}}};
constexpr kit::Matrix kCaptureMatrixWide = {
    {{470000, 1570000, 160000}, {-260000, -870000, 1120000}, {1120000, -1020000, -100000}}};
constexpr kit::Matrix kRenderMatrix = {{{298, 0, 459}, {298, -55, -136}, {298, 541, 0}}};
// Multipliers that exceed 16 bits.
constexpr kit::Matrix kRenderMatrixWide = {{{29800, 0, 45900}, {29800, -5500, -13600}, {29800, 54100, 0}}};

constexpr KorImageRotationDegree kAngles[] = {0, 90, 180, 270};

std::string Joined(const std::string& a, const std::string& b) {
    return a.empty() || b.empty() ? a + b : a + " " + b;
}

// The options of each shape of parameters that take a separate path through a function.
struct OptionsOf {
    std::string function;

    static Option With(const std::string& name, bool isBrief, const kit::Case& arguments = {}) {
        return {name, isBrief, arguments};
    }

    static Options Rotated(const Options& options, const std::vector<KorImageRotationDegree>& brief) {
        Options rotated;
        for (const KorImageRotationDegree angle : kAngles) {
            for (Option option : options) {
                option.isBrief = option.isBrief && std::count(brief.begin(), brief.end(), angle) != 0;
                option.name = Joined(std::to_string(angle), option.name);
                option.arguments.rotationDegree = angle;
                rotated.push_back(option);
            }
        }
        return rotated;
    }

    Options operator()(KorConformancePlane) const { return {With("", true)}; }
    Options operator()(KorConformanceSplit) const { return {With("", true)}; }
    Options operator()(KorConformancePlaneRotation) const { return Rotated({With("", true)}, {90, 180}); }
    Options operator()(KorConformanceSplitRotation) const { return Rotated({With("", true)}, {90}); }
    Options operator()(KorConformanceFlipVertical) const { return {With("in place", true)}; }
    Options operator()(KorConformancePack) const { return {With("", true)}; }

    Options operator()(KorConformanceCapture) const {
        kit::Case flipped;
        flipped.flip = 1;
        return {With("", true), With("flip", false, flipped)};
    }
    Options operator()(KorConformanceCaptureRotation) const { return Rotated((*this)(KorConformanceCapture()), {90}); }
    Options operator()(KorConformanceCaptureGeneral) const {
        Options options = (*this)(KorConformanceCapture());
        for (Option& option : options) {
            option.arguments.matrix = &kCaptureMatrix;
        }
        kit::Case wide;
        wide.matrix = &kCaptureMatrixWide;
        options.push_back(With("wide matrix", false, wide));
        options.push_back(With("matrix in a plane", false));
        options.back().matrixInside = true;
        return options;
    }

    // Dither is a stage of its own, so one level represents all; one renderer and one packer show that.
    Options operator()(KorConformanceRender) const {
        const bool everyLevel = function == "KorI420ToBGRA_C_" || function == "KorI420ToYUY2_C_";
        Options options = {With("", true)};
        for (const KorUint level : {0u, 1u, 2u}) {
            if (everyLevel || level == 1) {
                kit::Case dithered;
                dithered.ditherLevel = static_cast<KorVideoFrameDitherLevel>(KOR_VIDEOFRAMEDITHERLEVEL_0 + level);
                options.push_back(With("dither " + std::to_string(level), everyLevel && level == 1, dithered));
            }
        }
        return options;
    }
    Options operator()(KorConformanceRenderGeneral) const {
        Options options;
        for (const bool isWide : {false, true}) {
            for (Option option : (*this)(KorConformanceRender())) {
                option.isBrief = option.isBrief && !isWide;
                option.name = Joined(isWide ? "wide matrix" : "", option.name);
                option.arguments.matrix = isWide ? &kRenderMatrixWide : &kRenderMatrix;
                options.push_back(option);
            }
        }
        return options;
    }

    // The filter has no Off; the value is its weakest level.
    Options operator()(KorConformanceDither) const {
        Options options;
        const auto add = [&options](const char* name, KorVideoFrameDitherLevel level, KorBool randomize, bool inPlace) {
            kit::Case arguments;
            arguments.ditherLevel = level;
            arguments.randomizeNoiseOffsets = randomize;
            arguments.inPlace = inPlace;
            options.push_back(With(name, randomize != 0, arguments));
        };
        add("off", KOR_VIDEOFRAMEDITHERLEVEL_Off, 0, false);
        add("dither 0", KOR_VIDEOFRAMEDITHERLEVEL_0, 0, false);
        add("dither 1", KOR_VIDEOFRAMEDITHERLEVEL_1, 0, false);
        add("dither 2", KOR_VIDEOFRAMEDITHERLEVEL_2, 0, false);
        add("dither 1 random", KOR_VIDEOFRAMEDITHERLEVEL_1, 1, false);
        add("dither 1 in place", KOR_VIDEOFRAMEDITHERLEVEL_1, 0, true);
        return options;
    }

    Options operator()(KorConformanceBlend) const {
        kit::Case arguments;
        arguments.alpha = 77;
        return {With("", true, arguments)};
    }
    Options operator()(KorConformanceBlendArray) const { return {With("", true)}; }
};

// --- Planes ---

// The bytes that a call reads and writes. A flipped walk that starts elsewhere reads just as many.
double Moved(const kit::Entry& entry, kit::Case arguments) {
    arguments.flip = 0;
    const kit::Layout layout = kit::LayOut(entry, arguments);
    double moved = 0;
    for (std::size_t i = 0; i < layout.count; ++i) {
        const kit::PlaneShape& shape = layout.planes[i].shape;
        const int times = layout.planes[i].access == kit::Access::ReadWrite ? 2 : 1;
        moved += times * static_cast<double>(shape.rowBytes) * static_cast<double>(shape.rows);
    }
    return moved;
}

// Sizes count pixels of the frame that a function reads; the function that halves rows reads twice the height that it
// writes.
void SetSize(const kit::Entry& entry, const Planes& planes, kit::Case& arguments) {
    arguments.width = planes.Width();
    arguments.height = planes.Height();
    const kit::PlaneUse first = kit::LayOut(entry, arguments).planes[0];
    if (first.access == kit::Access::Read && first.shape.rows > planes.Height()) {
        arguments.height /= 2;
    }
}

std::function<void()> Prepare(const kit::Entry& entry, const kit::AnyFunction& function, const Option& option,
                              Planes& planes) {
    kit::Case arguments = option.arguments;
    SetSize(entry, planes, arguments);
    const kit::Layout layout = kit::LayOut(entry, arguments);
    std::vector<kit::PlaneView> views;
    for (std::size_t i = 0; i < layout.count; ++i) {
        views.push_back(planes.Add(layout.planes[i].shape.rowBytes, layout.planes[i].shape.rows));
    }
    planes.Count(Moved(entry, arguments));
    if (option.matrixInside) {
        const void* inside = views[0].data;
        arguments.matrix = static_cast<const kit::Matrix*>(inside);
    }
    return [function, views, arguments] { kit::Call(function, views.data(), arguments); };
}

// --- The cases ---

const char* TitleOf(kit::Family family) {
    switch (family) {
        case kit::Family::PlaneGeometry:
            return "Plane geometry";
        case kit::Family::RgbToYuv:
            return "RGB to YUV";
        case kit::Family::YuvToRgb:
            return "YUV to RGB";
        case kit::Family::PackedYuv:
            return "Packed and semi-planar YUV";
        case kit::Family::Compositing:
            break;
    }
    return "Compositing and noise";
}

Case MakeCase(const char* family, const std::string& label, const kit::Entry& entry, const kit::AnyFunction& function,
              const Option& option) {
    return {family, label, option.name, option.isBrief,
            [&entry, function, option](Planes& planes) { return Prepare(entry, function, option, planes); }};
}

char Lower(char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

// Whether text begins with pattern, in which * matches anything and a final $ the end.
bool BeginsWith(const char* text, const char* pattern) {
    if (*pattern == 0) {
        return true;
    }
    if (*pattern == '$' && pattern[1] == 0) {
        return *text == 0;
    }
    if (*pattern == '*') {
        return BeginsWith(text, pattern + 1) || (*text != 0 && BeginsWith(text + 1, pattern));
    }
    return Lower(*text) == Lower(*pattern) && BeginsWith(text + 1, pattern + 1);
}

}  // namespace

std::vector<Case> Cases(const KorConformanceTable& table, const std::string& suffix) {
    std::vector<Case> cases;
    for (const kit::Entry& entry : kit::Catalogue()) {
        const kit::AnyFunction function = entry.of(table);
        const std::string name = entry.name;
        const std::string label = name.substr(0, name.rfind("_C_")) + suffix;
        for (const Option& option : std::visit(OptionsOf{name}, function)) {
            cases.push_back(MakeCase(TitleOf(entry.family), label, entry, function, option));
        }
    }
    return cases;
}

void AddBaselines(std::vector<Case>& cases) {
    constexpr const char* kFamily = "For comparison, without the library or in two passes";
    const kit::Entry& render = kit::Find("KorI420ToBGRA_C_");
    cases.push_back(MakeCase(kFamily, "I420 to BGRA, byte stores", render, &RenderWithByteStores, {"", false, {}}));
    const kit::Entry& capture = kit::Find("KorUYVYToI420WithRotation_C_");
    for (const Option& option : OptionsOf::Rotated({{"", false, {}}}, {})) {
        cases.push_back(MakeCase(kFamily, "UYVY to I420, then rotated", capture, &ConvertThenRotate, option));
    }
}

bool Matches(const std::string& label, const std::string& pattern) {
    return BeginsWith(label.c_str(), ("*" + pattern).c_str());
}

}  // namespace bench
