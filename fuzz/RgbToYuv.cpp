// RGB captures.
#include "fuzz/Harness.h"

KOR_FUZZ_FAMILY("KorRGBAToI420_C_", "KorBGRAToI420_C_", "KorARGBToI420_C_", "KorABGRToI420_C_", "KorBGRAToI444_C_",
                "KorBGRAToI420UsingBT709_C_", "KorBGRAToI444UsingBT709_C_", "KorBGRAToI420General_C_",
                "KorRawToI420_C_", "Kor24BGToI420_C_")
