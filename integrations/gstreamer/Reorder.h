// Bytes of pixels in another order, for the matrices that only BGRA has.
#ifndef KOR_GSTREAMER_REORDER_H
#define KOR_GSTREAMER_REORDER_H

#include <gst/video/video.h>

#include "Kor/Utils/SysDep/KorBaseTypes.h"

namespace korgst {

using ReorderRow = void(KorUint8* to, const KorUint8* from, KorSizeT width);

// From the order of this RGB format to BGRA, and back. An opaque alpha byte is added where the source has none.
ReorderRow* ReorderToBgra(GstVideoFormat from);
ReorderRow* ReorderFromBgra(GstVideoFormat to);

}  // namespace korgst

#endif
