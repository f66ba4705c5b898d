/**
 * @file
 * The portable conversions of raw video frames. This header is the library's manual.
 *
 * 38 functions convert, resample, rotate, mirror, flip, dither and blend whole frames in the caller's memory. Valid C99
 * and C++17.
 *
 * Common rules
 *
 * - Terms: A capture converts RGB or packed frames to planes, a renderer planes to RGB, a packer planes to packed YUV.
 *   Rotation is clockwise.
 * - Results: The bytes that these functions write are a contract, to the bit. Every faster variant of a function has
 *   the same signature and writes the same bytes.
 * - Images: An image is one or more planes, each a pointer to the first byte of its top row and a pitch: the distance
 *   in bytes from one row to the next. Bytes between the end of a row and the next row are neither read nor written.
 *   Widths, heights and positions count pixels of the full-resolution (luma) grid, unless a function says otherwise.
 *   Planes need no alignment. A pitch is at least as long as its row, and an image spans no more than KorDistanceT can
 *   express.
 * - Samples: Unsigned bytes. YUV is limited range: luma 16 to 235, chroma 16 to 240, centred on 128. Yuv2 differs.
 * - Order: Byte orders are orders in memory, at increasing addresses: BGRA is B, G, R, A on every machine.
 * - Spare: Some captures write one luma row below, or one luma column to the right of, a picture of odd size. Each
 *   function that does says so, and its caller provides the room.
 * - Reads: Nothing outside the width by height of a source is read unless a function says so. What is not written for
 *   an odd last column or row is not read either.
 * - Overlap: Sources and destinations must not overlap unless a function says that they may.
 * - Errors: Nothing is checked and nothing is reported. Sizes of zero are legal and write nothing; even null plane
 *   pointers are then left alone.
 * - Threads: No function keeps state or allocates memory. All may run on any thread, and concurrently if their
 *   destinations are disjoint. Dithering calls KorRandomGetBytes(), which must allow the same. A frame may be split
 *   into bands at even rows; examples/threads shows which functions allow it.
 *
 * Layouts
 *
 * - I420: Planes Y, U, V. Y has width by height samples; U and V have (width + 1) / 2 by (height + 1) / 2, one for each
 *   block of two by two luma samples.
 * - I444: Planes Y, U, V of width by height samples.
 * - 32-bit: Four bytes a pixel, in the order of the name: RGBA, BGRA, ARGB, ABGR.
 * - 24-bit: Three bytes a pixel: R, G, B for "Raw", B, G, R for "24BG".
 * - YUY2: Four bytes for two pixels: Y0, U, Y1, V.
 * - UYVY: Four bytes for two pixels: U, Y0, V, Y1.
 * - Yuv2: Like YUY2, but with full-range luma (0 to 255) and signed chroma (0 is neutral).
 * - M420: Blocks of two luma rows and the row of interleaved chroma that they share; see KorM420ToI420_C_().
 *
 * Flip. Captures with a flip argument read their source bottom row first when it is true: row 0 of the destination
 * comes from the row at x + (height - 1) * pitchX. KorBGRAToI444UsingBT709_C_() and KorM420ToI420_C_() differ, as they
 * describe. Destinations are always written from their first row downwards.
 */
#ifndef KOR_VIDEO_COMMON_C_KORYUV420_C_H
#define KOR_VIDEO_COMMON_C_KORYUV420_C_H

#include "Kor/Utils/SysDep/KorBaseTypes.h"
#include "Kor/Video/Common/KorVideoFrame.h"

