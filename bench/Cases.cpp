#include "bench/Cases.h"

#include <algorithm>
#include <cctype>
#include <tuple>
#include <utility>

#include "bench/Baselines.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"

namespace bench {

namespace {

// --- Calls with whole planes ---

struct Yuv {
    Plane y, u, v;
};

// The source of a plane function, whose pitch has a sign.
struct SourceRows {
    const KorUint8* data;
    KorDistanceT pitch;
};

SourceRows TopDown(Plane plane) {
    return {plane.data, static_cast<KorDistanceT>(plane.pitch)};
}

auto Parts(const Plane& plane) {
    return std::make_tuple(plane.data, plane.pitch);
}

auto Parts(const SourceRows& rows) {
    return std::make_tuple(rows.data, rows.pitch);
}

auto Parts(const Yuv& image) {
    return std::tuple_cat(Parts(image.y), Parts(image.u), Parts(image.v));
}

template <class Value>
auto Parts(Value value) {
    return std::make_tuple(value);
}

// A call of a function of the library. A Plane among the arguments stands for its pointer and pitch, a Yuv for three.
template <class Function, class... Arguments>
std::function<void()> Call(Function* function, const Arguments&... arguments) {
    return [function, all = std::tuple_cat(Parts(arguments)...)] { std::apply(function, all); };
}

// --- Layouts ---

enum class Sampling : KorSizeT { I444 = 1,
                                 I420 = 2 };

constexpr KorSizeT kPacked = 2;
constexpr KorSizeT kRgb24 = 3;
constexpr KorSizeT kRgb32 = 4;

using AddPlane = Plane (Planes::*)(KorSizeT rowBytes, KorSizeT rows);

Yuv AddYuv(Planes& p, AddPlane add, KorSizeT width, KorSizeT height, Sampling sampling = Sampling::I420) {
    const KorSizeT step = static_cast<KorSizeT>(sampling);
    // In the order in which the function takes them.
    const Plane y = (p.*add)(width, height);
    const Plane u = (p.*add)(width / step, height / step);
    const Plane v = (p.*add)(width / step, height / step);
    return {y, u, v};
}

bool IsQuarter(KorImageRotationDegree angle) {
    return angle % 180 == 90;
}

KorSizeT TurnedWidth(const Planes& p, KorImageRotationDegree angle) {
    return IsQuarter(angle) ? p.Height() : p.Width();
}

KorSizeT TurnedHeight(const Planes& p, KorImageRotationDegree angle) {
    return IsQuarter(angle) ? p.Width() : p.Height();
}

constexpr KorImageRotationDegree kAngles[] = {0, 90, 180, 270};

// --- Options ---

using Matrix = KorInt[3][3];

constexpr Matrix kCaptureMatrix = {{47, 157, 16}, {-26, -87, 112}, {112, -102, -10}};
constexpr Matrix kCaptureMatrixWide = {{470000, 1570000, 160000}, {-260000, -870000, 1120000}, {1120000, -1020000, -100000}};
constexpr Matrix kRenderMatrix = {{298, 0, 459}, {298, -55, -136}, {298, 541, 0}};
// Multipliers that no 16-bit product holds.
constexpr Matrix kRenderMatrixWide = {{29800, 0, 45900}, {29800, -5500, -13600}, {29800, 54100, 0}};

struct Level {
    KorVideoFrameDitherLevel value;
    const char* option;
};

constexpr Level kOff = {KOR_VIDEOFRAMEDITHERLEVEL_Off, ""};
constexpr Level kLevel0 = {KOR_VIDEOFRAMEDITHERLEVEL_0, "dither 0"};
constexpr Level kLevel1 = {KOR_VIDEOFRAMEDITHERLEVEL_1, "dither 1"};
constexpr Level kLevel2 = {KOR_VIDEOFRAMEDITHERLEVEL_2, "dither 2"};

std::string Joined(const std::string& a, const std::string& b) {
    return a.empty() || b.empty() ? a + b : a + " " + b;
}

std::string FlipOption(KorBool flip) {
    return flip ? "flip" : "";
}

// --- Families ---

enum class Show { Always,
                  InFull };

class Family {
  public:
    Family(std::vector<Case>& cases, const char* name)
        : cases_(cases), name_(name) {}

    template <class Prepare>
    void Add(const char* function, const std::string& option, Show show, Prepare prepare) {
        cases_.push_back({name_, function, option, show == Show::Always, prepare});
    }

