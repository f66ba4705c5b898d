#include "Kor/Video/Common/KorVideoFrame.h"

/* Noise that shows: the first sample gets 40, all others nothing. */
const KorInt16 KorTblDitherStd4[16384] = {40};
