// A program with its own build of the library and services of its own, which exports all of them, loads the plugin.
// Each has to use its own: the program's random bytes are asked for by the program's calls alone, and the plugin's
// noise is not the program's, which is silence.
#include <gst/check/gstharness.h>
#include <gst/video/video.h>

#include <cstdio>
#include <cstring>

#include "Kor/Os/KorRandom.h"
#include "Kor/Video/Common/KorYuv420.h"

static int drawn = 0;

extern "C" {
KOR_API KorBool KorRandomGetBytes(char* bytes, KorSizeT count) {
    ++drawn;
    std::memset(bytes, 0, count);
    return 1;
}
KOR_API extern const KorInt16 KorTblDitherStd4[16384];
const KorInt16 KorTblDitherStd4[16384] = {};
}

static bool Check(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "host: %s\n", what);
    }
    return holds;
}

static constexpr gsize kWidth = 64;
static constexpr gsize kHeight = 48;

// Whether a grey picture that the plugin has dithered is grey.
static bool PluginIsSilent() {
    GstHarness* harness = gst_harness_new_parse("korconvert dither=2");
    gst_harness_set_sink_caps_str(harness, "video/x-raw,format=YUY2,width=64,height=48,framerate=1/1");
    gst_harness_set_src_caps_str(harness, "video/x-raw,format=I420,width=64,height=48,framerate=1/1");
    GstBuffer* in = gst_buffer_new_allocate(nullptr, kWidth * kHeight * 3 / 2, nullptr);
    gst_buffer_memset(in, 0, 128, kWidth * kHeight * 3 / 2);
    GstBuffer* out = gst_harness_push_and_pull(harness, in);
    GstMapInfo map;
    gst_buffer_map(out, &map, GST_MAP_READ);
    bool grey = true;
    for (gsize i = 0; i < map.size; ++i) {
        grey = grey && map.data[i] == 128;
    }
    gst_buffer_unmap(out, &map);
    gst_buffer_unref(out);
    gst_harness_teardown(harness);
    return grey;
}

// The same with the program's own library.
static bool HostIsSilent() {
    static KorUint8 planes[kWidth * kHeight * 3 / 2];
    static KorUint8 packed[kWidth * kHeight * 2];
    std::memset(planes, 128, sizeof planes);
    KorUint8* u = planes + kWidth * kHeight;
    KorI420ToYUY2(planes, kWidth, u, kWidth / 2, u + kWidth * kHeight / 4, kWidth / 2, packed, 2 * kWidth, kWidth,
                  kHeight, KOR_VIDEOFRAMEDITHERLEVEL_2);
    for (const KorUint8 byte : packed) {
        if (byte != 128) {
            return false;
        }
    }
    return true;
}

int main(int argc, char** argv) {
    gst_init(&argc, &argv);
    // Selecting a target here must not select one there, and the other way round.
    bool good = Check(KorYuv420SelectTarget("portable") != 0, "the program cannot select a target");
    good = Check(!PluginIsSilent(), "the plugin uses the program's noise") && good;
    good = Check(drawn == 0, "the plugin draws the program's random bytes") && good;
    good = Check(HostIsSilent(), "the program uses the plugin's noise") && good;
    good = Check(drawn == 3, "the program does not draw its own random bytes") && good;
    good = Check(std::strcmp(KorYuv420Target(), "portable") == 0, "the program's target has changed") && good;
    return good ? 0 : 1;
}
