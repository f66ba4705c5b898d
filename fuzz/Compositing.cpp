// Blends and the dither filter.
#include "fuzz/Harness.h"

KOR_FUZZ_FAMILY("KorI420Dither_C_", "KorI420AlphaBlend_C_", "KorI420AlphaArrayBlend_C_")
