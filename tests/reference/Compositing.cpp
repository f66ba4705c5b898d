/* Compositing and noise: the dither filter and the two blends. */
#include "tests/reference/Reference.h"
#include "tests/reference/ReferenceDetail.h"

namespace reference {

using namespace detail;

namespace {

KorUint16 DrawShortIndex() {
    KorUint16 index = 0;
    KorRandomGetBytes(reinterpret_cast<char*>(&index), sizeof(index));
    return index;
}

// Adds chroma noise to one plane. Deliberate: the noise advances by the width of the luma plane with every row.
void DitherChroma(const KorUint8* in, KorSizeT pitchIn, KorUint8* out, KorSizeT pitchOut, KorSizeT width,
                  KorSizeT height, KorSizeT start, NoiseScale scale) {
    for (KorSizeT row = 0; row < height / 2; ++row) {
        for (KorSizeT column = 0; column < width / 2; ++column) {
            const KorUint8 sample = At(in, pitchIn, Signed(column), Signed(row));
            At(out, pitchOut, Signed(column), Signed(row)) = AddNoise(sample, start + row * width + column, scale);
        }
    }
}

}  // namespace

// Deliberate: there is no Off. A level value of 0 halves the noise of the weakest level of the conversions.
void KorI420Dither_C_(const KorUint8* yIn, KorSizeT yInPitch, const KorUint8* uIn, KorSizeT uInPitch,
                      const KorUint8* vIn, KorSizeT vInPitch, KorUint8* yOut, KorSizeT yOutPitch, KorUint8* uOut,
                      KorSizeT uOutPitch, KorUint8* vOut, KorSizeT vOutPitch, KorSizeT width, KorSizeT height,
                      KorVideoFrameDitherLevel ditherLevel, KorBool randomizeNoiseOffsets) {
    if (!IsDefined(ditherLevel)) {
        return;
    }
    // As if one stream of noise ran through luma, then U, then V; or else three streams with random starts.
    NoiseStart start;
    if (randomizeNoiseOffsets != 0) {
        start.y = DrawShortIndex();
        start.u = DrawShortIndex();
        start.v = DrawShortIndex();
    } else {
        start.u = width * height;
        start.v = width * height + (width / 2) * (height / 2);
    }
    if (width < 2 || height < 2) {
        return;
    }

    for (KorSizeT row = 0; row < height - height % 2; ++row) {
        // Deliberate: the noise advances by one row for two rows of the image, so that the lower row of one pair and
        // the upper row of the next have the same noise.
        const KorSizeT noiseRow = row / 2 + row % 2;
        for (KorSizeT column = 0; column < width - width % 2; ++column) {
            const KorUint8 sample = At(yIn, yInPitch, Signed(column), Signed(row));
            At(yOut, yOutPitch, Signed(column), Signed(row)) =
                AddNoise(sample, start.y + noiseRow * width + column, LumaScale(ditherLevel));
        }
    }
    DitherChroma(uIn, uInPitch, uOut, uOutPitch, width, height, start.u, ChromaScale(ditherLevel));
    DitherChroma(vIn, vInPitch, vOut, vOutPitch, width, height, start.v, ChromaScale(ditherLevel));
}

namespace {

// Deliberate: the division by 255 rounds down, not to nearest.
KorUint8 Blend(Number background, Number foreground, Number alpha) {
    const Number weighted = background * (255 - alpha) + foreground * alpha;
    return LowByte((weighted + weighted / 256 + 1) / 256);
}

// Blends one plane; alphaAt gives the weight of the foreground sample at a column and row of the foreground.
template <typename AlphaAt>
void BlendPlane(KorUint8* background, KorSizeT pitchBackground, const KorUint8* foreground, KorSizeT pitchForeground,
                KorSizeT width, KorSizeT height, KorSizeT left, KorSizeT top, AlphaAt alphaAt) {
    for (Number row = 0; row < Signed(height); ++row) {
        for (Number column = 0; column < Signed(width); ++column) {
            KorUint8& place = At(background, pitchBackground, Signed(left) + column, Signed(top) + row);
            place = Blend(place, At(foreground, pitchForeground, column, row), alphaAt(column, row));
        }
    }
}

}  // namespace

// Deliberate, here and below: the chroma position is rounded down while the chroma size is rounded up.
void KorI420AlphaBlend_C_(KorUint8* yBackground, KorSizeT yBackgroundPitch, KorUint8* uBackground,
                          KorSizeT uBackgroundPitch, KorUint8* vBackground, KorSizeT vBackgroundPitch,
                          const KorUint8* yForeground, KorSizeT yForegroundPitch, const KorUint8* uForeground,
                          KorSizeT uForegroundPitch, const KorUint8* vForeground, KorSizeT vForegroundPitch,
                          KorSizeT width, KorSizeT height, KorSizeT xPosition, KorSizeT yPosition, KorUint8 alpha) {
    const auto constant = [&](Number, Number) { return alpha; };
    BlendPlane(yBackground, yBackgroundPitch, yForeground, yForegroundPitch, width, height, xPosition, yPosition,
               constant);
    BlendPlane(uBackground, uBackgroundPitch, uForeground, uForegroundPitch, (width + 1) / 2, (height + 1) / 2,
               xPosition / 2, yPosition / 2, constant);
    BlendPlane(vBackground, vBackgroundPitch, vForeground, vForegroundPitch, (width + 1) / 2, (height + 1) / 2,
               xPosition / 2, yPosition / 2, constant);
}

void KorI420AlphaArrayBlend_C_(KorUint8* yBackground, KorSizeT yBackgroundPitch, KorUint8* uBackground,
                               KorSizeT uBackgroundPitch, KorUint8* vBackground, KorSizeT vBackgroundPitch,
                               const KorUint8* yForeground, KorSizeT yForegroundPitch, const KorUint8* uForeground,
                               KorSizeT uForegroundPitch, const KorUint8* vForeground, KorSizeT vForegroundPitch,
                               KorSizeT width, KorSizeT height, KorSizeT xPosition, KorSizeT yPosition,
                               KorUint8* yAlpha, KorSizeT yAlphaPitch, KorUint8* uAlpha, KorSizeT uAlphaPitch,
                               KorUint8* vAlpha, KorSizeT vAlphaPitch) {
    BlendPlane(yBackground, yBackgroundPitch, yForeground, yForegroundPitch, width, height, xPosition, yPosition,
               [&](Number column, Number row) { return At(yAlpha, yAlphaPitch, column, row); });
    BlendPlane(uBackground, uBackgroundPitch, uForeground, uForegroundPitch, (width + 1) / 2, (height + 1) / 2,
               xPosition / 2, yPosition / 2,
               [&](Number column, Number row) { return At(uAlpha, uAlphaPitch, column, row); });
    BlendPlane(vBackground, vBackgroundPitch, vForeground, vForegroundPitch, (width + 1) / 2, (height + 1) / 2,
               xPosition / 2, yPosition / 2,
               [&](Number column, Number row) { return At(vAlpha, vAlphaPitch, column, row); });
}

}  // namespace reference
