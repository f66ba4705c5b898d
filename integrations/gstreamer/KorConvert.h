#ifndef KOR_GSTREAMER_KORCONVERT_H
#define KOR_GSTREAMER_KORCONVERT_H

#include <gst/gst.h>

GST_ELEMENT_REGISTER_DECLARE(korconvert)

#endif
