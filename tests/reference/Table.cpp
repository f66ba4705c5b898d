#include "tests/reference/Table.h"

#include "tests/reference/Reference.h"

namespace reference {

const KorConformanceTable& Table() {
    static const KorConformanceTable table = {
        &KorPlanarUV422To420_C_,
        &KorPlanarUVDeinterlace_C_,
        &KorPlanarMirror_C_,
        &KorPlanarUVDeinterlaceMirror_C_,
        &KorPlanarRotation_C_,
        &KorPlanarUVDeinterlaceRotation_C_,
        &KorI420FlipVertical_C_,
        &KorRGBAToI420_C_,
        &KorBGRAToI420_C_,
        &KorARGBToI420_C_,
        &KorABGRToI420_C_,
        &KorBGRAToI444_C_,
        &KorBGRAToI420UsingBT709_C_,
        &KorBGRAToI444UsingBT709_C_,
        &KorBGRAToI420General_C_,
        &KorRawToI420_C_,
        &Kor24BGToI420_C_,
        &KorI420ToRGBA_C_,
        &KorI420ToBGRA_C_,
        &KorI420ToARGB_C_,
        &KorI420ToABGR_C_,
        &KorI444ToBGRA_C_,
        &KorI444ToBGRAUsingBT709_C_,
        &KorI420ToBGRAUsingBT709_C_,
        &KorI420ToBGRAGeneral_C_,
        &KorI420To24BG_C_,
        &KorYUY2ToI420_C_,
        &KorUYVYToI420_C_,
        &KorYUY2ToI420WithRotation_C_,
        &KorUYVYToI420WithRotation_C_,
        &KorI420ToYUY2_C_,
        &KorI420ToUYVY_C_,
        &KorYuv2ToI420_C_,
        &KorI420toYuv2_C_,
        &KorM420ToI420_C_,
        &KorI420Dither_C_,
        &KorI420AlphaBlend_C_,
        &KorI420AlphaArrayBlend_C_,
    };
    return table;
}

}  // namespace reference
