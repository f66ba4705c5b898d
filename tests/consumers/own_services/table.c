#include "Kor/Video/Common/KorVideoFrame.h"

/* Noise that shows: the first sample gets 40 more, all others nothing. */
const KorInt16 KorTblDitherStd4[16384] = {40};
