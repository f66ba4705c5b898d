// Renderers, with their noise.
#include "fuzz/Harness.h"

KOR_FUZZ_FAMILY("KorI420ToRGBA_C_", "KorI420ToBGRA_C_", "KorI420ToARGB_C_", "KorI420ToABGR_C_", "KorI444ToBGRA_C_",
                "KorI444ToBGRAUsingBT709_C_", "KorI420ToBGRAUsingBT709_C_", "KorI420ToBGRAGeneral_C_",
                "KorI420To24BG_C_")