KOR_EXTERN_C_BEGIN

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup plane_geometry Plane geometry
 * Samples move; the only arithmetic is one average.
 * @{
 */

/** @name 4:2:2 to 4:2:0
 * @{ */
/**
 * Halves the vertical resolution of one chroma plane: 4:2:2 to 4:2:0.
 *
 * width and height are the size of dst. Row i of dst is the rounded-up average, (a + b + 1) >> 1, of rows 2i and 2i + 1
 * of src, so src has 2 * height rows of width samples. A negative pitchSrc walks src upwards from its pointer. A zero
 * width or height writes nothing.
 */
KOR_API void KorPlanarUV422To420_C_(const KorUint8* src, KorDistanceT pitchSrc,
                                    KorUint8* dst, KorSizeT pitchDst,
                                    KorSizeT width, KorSizeT height);
/** @} */

/** @name Split and mirror
 * @{ */
/**
 * Splits pairs of bytes, mirrors rows, or does both.
 *
 * Deinterlace splits rows of width pairs of bytes: uv1 gets the first byte of each pair, uv2 the second. What the bytes
 * mean is up to the caller, who swaps the two pointers if V comes before U. Mirror reverses each row, so that the
 * leftmost sample becomes the rightmost; DeinterlaceMirror does both.
 *
 * src has width samples (or pairs) by height rows, each destination width samples by height rows. A negative pitchSrc
 * with src at its last row reads a picture stored bottom-up. A zero width or height writes nothing. Mirroring in place
 * is not supported.
 */
KOR_API void KorPlanarUVDeinterlace_C_(const KorUint8* src, KorDistanceT pitchSrc,
                                       KorUint8* uv1, KorSizeT pitchUv1,
                                       KorUint8* uv2, KorSizeT pitchUv2,
                                       KorSizeT width, KorSizeT height);

KOR_API void KorPlanarMirror_C_(const KorUint8* src, KorDistanceT pitchSrc,
                                KorUint8* dst, KorSizeT pitchDst,
                                KorSizeT width, KorSizeT height);

KOR_API void KorPlanarUVDeinterlaceMirror_C_(const KorUint8* src, KorDistanceT pitchSrc,
                                             KorUint8* uv1, KorSizeT pitchUv1,
                                             KorUint8* uv2, KorSizeT pitchUv2,
                                             KorSizeT width, KorSizeT height);
/** @} */

/** @name Rotation
 * @{ */
/**
 * Rotates a plane clockwise by rotationDegree. The sample in column i and row j of a source of W by H samples goes to
 *
 *     angle    column       row          destination
 *     0        i            j            W by H
 *     90       H - 1 - j    i            H by W
 *     180      W - 1 - i    H - 1 - j    W by H
 *     270      j            W - 1 - i    H by W
 *
 * Each destination pitch is that of the rotated plane. A negative pitchSrc reads a picture stored bottom-up. A zero
 * size writes nothing.
 *
 * KorPlanarRotation_C_ rotates samples. Any other angle writes nothing. At angle 0, src and dst may be the same, and
 * then nothing is done; at the other angles the planes must not overlap.
 *
 * KorPlanarUVDeinterlaceRotation_C_ rotates pairs of bytes (widthSrc counts pairs) and splits them in the same pass:
 * uv1 gets the first bytes, uv2 the second. Angle 0 is KorPlanarUVDeinterlace_C_(). Any other angle rotates by 270.
 */
KOR_API void KorPlanarRotation_C_(const KorUint8* src, KorDistanceT pitchSrc,
                                  KorUint8* dst, KorSizeT pitchDst,
                                  KorSizeT widthSrc, KorSizeT heightSrc, KorImageRotationDegree rotationDegree);

KOR_API void KorPlanarUVDeinterlaceRotation_C_(const KorUint8* src, KorDistanceT pitchSrc,
                                               KorUint8* uv1, KorSizeT pitchUv1,
                                               KorUint8* uv2, KorSizeT pitchUv2,
                                               KorSizeT widthSrc, KorSizeT heightSrc, KorImageRotationDegree rotationDegree);
/** @} */

/** @name Flip in place
 * @{ */
/**
 * Flips an I420 picture upside down in place, row by row, without a second picture.
 *
 * Chroma counts as width / 2 by height / 2 samples, rounded down: with an odd width the last chroma column is left as
 * it is, with an odd height the last chroma row. Luma below a height of 2, and chroma below a height of 4 or a width of
 * 2, is left alone.
 */
KOR_API void KorI420FlipVertical_C_(KorUint8* srcY, KorSizeT srcPitchY,
                                    KorUint8* srcU, KorSizeT srcPitchU,
                                    KorUint8* srcV, KorSizeT srcPitchV,
                                    KorSizeT width, KorSizeT height);
/** @} */

/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup rgb_to_yuv RGB to YUV
 * RGB pixels to limited-range I420 and I444.
 * @{
 */

/** @name 32-bit RGB to I420
 * @{ */
/**
 * 32-bit RGB to I420 with the matrix of ITU-R BT.601, limited range, in 7-bit fixed point:
 *
 *     Y = (( 33 R + 64 G + 13 B) >> 7) +  16
 *     U = ((-19 R - 37 G + 56 B) >> 7) + 128
 *     V = (( 56 R - 47 G -  9 B) >> 7) + 128
 *
 * with shifts that round down; nothing needs clamping. White gives 235, 128, 128; red 81, 90, 239.
 *
 *     function             bytes of a pixel
 *     KorRGBAToI420_C_     R  G  B  A
 *     KorBGRAToI420_C_     B  G  R  A
 *     KorARGBToI420_C_     A  R  G  B
 *     KorABGRToI420_C_     A  B  G  R
 *
 * Chroma is converted from the averaged RGB of each block of two by two pixels: first each column's vertical pair, then
 * the two columns, each rounded up. The blocks of an odd last column or row are one pixel wide or high.
 *
 * Reads width pixels of height rows of x. Alpha is ignored: the image may begin after its first alpha (ARGB, ABGR) or
 * end before its last (RGBA, BGRA). Writes width by height luma samples and (width + 1) / 2 by
 * (height + 1) / 2 chroma samples. A zero width or height writes nothing.
 */
KOR_API void KorRGBAToI420_C_(KorUint8* y, KorSizeT pitchY,
                              KorUint8* u, KorSizeT pitchU,
                              KorUint8* v, KorSizeT pitchV,
                              const KorUint8* x, KorSizeT pitchX,
                              KorSizeT width, KorSizeT height, KorBool flip);

KOR_API void KorBGRAToI420_C_(KorUint8* y, KorSizeT pitchY,
                              KorUint8* u, KorSizeT pitchU,
                              KorUint8* v, KorSizeT pitchV,
                              const KorUint8* x, KorSizeT pitchX,
                              KorSizeT width, KorSizeT height, KorBool flip);

KOR_API void KorARGBToI420_C_(KorUint8* y, KorSizeT pitchY,
                              KorUint8* u, KorSizeT pitchU,
                              KorUint8* v, KorSizeT pitchV,
                              const KorUint8* x, KorSizeT pitchX,
                              KorSizeT width, KorSizeT height, KorBool flip);

KOR_API void KorABGRToI420_C_(KorUint8* y, KorSizeT pitchY,
                              KorUint8* u, KorSizeT pitchU,
                              KorUint8* v, KorSizeT pitchV,
                              const KorUint8* x, KorSizeT pitchX,
                              KorSizeT width, KorSizeT height, KorBool flip);
/** @} */

/** @name BGRA to I444
 * @{ */
/** BGRA to I444 with the same matrix of BT.601 for every pixel. All three planes are width by height samples. */
KOR_API void KorBGRAToI444_C_(KorUint8* y, KorSizeT pitchY,
                              KorUint8* u, KorSizeT pitchU,
                              KorUint8* v, KorSizeT pitchV,
                              const KorUint8* x, KorSizeT pitchX,
                              KorSizeT width, KorSizeT height, KorBool flip);
/** @} */

/** @name BGRA to I420 and I444 with BT.709
 * @{ */
/**
 * BGRA to I420 and I444 with the matrix of ITU-R BT.709, limited range, in 8-bit fixed point:
 *
 *     Y = (( 47 R + 157 G +  16 B) >> 8) +  16
 *     U = ((-26 R -  87 G + 112 B) >> 8) + 128
 *     V = ((112 R - 102 G -  10 B) >> 8) + 128
 *
 * The weights of U sum to -1, so white has a U of 127. Chroma of I420 is averaged as above.
 *
 * I420, odd height: one spare luma row. The luma of the last row is also written to the row below the picture, without
 * the last column of an odd width.
 *
 * I444, flip: the first row read is the last of the source, as usual, but from there rows run downwards, past the end
 * of the picture: rows height - 1 to 2 * height - 2 are read. Set flip only for a height of 1, or where the source
 * continues.
 *
 * A zero width or height writes nothing.
 */
KOR_API void KorBGRAToI420UsingBT709_C_(KorUint8* y, KorSizeT pitchY,
                                        KorUint8* u, KorSizeT pitchU,
                                        KorUint8* v, KorSizeT pitchV,
                                        const KorUint8* x, KorSizeT pitchX,
                                        KorSizeT width, KorSizeT height, KorBool flip);

KOR_API void KorBGRAToI444UsingBT709_C_(KorUint8* y, KorSizeT pitchY,
                                        KorUint8* u, KorSizeT pitchU,
                                        KorUint8* v, KorSizeT pitchV,
                                        const KorUint8* x, KorSizeT pitchX,
                                        KorSizeT width, KorSizeT height, KorBool flip);
/** @} */

/** @name BGRA to I420 with the caller's matrix
 * @{ */
/**
 * BGRA to I420 with the caller's matrix: three rows Y, U, V of weights for red, green and blue, in units of 1/256.
 * BT.709 is {{47, 157, 16}, {-26, -87, 112}, {112, -102, -10}}.
 *
 *     Y = low byte of ((sum >> 8) +  16)        U, V = low byte of ((sum >> 8) + 128)
 *
 * Sums wrap modulo 2^32, and results outside 0 to 255 wrap as well: nothing is clamped. Chroma is averaged as above.
 *
 * Odd sizes: one spare luma column to the right and one spare luma row below. With an odd width, the luma of the last
 * column is written twice, with the second copy just right of the picture. With an odd height, the luma of the last row
 * is written again in the row below. In both cases the luma weights apply to the channels in the order red, blue,
 * green. With both, the corner pixel is written to all four places, with the weights in their normal order.
 *
 * coeffs is only read. It may overlap a destination plane: each sample then uses the weights as the samples before it
 * left them, in the order of two by two blocks (four luma samples, upper row first, then U, then V), odd column, odd
 * row, corner. A zero width or height writes nothing, and does not read coeffs.
 */
KOR_API void KorBGRAToI420General_C_(KorUint8* y, KorSizeT pitchY,
                                     KorUint8* u, KorSizeT pitchU,
                                     KorUint8* v, KorSizeT pitchV,
                                     const KorUint8* x, KorSizeT pitchX,
                                     KorSizeT width, KorSizeT height, KorBool flip, const KorInt (*coeffs)[3]);
/** @} */

/** @name 24-bit RGB to I420
 * @{ */
/**
 * 24-bit RGB to I420 with the matrix of BT.601, limited range, in 8-bit fixed point:
 *
 *     Y = ((66 R + 129 G + 25 B) >> 8) + 16
 *     U = 128 + average of (-38 R -  74 G + 112 B) >> 8
 *     V = 128 + average of (112 R -  94 G -  18 B) >> 8
 *
 * Each pixel's chroma is converted first and then averaged over its block, rounding half up, so the results differ
 * slightly from those of the 32-bit captures.
 *
 *     function             bytes of a pixel
 *     KorRawToI420_C_      R  G  B
 *     Kor24BGToI420_C_     B  G  R
 *
 * Odd sizes: one spare luma column to the right, one spare luma row below. With an odd width, the luma of the last
 * column of each row pair is written twice, with the second copy just right of the picture. With an odd height, the
 * luma of the last row is written again in the row below. With both, the corner pixel is not converted: its luma
 * repeats the sample above, and its chroma is (above + left + 1) >> 1 of the chroma samples next to it; the spare
 * places next to the corner are not written. If the picture is one row high there is no sample above: the corner's luma
 * is then converted from its pixel, and its chroma is that to its left. If it is one column wide, the chroma is that
 * above. A picture of one pixel is converted from that pixel.
 *
 * Pitches must be below 2^31. A zero width or height writes nothing.
 */
KOR_API void KorRawToI420_C_(KorUint8* y, KorSizeT pitchY,
                             KorUint8* u, KorSizeT pitchU,
                             KorUint8* v, KorSizeT pitchV,
                             const KorUint8* rgb, KorSizeT pitchRgb,
                             KorSizeT width, KorSizeT height, KorBool flip);

KOR_API void Kor24BGToI420_C_(KorUint8* y, KorSizeT pitchY,
                              KorUint8* u, KorSizeT pitchU,
                              KorUint8* v, KorSizeT pitchV,
                              const KorUint8* bgr, KorSizeT pitchBgr,
                              KorSizeT width, KorSizeT height, KorBool flip);
/** @} */

/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup yuv_to_rgb YUV to RGB
 * Limited-range I420 and I444 to RGB, with optional dither.
 *
 * Dither: renderers and packers take a ditherLevel. At KOR_VIDEOFRAMEDITHERLEVEL_Off they convert the samples as they
 * are and draw no random bytes; undefined levels count as Off. At every other level they first draw the starts of Y, U
 * and V in the noise table, in this order: sizeof(KorSizeT) bytes each from KorRandomGetBytes, read as a KorSizeT in
 * the machine's byte order. They do so even if the size then writes nothing. They convert
 *
 *     KorByteClip(sample + ((KorTblDitherStd4[index & 0x3fff] + round) >> shift))
 *
 * in place of each sample. The shift is 3 - ditherLevel for luma and 4 - ditherLevel for chroma, where
 * KOR_VIDEOFRAMEDITHERLEVEL_0 has the value 1, and round is half of 1 << shift, rounded down. Luma starts at a multiple
 * of 8, and its rows are width, rounded up to a multiple of 8, apart in the table. Chroma of the I420 renderers starts
 * anywhere and runs on from row to row; chroma of the I444 renderers starts anywhere, and its rows are as far apart as
 * those of luma; chroma of the packers starts at a multiple of 8, and its rows are width / 2, rounded up to a multiple
 * of 8, apart.
 *
 * @{
 */

/** @name I420 to 32-bit RGB
 * @{ */
/**
 * I420 to 32-bit RGB with the matrix of ITU-R BT.601, limited range, in fixed point:
 *
 *     R = clip(((149 Y) >> 7) + ((204 V) >> 7) - 223)
 *     G = clip(((149 Y) >> 7) + 135 - ((25 U + 52 V) >> 6))
 *     B = clip(((149 Y) >> 7) + ((129 U) >> 6) - 277)
 *
 * Alpha is always 255. Black gives 0, 0, 0; white gives 254, 254, 254.
 *
 *     function             bytes of a pixel
 *     KorI420ToRGBA_C_     R    G    B    255
 *     KorI420ToBGRA_C_     B    G    R    255
 *     KorI420ToARGB_C_     255  R    G    B
 *     KorI420ToABGR_C_     255  B    G    R
 *
 * Pixels are written in blocks of two by two: an odd last column or row is left unchanged. A width or height below 2
 * writes nothing.
 */
KOR_API void KorI420ToRGBA_C_(const KorUint8* y, KorSizeT pitchY,
                              const KorUint8* u, KorSizeT pitchU,
                              const KorUint8* v, KorSizeT pitchV,
                              KorUint8* x, KorSizeT pitchX,
                              KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);

KOR_API void KorI420ToBGRA_C_(const KorUint8* y, KorSizeT pitchY,
                              const KorUint8* u, KorSizeT pitchU,
                              const KorUint8* v, KorSizeT pitchV,
                              KorUint8* x, KorSizeT pitchX,
                              KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);

KOR_API void KorI420ToARGB_C_(const KorUint8* y, KorSizeT pitchY,
                              const KorUint8* u, KorSizeT pitchU,
                              const KorUint8* v, KorSizeT pitchV,
                              KorUint8* x, KorSizeT pitchX,
                              KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);

KOR_API void KorI420ToABGR_C_(const KorUint8* y, KorSizeT pitchY,
                              const KorUint8* u, KorSizeT pitchU,
                              const KorUint8* v, KorSizeT pitchV,
                              KorUint8* x, KorSizeT pitchX,
                              KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);
/** @} */

/** @name I444 to BGRA
 * @{ */
/**
 * I444 to BGRA, with the matrix above or with that of ITU-R BT.709, limited range:
 *
 *     R = clip(((149 Y) >> 7) + ((229 V) >> 7) - 248)
 *     G = clip(((149 Y) >> 7) + 78 - ((14 U + 34 V) >> 6))
 *     B = clip(((149 Y) >> 7) + ((135 U) >> 6) - 289)
 *
 * which renders white as 254, 255, 254 (B, G, R). Every pixel is written; a zero width or height writes nothing.
 */
KOR_API void KorI444ToBGRA_C_(const KorUint8* y, KorSizeT pitchY,
                              const KorUint8* u, KorSizeT pitchU,
                              const KorUint8* v, KorSizeT pitchV,
                              KorUint8* x, KorSizeT pitchX,
                              KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);

KOR_API void KorI444ToBGRAUsingBT709_C_(const KorUint8* y, KorSizeT pitchY,
                                        const KorUint8* u, KorSizeT pitchU,
                                        const KorUint8* v, KorSizeT pitchV,
                                        KorUint8* x, KorSizeT pitchX,
                                        KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);
/** @} */

/** @name I420 to BGRA with BT.709
 * @{ */
/** I420 to BGRA with the matrix of BT.709 above. Sizes as for KorI420ToBGRA_C_(). */
KOR_API void KorI420ToBGRAUsingBT709_C_(const KorUint8* y, KorSizeT pitchY,
                                        const KorUint8* u, KorSizeT pitchU,
                                        const KorUint8* v, KorSizeT pitchV,
                                        KorUint8* x, KorSizeT pitchX,
                                        KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);
/** @} */

/** @name I420 to BGRA with the caller's matrix
 * @{ */
/**
 * I420 to BGRA with the caller's matrix: three rows R, G, B of multipliers for luma, U - 128 and V - 128, in units of
 * 1/256.
 *
 *     channel = clip(((Y * coeffs[0][0]) >> 8)
 *                    + (((U - 128) * row[1] + (V - 128) * row[2] - 16 * row[0] + 128) >> 8))
 *
 * Row 0 gives the luma multiplier of all three channels; the luma offset uses each row's own. Sums wrap modulo 2^32 and
 * are shifted arithmetically. coeffs is only read, and not at all for sizes that write nothing. Sizes as for
 * KorI420ToBGRA_C_().
 */
KOR_API void KorI420ToBGRAGeneral_C_(const KorUint8* y, KorSizeT pitchY,
                                     const KorUint8* u, KorSizeT pitchU,
                                     const KorUint8* v, KorSizeT pitchV,
                                     KorUint8* x, KorSizeT pitchX,
                                     KorSizeT width, KorSizeT height, const KorInt (*coeffs)[3], KorVideoFrameDitherLevel ditherLevel);
/** @} */

/** @name I420 to 24-bit RGB
 * @{ */
/** I420 to 24-bit pixels B, G, R: KorI420ToBGRA_C_() without the alpha byte. */
KOR_API void KorI420To24BG_C_(const KorUint8* y, KorSizeT pitchY,
                              const KorUint8* u, KorSizeT pitchU,
                              const KorUint8* v, KorSizeT pitchV,
                              KorUint8* x, KorSizeT pitchX,
                              KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);
/** @} */

/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup packed_yuv Packed and semi-planar YUV
 * Camera and encoder layouts to I420 and back.
 * @{
 */

/** @name YUY2 and UYVY to I420
 * @{ */
/**
 * YUY2 and UYVY to I420. Luma is copied; chroma of each row pair is averaged, (upper + lower + 1) >> 1.
 *
 * Odd width: the last column is not read, and its luma and chroma are not written. Odd height: one spare luma row. The
 * last row is converted alone: its luma is also written to the row below the picture, and its chroma is copied. A width
 * below 2 or a zero height writes nothing.
 */
KOR_API void KorYUY2ToI420_C_(KorUint8* y, KorSizeT pitchY,
                              KorUint8* u, KorSizeT pitchU,
                              KorUint8* v, KorSizeT pitchV,
                              const KorUint8* x, KorSizeT pitchX,
                              KorSizeT width, KorSizeT height, KorBool flip);

KOR_API void KorUYVYToI420_C_(KorUint8* y, KorSizeT pitchY,
                              KorUint8* u, KorSizeT pitchU,
                              KorUint8* v, KorSizeT pitchV,
                              const KorUint8* x, KorSizeT pitchX,
                              KorSizeT width, KorSizeT height, KorBool flip);
/** @} */

/** @name YUY2 and UYVY to I420 with rotation
 * @{ */
/**
 * YUY2 and UYVY to I420, rotated clockwise by rotationDegree in the same pass. A set flip applies before the rotation.
 *
 * With H the height rounded up to even (the last row read counts twice), the destination is
 *
 *     angle        luma            chroma
 *     0, 180       width by H      width / 2 by H / 2
 *     90, 270      H by width      H / 2 by width / 2
 *
 * and the pitches are those of the rotated planes. Any other angle rotates by 270. A width below 2 or a zero height
 * writes nothing.
 *
 * The width must be even. With an odd width every row pair is shifted against the pair before: it is read two bytes
 * earlier, and its luma is written one sample earlier. At 90 that writes up to H / 2 - 1 rows before the luma plane, at
 * 270 as many after it; with flip, the source is read up to H - 2 bytes before x.
 */
KOR_API void KorYUY2ToI420WithRotation_C_(KorUint8* y, KorSizeT pitchY,
                                          KorUint8* u, KorSizeT pitchU,
                                          KorUint8* v, KorSizeT pitchV,
                                          const KorUint8* x, KorSizeT pitchX,
                                          KorSizeT widthSrc, KorSizeT heightSrc, KorBool flip, KorImageRotationDegree rotationDegree);

KOR_API void KorUYVYToI420WithRotation_C_(KorUint8* y, KorSizeT pitchY,
                                          KorUint8* u, KorSizeT pitchU,
                                          KorUint8* v, KorSizeT pitchV,
                                          const KorUint8* x, KorSizeT pitchX,
                                          KorSizeT width, KorSizeT height, KorBool flip, KorImageRotationDegree rotationDegree);
/** @} */

/** @name I420 to YUY2 and UYVY
 * @{ */
/**
 * I420 to YUY2 and UYVY. Samples are copied, dithered on request (see above); each chroma row serves two rows.
 *
 * An odd last column or row is not packed. A width or height below 2 writes nothing.
 */
KOR_API void KorI420ToYUY2_C_(const KorUint8* y, KorSizeT pitchY,
                              const KorUint8* u, KorSizeT pitchU,
                              const KorUint8* v, KorSizeT pitchV,
                              KorUint8* x, KorSizeT pitchX,
                              KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);

KOR_API void KorI420ToUYVY_C_(const KorUint8* y, KorSizeT pitchY,
                              const KorUint8* u, KorSizeT pitchU,
                              const KorUint8* v, KorSizeT pitchV,
                              KorUint8* x, KorSizeT pitchX,
                              KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);
/** @} */

/** @name Yuv2
 * @{ */
/**
 * Yuv2 to I420: luma to limited range, ((220 Y) >> 8) + 16; signed chroma scaled by t(c) = (113 c) >> 7 and averaged
 * over the row pair, (t + t + 257) >> 1. Odd heights and sizes that write nothing are as for KorYUY2ToI420_C_().
 *
 * I420 to Yuv2: luma is copied as it is, chroma becomes the low byte of (145 c + 14208) >> 7, which wraps below 16 and
 * above 240. An odd last column or row is not written; a width or height below 2 writes nothing.
 *
 * Odd width, both: each row pair starts one luma sample and two packed bytes earlier than the pitches imply, so the
 * shift grows from pair to pair. With flip, the source of KorYuv2ToI420_C_ is read up to height - 1 bytes before yuv2.
 */
KOR_API void KorYuv2ToI420_C_(KorUint8* y, KorSizeT pitchY,
                              KorUint8* u, KorSizeT pitchU,
                              KorUint8* v, KorSizeT pitchV,
                              const KorUint8* yuv2, KorSizeT pitchYuv2,
                              KorSizeT width, KorSizeT height, KorBool flip);

KOR_API void KorI420toYuv2_C_(const KorUint8* y, KorSizeT pitchY,
                              const KorUint8* u, KorSizeT pitchU,
                              const KorUint8* v, KorSizeT pitchV,
                              KorUint8* yuy2, KorSizeT pitchYuy2,
                              KorSizeT width, KorSizeT height);
/** @} */

/** @name M420 to I420
 * @{ */
/**
 * M420 to I420. A block holds, back to back, luma row 2i, luma row 2i + 1 (width bytes each) and width / 2 pairs U, V.
 * Block i starts at m420 + i * pitchM420, so pitchM420 spans three rows. Samples are copied.
 *
 * flip reads the blocks backwards, from m420 + (height - 1) * pitchM420: the start counts luma rows, not blocks, so a
 * caller that flips must place its last block there. The two luma rows of a block keep their order.
 *
 * Odd width: luma is copied in full, chroma covers width / 2 pairs. Odd height: the last luma row is not written. A
 * zero width or a height below 2 writes nothing.
 */
KOR_API void KorM420ToI420_C_(KorUint8* y, KorSizeT pitchY,
                              KorUint8* u, KorSizeT pitchU,
                              KorUint8* v, KorSizeT pitchV,
                              const KorUint8* m420, KorSizeT pitchM420,
                              KorSizeT width, KorSizeT height, KorBool flip);
/** @} */

/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup compositing Compositing and noise
 * One picture blended over another, and noise added to a picture.
 * @{
 */

/** @name Dither filter
 * @{ */
/**
 * Adds dither noise to an I420 picture, by the formula of the renderers. Every call adds noise: here Off, too, is a
 * level, one step weaker than KOR_VIDEOFRAMEDITHERLEVEL_0. Undefined levels draw and write nothing.
 *
 * The planes of In and Out may be the same, with the same pitches.
 *
 * With randomizeNoiseOffsets, the starts of Y, U and V in the noise table are two random bytes each, read as a
 * KorUint16 in the machine's byte order, and drawn in this order even if the size writes nothing. Without it nothing is
 * drawn, and the starts are 0, height * width, and that plus (width / 2) * (height / 2), as if one stream of noise ran
 * through the planes. The rows of a pair are width apart in the table; the upper row of the next pair has the noise of
 * this pair's lower row. Chroma rows are width apart, too.
 *
 * Of luma, 2 * (width / 2) by 2 * (height / 2) samples are written, of chroma width / 2 by height / 2. A width or
 * height below 2 writes nothing.
 */
KOR_API void KorI420Dither_C_(const KorUint8* yIn, KorSizeT yInPitch,
                              const KorUint8* uIn, KorSizeT uInPitch,
                              const KorUint8* vIn, KorSizeT vInPitch,
                              KorUint8* yOut, KorSizeT yOutPitch,
                              KorUint8* uOut, KorSizeT uOutPitch,
                              KorUint8* vOut, KorSizeT vOutPitch,
                              KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel, KorBool randomizeNoiseOffsets);
/** @} */

/** @name Blends
 * @{ */
/**
 * Blends an I420 foreground of width by height over a background, in place, with its first sample at column xPosition
 * and row yPosition. alpha is the weight of the foreground, 0 to 255: one for all, or one per sample from three planes
 * that are aligned with the foreground's and only read, though not declared const.
 *
 *     s = background * (255 - alpha) + foreground * alpha        result = (s + (s >> 8) + 1) >> 8
 *
 * which is s / 255, rounded down.
 *
 * Chroma covers (width + 1) / 2 by (height + 1) / 2 samples from (xPosition / 2, yPosition / 2) on: an odd position
 * moves it up and left by half a chroma sample. Nothing is clipped: the caller must keep the foreground inside the
 * background. A zero width or height changes nothing.
 */
KOR_API void KorI420AlphaBlend_C_(KorUint8* yBackground, KorSizeT yBackgroundPitch,
                                  KorUint8* uBackground, KorSizeT uBackgroundPitch,
                                  KorUint8* vBackground, KorSizeT vBackgroundPitch,
                                  const KorUint8* yForeground, KorSizeT yForegroundPitch,
                                  const KorUint8* uForeground, KorSizeT uForegroundPitch,
                                  const KorUint8* vForeground, KorSizeT vForegroundPitch,
                                  KorSizeT width, KorSizeT height, KorSizeT xPosition, KorSizeT yPosition, KorUint8 alpha);

KOR_API void KorI420AlphaArrayBlend_C_(KorUint8* yBackground, KorSizeT yBackgroundPitch,
                                       KorUint8* uBackground, KorSizeT uBackgroundPitch,
                                       KorUint8* vBackground, KorSizeT vBackgroundPitch,
                                       const KorUint8* yForeground, KorSizeT yForegroundPitch,
                                       const KorUint8* uForeground, KorSizeT uForegroundPitch,
                                       const KorUint8* vForeground, KorSizeT vForegroundPitch,
                                       KorSizeT width, KorSizeT height, KorSizeT xPosition, KorSizeT yPosition,
                                       KorUint8* yAlpha, KorSizeT yAlphaPitch,
                                       KorUint8* uAlpha, KorSizeT uAlphaPitch,
                                       KorUint8* vAlpha, KorSizeT vAlphaPitch);
/** @} */

/** @} */

KOR_EXTERN_C_END

#endif
