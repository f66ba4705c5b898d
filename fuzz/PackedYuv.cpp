// Packed and semi-planar YUV, both ways.
#include "fuzz/Harness.h"

KOR_FUZZ_FAMILY("KorYUY2ToI420_C_", "KorUYVYToI420_C_", "KorYUY2ToI420WithRotation_C_", "KorUYVYToI420WithRotation_C_",
                "KorI420ToYUY2_C_", "KorI420ToUYVY_C_", "KorYuv2ToI420_C_", "KorI420toYuv2_C_", "KorM420ToI420_C_")
