#include "conformance/core/Catalogue.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>

namespace kit {

namespace {

// ---- Shapes of the planes ----------------------------------------------------------------------------------------

std::size_t Half(std::size_t size) {
    return size / 2;
}
std::size_t HalfUp(std::size_t size) {
    return (size + 1) / 2;
}
std::size_t Even(std::size_t size) {
    return size / 2 * 2;
}
std::size_t EvenUp(std::size_t size) {
    return (size + 1) / 2 * 2;
}
bool Odd(std::size_t size) {
    return size % 2 != 0;
}

constexpr const char* kYuv[3] = {"y", "u", "v"};

void AddChroma(Layout& layout, Access access, std::size_t rowBytes, std::size_t rows, std::size_t nominal = 0) {
    layout.Add("u", access, rowBytes, rows, nominal);
    layout.Add("v", access, rowBytes, rows, nominal);
}

// Capture of whole images into planes whose chroma is rounded up.
void RgbToI420(const Case& c, Layout& layout) {
    layout.Add("y", Access::Write, c.width, c.height);
    AddChroma(layout, Access::Write, HalfUp(c.width), HalfUp(c.height));
    layout.Add("x", Access::Read, 4 * c.width, c.height);
}

void RgbToI444(const Case& c, Layout& layout) {
    for (const char* name : kYuv) {
        layout.Add(name, Access::Write, c.width, c.height);
    }
    layout.Add("x", Access::Read, 4 * c.width, c.height);
}

// An odd last row goes to the row below the image as well.
void RgbToI420SpareRow(const Case& c, Layout& layout) {
    RgbToI420(c, layout);
    if (c.width > 0 && Odd(c.height)) {
        layout.planes[0].shape.spareRows = 1;
    }
}

// A flipped walk starts at the last row and goes on downwards.
void RgbToI444FlippedDownwards(const Case& c, Layout& layout) {
    RgbToI444(c, layout);
    if (c.flip && c.height > 0) {
        layout.planes[3].shape.rows = 2 * c.height - 1;
    }
}

// An odd last column and an odd last row go to the column and row beyond the image as well.
void SpareColumnAndRow(const Case& c, Layout& layout) {
    if (c.width > 0 && c.height > 0) {
        layout.planes[0].shape.spareColumns = c.width % 2;
        layout.planes[0].shape.spareRows = c.height % 2;
    }
}

void RgbToI420SpareColumnAndRow(const Case& c, Layout& layout) {
    RgbToI420(c, layout);
    SpareColumnAndRow(c, layout);
}

void Rgb24ToI420(const Case& c, Layout& layout) {
    layout.Add("y", Access::Write, c.width, c.height);
    AddChroma(layout, Access::Write, HalfUp(c.width), HalfUp(c.height));
    layout.Add("x", Access::Read, 3 * c.width, c.height);
    SpareColumnAndRow(c, layout);
}

void PackedToI420(const Case& c, Layout& layout) {
    PlaneUse& y = layout.Add("y", Access::Write, Even(c.width), c.height, c.width);
    y.shape.spareRows = c.height % 2;
    AddChroma(layout, Access::Write, Half(c.width), HalfUp(c.height), HalfUp(c.width));
    layout.Add("x", Access::Read, 4 * Half(c.width), c.height, 2 * c.width);
}

// Row pairs that are stepped by the full odd width start ever further to the left.
void Yuv2ToI420(const Case& c, Layout& layout) {
    PackedToI420(c, layout);
    if (Odd(c.width)) {
        PlaneShape& y = layout.planes[0].shape;
        PlaneShape& x = layout.planes[3].shape;
        y.drifts = true;
        x.drifts = true;
        if (c.flip && c.height > 0) {
            x.margin = 2 * Half(c.height - 1 + c.height % 2);
        }
    }
}

// A flipped walk starts at the block of the last luma row, as if there were a block a row.
void M420ToI420(const Case& c, Layout& layout) {
    layout.Add("y", Access::Write, c.width, Even(c.height));
    AddChroma(layout, Access::Write, Half(c.width), Half(c.height), HalfUp(c.width));
    const std::size_t blocks = Half(c.height);
    layout.Add("m420", Access::Read, 2 * c.width + 2 * Half(c.width), c.flip && blocks > 0 ? c.height : blocks);
}

bool TurnsToTheSide(const Case& c) {
    return c.rotationDegree != 0 && c.rotationDegree != 180;
}

void PackedToI420Rotated(const Case& c, Layout& layout) {
    const bool nothing = c.width < 2 || c.height == 0;
    const std::size_t columns = nothing ? 0 : Even(c.width);
    const std::size_t rows = nothing ? 0 : EvenUp(c.height);
    const bool side = TurnsToTheSide(c);
    layout.Add("y", Access::Write, side ? rows : columns, side ? columns : rows, side ? rows : c.width);
    const std::size_t chromaWidth = side ? rows / 2 : columns / 2;
    const std::size_t chromaHeight = side ? columns / 2 : rows / 2;
    AddChroma(layout, Access::Write, chromaWidth, chromaHeight, HalfUp(side ? rows : c.width));
    layout.Add("x", Access::Read, 2 * columns, nothing ? 0 : c.height, 2 * c.width);
    if (Odd(c.width) && !nothing) {
        // Stepping back by the full odd width moves every row pair one luma sample further along the source's columns.
        const std::size_t pairs = rows / 2;
        PlaneUse& y = layout.planes[0];
        PlaneShape& x = layout.planes[3].shape;
        y.shape.drifts = true;
        x.drifts = true;
        if (c.rotationDegree == 90) {
            y.marginRows = pairs - 1;
        } else if (c.rotationDegree == 180) {
            y.shape.rowBytes = c.width;
        } else if (side) {
            y.shape.rows = c.width + pairs - 1;
        }
        if (c.flip) {
            x.margin = 2 * (pairs - 1);
        }
    }
}

// Rendering reads and writes whole blocks of two by two.
void AddI420Source(const Case& c, Layout& layout) {
    layout.Add("y", Access::Read, Even(c.width), Even(c.height), c.width);
    AddChroma(layout, Access::Read, Half(c.width), Half(c.height), HalfUp(c.width));
}

void I420ToRgb(const Case& c, Layout& layout) {
    AddI420Source(c, layout);
    layout.Add("x", Access::Write, 4 * Even(c.width), Even(c.height), 4 * c.width);
}

void I420ToRgb24(const Case& c, Layout& layout) {
    AddI420Source(c, layout);
    layout.Add("x", Access::Write, 3 * Even(c.width), Even(c.height), 3 * c.width);
}

void I444ToRgb(const Case& c, Layout& layout) {
    for (const char* name : kYuv) {
        layout.Add(name, Access::Read, c.width, c.height);
    }
    layout.Add("x", Access::Write, 4 * c.width, c.height);
}

void I420ToPacked(const Case& c, Layout& layout) {
    AddI420Source(c, layout);
    layout.Add("x", Access::Write, 4 * Half(c.width), Even(c.height), 2 * c.width);
}

void I420ToYuv2(const Case& c, Layout& layout) {
    I420ToPacked(c, layout);
    if (Odd(c.width)) {
        layout.planes[0].shape.drifts = true;
        layout.planes[3].shape.drifts = true;
    }
}

void HalveChroma(const Case& c, Layout& layout) {
    layout.Add("src", Access::Read, c.width, 2 * c.height);
    layout.Add("dst", Access::Write, c.width, c.height);
}

void CopyPlane(const Case& c, Layout& layout) {
    layout.Add("src", Access::Read, c.width, c.height);
    layout.Add("dst", Access::Write, c.width, c.height);
}

void SplitPlane(const Case& c, Layout& layout) {
    layout.Add("src", Access::Read, 2 * c.width, c.height);
    layout.Add("uv1", Access::Write, c.width, c.height);
    layout.Add("uv2", Access::Write, c.width, c.height);
}

void RotatePlane(const Case& c, Layout& layout) {
    const bool side = TurnsToTheSide(c);
    layout.Add("src", Access::Read, c.width, c.height);
    layout.Add("dst", Access::Write, side ? c.height : c.width, side ? c.width : c.height);
}

void RotateSplitPlane(const Case& c, Layout& layout) {
    const bool side = TurnsToTheSide(c);
    layout.Add("src", Access::Read, 2 * c.width, c.height);
    layout.Add("uv1", Access::Write, side ? c.height : c.width, side ? c.width : c.height);
    layout.Add("uv2", Access::Write, side ? c.height : c.width, side ? c.width : c.height);
}

void FlipI420(const Case& c, Layout& layout) {
    layout.Add("y", Access::ReadWrite, c.width, c.height);
    AddChroma(layout, Access::ReadWrite, Half(c.width), Half(c.height), HalfUp(c.width));
}

void FilterI420(const Case& c, Layout& layout) {
    const Access first = c.inPlace ? Access::ReadWrite : Access::Read;
    layout.Add("yIn", first, Even(c.width), Even(c.height), c.width);
    layout.Add("uIn", first, Half(c.width), Half(c.height), HalfUp(c.width));
    layout.Add("vIn", first, Half(c.width), Half(c.height), HalfUp(c.width));
    if (!c.inPlace) {
        layout.Add("yOut", Access::Write, Even(c.width), Even(c.height), c.width);
        layout.Add("uOut", Access::Write, Half(c.width), Half(c.height), HalfUp(c.width));
        layout.Add("vOut", Access::Write, Half(c.width), Half(c.height), HalfUp(c.width));
    }
}

// The backgrounds end where the foreground ends, so that nothing beyond it can be touched.
void BlendI420(const Case& c, Layout& layout) {
    const bool nothing = c.width == 0 || c.height == 0;
    const std::size_t chromaWidth = nothing ? 0 : c.xPosition / 2 + HalfUp(c.width);
    const std::size_t chromaHeight = nothing ? 0 : c.yPosition / 2 + HalfUp(c.height);
    layout.Add("yBackground", Access::ReadWrite, nothing ? 0 : c.xPosition + c.width,
               nothing ? 0 : c.yPosition + c.height);
    layout.Add("uBackground", Access::ReadWrite, chromaWidth, chromaHeight);
    layout.Add("vBackground", Access::ReadWrite, chromaWidth, chromaHeight);
    layout.Add("yForeground", Access::Read, c.width, c.height);
    layout.Add("uForeground", Access::Read, HalfUp(c.width), HalfUp(c.height));
    layout.Add("vForeground", Access::Read, HalfUp(c.width), HalfUp(c.height));
}

void BlendI420WithAlphaPlanes(const Case& c, Layout& layout) {
    BlendI420(c, layout);
    layout.Add("yAlpha", Access::Read, c.width, c.height);
    layout.Add("uAlpha", Access::Read, HalfUp(c.width), HalfUp(c.height));
    layout.Add("vAlpha", Access::Read, HalfUp(c.width), HalfUp(c.height));
}

// ---- Values of the options ---------------------------------------------------------------------------------------

// Any value but zero is true.
const std::vector<KorBool> kFlags{0, 1, 2};

// The last one is none.
const std::vector<KorVideoFrameDitherLevel> kLevels{KOR_VIDEOFRAMEDITHERLEVEL_Off, KOR_VIDEOFRAMEDITHERLEVEL_0,
                                                    KOR_VIDEOFRAMEDITHERLEVEL_1, KOR_VIDEOFRAMEDITHERLEVEL_2,
                                                    static_cast<KorVideoFrameDitherLevel>(4)};

// The last one is minus 90.
const std::vector<KorImageRotationDegree> kAngles{0, 90, 180, 270, 45, 360, 4294967206u};

// Eight fraction bits: a usual matrix, one whose rows and columns all differ, one that saturates or wraps at every
// turn, one that is all zero, one of single numbers, and one whose sums leave 32 bits.
const Matrix kMatrices[] = {
    {{{47, 157, 16}, {-26, -87, 112}, {112, -102, -10}}},
    {{{298, -3, 7}, {241, -100, -208}, {333, 516, 11}}},
    {{{512, 700, -900}, {-2000, 1500, 3001}, {4096, -4097, 257}}},
    {{{0, 0, 0}, {0, 0, 0}, {0, 0, 0}}},
    {{{256, 0, 0}, {0, 256, 0}, {0, 0, 65535}}},
    {{{INT_MAX, INT_MIN, 123456789}, {-987654321, INT_MAX, INT_MAX}, {INT_MIN, -1, INT_MIN + 1}}},
};

std::vector<const Matrix*> Matrices() {
    std::vector<const Matrix*> matrices;
    for (const Matrix& matrix : kMatrices) {
        matrices.push_back(&matrix);
    }
    return matrices;
}

Sweep OptionsCapture() {
    Sweep sweep;
    sweep.flips = kFlags;
    return sweep;
}

Sweep OptionsCaptureGeneral() {
    Sweep sweep = OptionsCapture();
    sweep.matrices = Matrices();
    sweep.matrixPlaces = {MatrixPlace::Own, MatrixPlace::Middle};
    return sweep;
}

Sweep OptionsCaptureRotation() {
    Sweep sweep = OptionsCapture();
    sweep.rotationDegrees = kAngles;
    return sweep;
}

Sweep OptionsRender() {
    Sweep sweep;
    sweep.ditherLevels = kLevels;
    return sweep;
}

Sweep OptionsRenderGeneral() {
    Sweep sweep = OptionsRender();
    sweep.matrices = Matrices();
    return sweep;
}

Sweep OptionsPack() {
    return {};
}

Sweep OptionsPlane() {
    Sweep sweep;
    sweep.walks = {Walk::Down, Walk::Up};
    return sweep;
}

Sweep OptionsSplit() {
    return OptionsPlane();
}

Sweep OptionsPlaneRotation() {
    Sweep sweep = OptionsPlane();
    sweep.rotationDegrees = kAngles;
    return sweep;
}

Sweep OptionsSplitRotation() {
    return OptionsPlaneRotation();
}

Sweep OptionsFlipVertical() {
    return {};
}

Sweep OptionsDither() {
    Sweep sweep = OptionsRender();
    sweep.randomizeNoiseOffsets = kFlags;
    sweep.inPlace = {false, true};
    return sweep;
}

Sweep OptionsBlendArray() {
    Sweep sweep;
    sweep.positions = {{0, 0}, {5, 1}, {2, 3}};
    return sweep;
}

Sweep OptionsBlend() {
    Sweep sweep = OptionsBlendArray();
    sweep.alphas = {0, 1, 127, 128, 254, 255};
    return sweep;
}

// ---- The functions in a table ------------------------------------------------------------------------------------

template <auto member>
AnyFunction Of(const KorConformanceTable& table) {
    return table.*member;
}

// ---- Pitches -----------------------------------------------------------------------------------------------------

// Destinations and sources take different paddings, so that a pitch used for another plane shows.
std::size_t ChoosePitch(const Case& c, std::size_t plane, std::size_t tight) {
    switch (c.pitches) {
        case Pitches::Tight:
            break;
        case Pitches::Loose:
            return (tight + 15) / 16 * 16 + 16 * (1 + plane % 3);
        case Pitches::Odd:
            return (tight + 2 + 2 * (plane % 4)) | 1;
        case Pitches::Drawn:
            return tight + static_cast<std::size_t>(MixSeed(c.seed, 200 + plane) % 160);
        case Pitches::Mixed: {
            // Half as long again is a pitch that some other number of bytes a sample would make tight.
            const std::size_t paddings[] = {0, 0, 32 * (1 + plane), tight / 2};
            return tight + paddings[MixSeed(c.seed, 300 + plane) % 4];
        }
        case Pitches::Wide:
        case Pitches::Far:
        case Pitches::Huge:
            // The model's rows lie near each other, with room for what drifts.
            return tight + 320 + 3 * plane;
    }
    return tight;
}

}  // namespace

Layout LayOut(const Entry& entry, const Case& options) {
    Layout layout;
    entry.describe(options, layout);
    for (std::size_t i = 0; i < layout.count; ++i) {
        const PlaneUse& use = layout.planes[i];
        PlaneShape& shape = layout.planes[i].shape;
        const std::size_t tight = std::max(use.nominalRowBytes, shape.rowBytes + shape.spareColumns);
        shape.pitch = ChoosePitch(options, i, tight);
        shape.margin += use.marginRows * shape.pitch;
    }
    return layout;
}

PlaneUse& Layout::Add(const char* name, Access access, std::size_t rowBytes, std::size_t rows,
                      std::size_t nominalRowBytes) {
    PlaneUse& use = planes[count++];
    use = PlaneUse{};
    use.name = name;
    use.access = access;
    use.shape.rowBytes = rowBytes;
    use.shape.rows = rows;
    use.nominalRowBytes = nominalRowBytes > rowBytes ? nominalRowBytes : rowBytes;
    return use;
}

const std::vector<Entry>& Catalogue() {
    static const std::vector<Entry> entries{
#define KOR_FUNCTION(name, shape, family, frames) \
    {#name "_C_", Family::family, frames, Options##shape, Of<&KorConformanceTable::name>},
#include "Kor/Video/Common/KorYuv420Functions_.inc"
    };
    return entries;
}

const Entry& Find(const std::string& name) {
    for (const Entry& entry : Catalogue()) {
        if (name == entry.name) {
            return entry;
        }
    }
    std::fprintf(stderr, "The catalogue has no function %s\n", name.c_str());
    std::abort();
}

}  // namespace kit
