#ifndef KOR_GSTREAMER_KORBLEND_H
#define KOR_GSTREAMER_KORBLEND_H

#include <gst/gst.h>

GST_ELEMENT_REGISTER_DECLARE(korblend)

#endif
