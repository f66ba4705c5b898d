#include <gst/gst.h>

#include "KorBlend.h"
#include "KorConvert.h"

static gboolean RegisterElements(GstPlugin* plugin) {
    return GST_ELEMENT_REGISTER(korconvert, plugin) && GST_ELEMENT_REGISTER(korblend, plugin);
}

GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, kor, "Video conversions of the Kor library, exact to the bit",
                  RegisterElements, KOR_GSTREAMER_VERSION, KOR_GSTREAMER_LICENSE, "Kor", "https://kor.invalid/")