  private:
    std::vector<Case>& cases_;
    const char* name_;
};

void AddPlaneGeometry(std::vector<Case>& cases) {
    Family family(cases, "Plane geometry");
    family.Add("KorPlanarUV422To420_C_", "", Show::Always, [](Planes& p) {
        const Plane src = p.Read(p.Width(), p.Height());
        const Plane dst = p.Write(p.Width(), p.Height() / 2);
        return Call(KorPlanarUV422To420_C_, TopDown(src), dst, p.Width(), p.Height() / 2);
    });
    family.Add("KorPlanarUVDeinterlace_C_", "", Show::Always, [](Planes& p) {
        const Plane src = p.Read(2 * p.Width(), p.Height());
        const Plane uv1 = p.Write(p.Width(), p.Height());
        const Plane uv2 = p.Write(p.Width(), p.Height());
        return Call(KorPlanarUVDeinterlace_C_, TopDown(src), uv1, uv2, p.Width(), p.Height());
    });
    family.Add("KorPlanarMirror_C_", "", Show::Always, [](Planes& p) {
        const Plane src = p.Read(p.Width(), p.Height());
        const Plane dst = p.Write(p.Width(), p.Height());
        return Call(KorPlanarMirror_C_, TopDown(src), dst, p.Width(), p.Height());
    });
    family.Add("KorPlanarUVDeinterlaceMirror_C_", "", Show::Always, [](Planes& p) {
        const Plane src = p.Read(2 * p.Width(), p.Height());
        const Plane uv1 = p.Write(p.Width(), p.Height());
        const Plane uv2 = p.Write(p.Width(), p.Height());
        return Call(KorPlanarUVDeinterlaceMirror_C_, TopDown(src), uv1, uv2, p.Width(), p.Height());
    });
    for (const KorImageRotationDegree angle : kAngles) {
        family.Add("KorPlanarRotation_C_", std::to_string(angle), angle == 90 || angle == 180 ? Show::Always : Show::InFull, [=](Planes& p) {
            const Plane src = p.Read(p.Width(), p.Height());
            const Plane dst = p.Write(TurnedWidth(p, angle), TurnedHeight(p, angle));
            return Call(KorPlanarRotation_C_, TopDown(src), dst, p.Width(), p.Height(), angle);
        });
    }
    for (const KorImageRotationDegree angle : kAngles) {
        family.Add("KorPlanarUVDeinterlaceRotation_C_", std::to_string(angle), angle == 90 ? Show::Always : Show::InFull, [=](Planes& p) {
            const Plane src = p.Read(2 * p.Width(), p.Height());
            const Plane uv1 = p.Write(TurnedWidth(p, angle), TurnedHeight(p, angle));
            const Plane uv2 = p.Write(TurnedWidth(p, angle), TurnedHeight(p, angle));
            return Call(KorPlanarUVDeinterlaceRotation_C_, TopDown(src), uv1, uv2, p.Width(), p.Height(), angle);
        });
    }
    family.Add("KorI420FlipVertical_C_", "in place", Show::Always, [](Planes& p) {
        return Call(KorI420FlipVertical_C_, AddYuv(p, &Planes::ReadAndWrite, p.Width(), p.Height()), p.Width(), p.Height());
    });
}

// Captures: planes first, then the pixels, the size and whether to flip.
template <class Function>
void AddCapture(Family& family, const char* name, Function* function, KorSizeT pixelBytes, Sampling sampling = Sampling::I420) {
    for (const KorBool flip : {KorBool{0}, KorBool{1}}) {
        family.Add(name, FlipOption(flip), flip ? Show::InFull : Show::Always, [=](Planes& p) {
            const Yuv dst = AddYuv(p, &Planes::Write, p.Width(), p.Height(), sampling);
            const Plane x = p.Read(pixelBytes * p.Width(), p.Height());
            return Call(function, dst, x, p.Width(), p.Height(), flip);
        });
    }
}

// The I444 capture of BT.709 walks downwards from the last row when it is asked to flip.
void AddCaptureI444Bt709(Family& family) {
    for (const KorBool flip : {KorBool{0}, KorBool{1}}) {
        family.Add("KorBGRAToI444UsingBT709_C_", FlipOption(flip), flip ? Show::InFull : Show::Always, [=](Planes& p) {
            const Yuv dst = AddYuv(p, &Planes::Write, p.Width(), p.Height(), Sampling::I444);
            const KorSizeT rowsAbove = flip ? p.Height() - 1 : 0;
            const Plane rows = p.Scratch(kRgb32 * p.Width(), rowsAbove + p.Height());
            p.CountRead(kRgb32 * p.Width(), p.Height());
            return Call(KorBGRAToI444UsingBT709_C_, dst, rows, p.Width(), p.Height(), flip);
        });
    }
}

void AddCaptureGeneral(Family& family) {
    struct Option {
        const char* name;
        const Matrix& matrix;
        KorBool flip;
    };
    for (const Option& option : {Option{"", kCaptureMatrix, 0}, Option{"flip", kCaptureMatrix, 1}, Option{"wide matrix", kCaptureMatrixWide, 0}}) {
        family.Add("KorBGRAToI420General_C_", option.name, *option.name == 0 ? Show::Always : Show::InFull, [&matrix = option.matrix, flip = option.flip](Planes& p) {
            const Yuv dst = AddYuv(p, &Planes::Write, p.Width(), p.Height());
            const Plane x = p.Read(kRgb32 * p.Width(), p.Height());
            return Call(KorBGRAToI420General_C_, dst, x, p.Width(), p.Height(), flip, &matrix[0]);
        });
    }
    family.Add("KorBGRAToI420General_C_", "matrix in a plane", Show::InFull, [](Planes& p) {
        const Yuv dst = AddYuv(p, &Planes::Write, p.Width(), p.Height());
        const Plane x = p.Read(kRgb32 * p.Width(), p.Height());
        const void* inside = dst.y.data;
        return Call(KorBGRAToI420General_C_, dst, x, p.Width(), p.Height(), KorBool{0}, static_cast<const KorInt(*)[3]>(inside));
    });
}

void AddRgbToYuv(std::vector<Case>& cases) {
    Family family(cases, "RGB to YUV");
    AddCapture(family, "KorRGBAToI420_C_", KorRGBAToI420_C_, kRgb32);
    AddCapture(family, "KorBGRAToI420_C_", KorBGRAToI420_C_, kRgb32);
    AddCapture(family, "KorARGBToI420_C_", KorARGBToI420_C_, kRgb32);
    AddCapture(family, "KorABGRToI420_C_", KorABGRToI420_C_, kRgb32);
    AddCapture(family, "KorBGRAToI444_C_", KorBGRAToI444_C_, kRgb32, Sampling::I444);
    AddCapture(family, "KorBGRAToI420UsingBT709_C_", KorBGRAToI420UsingBT709_C_, kRgb32);
    AddCaptureI444Bt709(family);
    AddCaptureGeneral(family);
    AddCapture(family, "KorRawToI420_C_", KorRawToI420_C_, kRgb24);
    AddCapture(family, "Kor24BGToI420_C_", Kor24BGToI420_C_, kRgb24);
}

// Renderers and packers: planes first, then the pixels, the size and the level of noise. Noise is a stage of its own, so
// one level stands for all; the functions named kEveryLevel show that.
constexpr Level kOffAndOne[] = {kOff, kLevel1};
constexpr Level kEveryLevel[] = {kOff, kLevel0, kLevel1, kLevel2};

template <class Function, std::size_t count>
void AddRender(Family& family, const char* name, Function* function, KorSizeT pixelBytes, Sampling sampling, const Level (&levels)[count]) {
    for (const Level& level : levels) {
        const bool isBrief = level.value == kOff.value || (count > 2 && level.value == kLevel1.value);
        family.Add(name, level.option, isBrief ? Show::Always : Show::InFull, [=, value = level.value](Planes& p) {
            const Yuv src = AddYuv(p, &Planes::Read, p.Width(), p.Height(), sampling);
            const Plane x = p.Write(pixelBytes * p.Width(), p.Height());
            return Call(function, src, x, p.Width(), p.Height(), value);
        });
    }
}

void AddRenderGeneral(Family& family) {
    struct Option {
        const char* name;
        const Matrix& matrix;
    };
    for (const Option& option : {Option{"", kRenderMatrix}, Option{"wide matrix", kRenderMatrixWide}}) {
        for (const Level& level : kOffAndOne) {
            const std::string name = Joined(option.name, level.option);
            family.Add("KorI420ToBGRAGeneral_C_", name, name.empty() ? Show::Always : Show::InFull, [&matrix = option.matrix, value = level.value](Planes& p) {
                const Yuv src = AddYuv(p, &Planes::Read, p.Width(), p.Height());
                const Plane x = p.Write(kRgb32 * p.Width(), p.Height());
                return Call(KorI420ToBGRAGeneral_C_, src, x, p.Width(), p.Height(), &matrix[0], value);
            });
        }
    }
}

void AddYuvToRgb(std::vector<Case>& cases) {
    Family family(cases, "YUV to RGB");
    AddRender(family, "KorI420ToRGBA_C_", KorI420ToRGBA_C_, kRgb32, Sampling::I420, kOffAndOne);
    AddRender(family, "KorI420ToBGRA_C_", KorI420ToBGRA_C_, kRgb32, Sampling::I420, kEveryLevel);
    AddRender(family, "KorI420ToARGB_C_", KorI420ToARGB_C_, kRgb32, Sampling::I420, kOffAndOne);
    AddRender(family, "KorI420ToABGR_C_", KorI420ToABGR_C_, kRgb32, Sampling::I420, kOffAndOne);
    AddRender(family, "KorI444ToBGRA_C_", KorI444ToBGRA_C_, kRgb32, Sampling::I444, kOffAndOne);
    AddRender(family, "KorI444ToBGRAUsingBT709_C_", KorI444ToBGRAUsingBT709_C_, kRgb32, Sampling::I444, kOffAndOne);
    AddRender(family, "KorI420ToBGRAUsingBT709_C_", KorI420ToBGRAUsingBT709_C_, kRgb32, Sampling::I420, kOffAndOne);
    AddRenderGeneral(family);
    AddRender(family, "KorI420To24BG_C_", KorI420To24BG_C_, kRgb24, Sampling::I420, kOffAndOne);
}

template <class Function>
void AddTurningCapture(Family& family, const char* name, Function* function) {
    for (const KorImageRotationDegree angle : kAngles) {
        for (const KorBool flip : {KorBool{0}, KorBool{1}}) {
            family.Add(name, Joined(std::to_string(angle), FlipOption(flip)), angle == 90 && !flip ? Show::Always : Show::InFull, [=](Planes& p) {
                const Yuv dst = AddYuv(p, &Planes::Write, TurnedWidth(p, angle), TurnedHeight(p, angle));
                const Plane x = p.Read(kPacked * p.Width(), p.Height());
                return Call(function, dst, x, p.Width(), p.Height(), flip, angle);
            });
        }
    }
}

// Blocks of two luma rows and a row of chroma. Flipping starts as many blocks down as there are luma rows above the last,
// so the blocks that it reads are the last of that many.
void AddM420(Family& family) {
    for (const KorBool flip : {KorBool{0}, KorBool{1}}) {
        family.Add("KorM420ToI420_C_", FlipOption(flip), flip ? Show::InFull : Show::Always, [=](Planes& p) {
            const Yuv dst = AddYuv(p, &Planes::Write, p.Width(), p.Height());
            const KorSizeT blocks = p.Height() / 2;
            const Plane m420 = p.Scratch(3 * p.Width(), flip ? p.Height() : blocks);
            p.CountRead(3 * p.Width(), blocks);
            return Call(KorM420ToI420_C_, dst, m420, p.Width(), p.Height(), flip);
        });
    }
}

void AddPackedYuv(std::vector<Case>& cases) {
    Family family(cases, "Packed and semi-planar YUV");
    AddCapture(family, "KorYUY2ToI420_C_", KorYUY2ToI420_C_, kPacked);
    AddCapture(family, "KorUYVYToI420_C_", KorUYVYToI420_C_, kPacked);
    AddTurningCapture(family, "KorYUY2ToI420WithRotation_C_", KorYUY2ToI420WithRotation_C_);
    AddTurningCapture(family, "KorUYVYToI420WithRotation_C_", KorUYVYToI420WithRotation_C_);
    AddRender(family, "KorI420ToYUY2_C_", KorI420ToYUY2_C_, kPacked, Sampling::I420, kEveryLevel);
    AddRender(family, "KorI420ToUYVY_C_", KorI420ToUYVY_C_, kPacked, Sampling::I420, kOffAndOne);
    AddCapture(family, "KorYuv2ToI420_C_", KorYuv2ToI420_C_, kPacked);
    family.Add("KorI420toYuv2_C_", "", Show::Always, [](Planes& p) {
        const Yuv src = AddYuv(p, &Planes::Read, p.Width(), p.Height());
        const Plane x = p.Write(kPacked * p.Width(), p.Height());
        return Call(KorI420toYuv2_C_, src, x, p.Width(), p.Height());
    });
    AddM420(family);
}

void AddDitherFilter(Family& family) {
    struct Option {
        const char* name;
        KorVideoFrameDitherLevel level;
        KorBool randomize;
    };
    // The filter has no Off: the value is its weakest level.
    constexpr Option kOptions[] = {{"off", KOR_VIDEOFRAMEDITHERLEVEL_Off, 0}, {"dither 0", KOR_VIDEOFRAMEDITHERLEVEL_0, 0}, {"dither 1", KOR_VIDEOFRAMEDITHERLEVEL_1, 0}, {"dither 2", KOR_VIDEOFRAMEDITHERLEVEL_2, 0}, {"dither 1 random", KOR_VIDEOFRAMEDITHERLEVEL_1, 1}};
    for (const Option& option : kOptions) {
        const bool isBrief = option.level == kLevel1.value && option.randomize;
        family.Add("KorI420Dither_C_", option.name, isBrief ? Show::Always : Show::InFull, [=](Planes& p) {
            const Yuv in = AddYuv(p, &Planes::Read, p.Width(), p.Height());
            const Yuv out = AddYuv(p, &Planes::Write, p.Width(), p.Height());
            return Call(KorI420Dither_C_, in, out, p.Width(), p.Height(), option.level, option.randomize);
        });
    }
    family.Add("KorI420Dither_C_", "dither 1 in place", Show::InFull, [](Planes& p) {
        const Yuv both = AddYuv(p, &Planes::ReadAndWrite, p.Width(), p.Height());
        return Call(KorI420Dither_C_, both, both, p.Width(), p.Height(), KOR_VIDEOFRAMEDITHERLEVEL_1, KorBool{0});
    });
}

void AddCompositing(std::vector<Case>& cases) {
    Family family(cases, "Compositing and noise");
    AddDitherFilter(family);
    family.Add("KorI420AlphaBlend_C_", "", Show::Always, [](Planes& p) {
        const Yuv background = AddYuv(p, &Planes::ReadAndWrite, p.Width(), p.Height());
        const Yuv foreground = AddYuv(p, &Planes::Read, p.Width(), p.Height());
        return Call(KorI420AlphaBlend_C_, background, foreground, p.Width(), p.Height(), KorSizeT{0}, KorSizeT{0}, KorUint8{77});
    });
    family.Add("KorI420AlphaArrayBlend_C_", "", Show::Always, [](Planes& p) {
        const Yuv background = AddYuv(p, &Planes::ReadAndWrite, p.Width(), p.Height());
        const Yuv foreground = AddYuv(p, &Planes::Read, p.Width(), p.Height());
        const Yuv alpha = AddYuv(p, &Planes::Read, p.Width(), p.Height());
        return Call(KorI420AlphaArrayBlend_C_, background, foreground, p.Width(), p.Height(), KorSizeT{0}, KorSizeT{0}, alpha);
    });
}

void AddBaselines(std::vector<Case>& cases) {
    Family family(cases, "For comparison, without the library or in two passes");
    family.Add("I420 to BGRA, byte stores", "", Show::InFull, [](Planes& p) {
        const Yuv src = AddYuv(p, &Planes::Read, p.Width(), p.Height());
        const Plane x = p.Write(kRgb32 * p.Width(), p.Height());
        return Call(RenderWithByteStores, src, x, p.Width(), p.Height());
    });
    for (const KorImageRotationDegree angle : kAngles) {
        family.Add("UYVY to I420, then turned", std::to_string(angle), Show::InFull, [=](Planes& p) {
            const Yuv dst = AddYuv(p, &Planes::Write, TurnedWidth(p, angle), TurnedHeight(p, angle));
            const Yuv scratch = AddYuv(p, &Planes::Scratch, p.Width(), p.Height());
            const Plane x = p.Read(kPacked * p.Width(), p.Height());
            return Call(ConvertThenRotate, dst, scratch, x, p.Width(), p.Height(), angle);
        });
    }
}

char Lower(char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

// Whether what stands at text begins with pattern, in which * stands for anything and a last $ for the end.
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

std::vector<Case> Cases() {
    std::vector<Case> cases;
    AddPlaneGeometry(cases);
    AddRgbToYuv(cases);
    AddYuvToRgb(cases);
    AddPackedYuv(cases);
    AddCompositing(cases);
    AddBaselines(cases);
    return cases;
}

bool Matches(const std::string& label, const std::string& pattern) {
    return BeginsWith(label.c_str(), ("*" + pattern).c_str());
}

}  // namespace bench
