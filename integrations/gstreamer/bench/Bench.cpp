// korgstbench [ROUNDS]: the elements beside those that GStreamer has for the same work, in one run, at 1920x1080.
//
// Each contestant stands in a harness and gets the same buffer over and over. Contestants take turns; the best round of
// each counts. Times of one thread are processor time, which other programs do not disturb; those of several threads
// are of the clock on the wall.
#include <gst/check/gstharness.h>
#include <gst/video/video.h>
#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

namespace {

struct Case {
    std::string title;
    std::string in, out;       // caps
    std::string ours, theirs;  // elements with their properties
};

bool onTheWall = false;

double Now() {
    timespec time;
    clock_gettime(onTheWall ? CLOCK_MONOTONIC : CLOCK_PROCESS_CPUTIME_ID, &time);
    return 1e3 * static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_nsec);
}

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

std::string Caps(const std::string& format, const std::string& colours, bool swapped = false) {
    return "video/x-raw,format=" + format + ",width=" + std::to_string(swapped ? kHeight : kWidth) +
           ",height=" + std::to_string(swapped ? kWidth : kHeight) + ",framerate=30/1" +
           (colours.empty() ? "" : ",colorimetry=" + colours);
}

class Contestant {
  public:
    Contestant(const std::string& element, const Case& test) : harness_(gst_harness_new_parse(element.c_str())) {
        gst_harness_set_sink_caps_str(harness_, test.out.c_str());
        gst_harness_set_src_caps_str(harness_, test.in.c_str());
        GstVideoInfo info;
        GstCaps* caps = gst_caps_from_string(test.in.c_str());
        gst_video_info_from_caps(&info, caps);
        gst_caps_unref(caps);
        buffer_ = gst_buffer_new_allocate(nullptr, info.size, nullptr);
        GstMapInfo map;
        gst_buffer_map(buffer_, &map, GST_MAP_WRITE);
        for (gsize i = 0; i < map.size; ++i) {
            map.data[i] = static_cast<guint8>(16 + (i * 2654435761u >> 13) % 219);
        }
        gst_buffer_unmap(buffer_, &map);
    }
    ~Contestant() {
        gst_buffer_unref(buffer_);
        gst_harness_teardown(harness_);
    }
    Contestant(const Contestant&) = delete;
    Contestant& operator=(const Contestant&) = delete;

    // Milliseconds a frame.
    double Round(int frames) {
        const double start = Now();
        for (int i = 0; i < frames; ++i) {
            GstBuffer* out = gst_harness_push_and_pull(harness_, gst_buffer_ref(buffer_));
            if (out == nullptr) {
                std::fprintf(stderr, "korgstbench: no frame came out\n");
                std::exit(1);
            }
            gst_buffer_unref(out);
        }
        return (Now() - start) / frames;
    }

  private:
    GstHarness* harness_;
    GstBuffer* buffer_;
};

// A video and one still picture over it, of half its size.
class BlendContestant {
  public:
    BlendContestant(bool ours, const char* format, double alpha) {
        video_ = gst_harness_new_with_padnames(ours ? "korblend" : "compositor", ours ? "sink" : "sink_0", "src");
        overlay_ = gst_harness_new_with_element(video_->element, ours ? "overlay" : "sink_1", nullptr);
        if (ours) {
            g_object_set(video_->element, "x", 400, "y", 200, "alpha", alpha, nullptr);
        } else {
            g_object_set(video_->element, "max-threads", 1, nullptr);
            GstPad* pad = gst_element_get_static_pad(video_->element, "sink_1");
            g_object_set(pad, "xpos", 400, "ypos", 200, "alpha", alpha, "repeat-after-eos", TRUE, nullptr);
            gst_object_unref(pad);
        }
        gst_harness_set_sink_caps_str(video_, Caps("I420", "bt709").c_str());
        const std::string small = std::string("video/x-raw,format=") + format + ",width=960,height=540,framerate=30/1";
        gst_harness_set_src_caps_str(overlay_, small.c_str());
        gst_harness_set_src_caps_str(video_, Caps("I420", "bt709").c_str());
        GstBuffer* still =
            gst_buffer_new_allocate(nullptr, 960 * 540 * (std::string(format) == "I420" ? 3 : 8) / 2, nullptr);
        gst_buffer_memset(still, 0, 100, gst_buffer_get_size(still));
        GST_BUFFER_PTS(still) = 0;
        GST_BUFFER_DURATION(still) = kFrameTime;
        gst_harness_push(overlay_, still);
        gst_harness_push_event(overlay_, gst_event_new_eos());
        frame_ = gst_buffer_new_allocate(nullptr, kWidth * kHeight * 3 / 2, nullptr);
        gst_buffer_memset(frame_, 0, 50, gst_buffer_get_size(frame_));
    }
    ~BlendContestant() {
        gst_buffer_unref(frame_);
        gst_harness_teardown(overlay_);
        gst_harness_teardown(video_);
    }
    BlendContestant(const BlendContestant&) = delete;
    BlendContestant& operator=(const BlendContestant&) = delete;

    double Round(int frames) {
        const double start = Now();
        for (int i = 0; i < frames; ++i) {
            GstBuffer* in = gst_buffer_copy(frame_);  // another buffer around the same memory
            GST_BUFFER_PTS(in) = count_++ * kFrameTime;
            GST_BUFFER_DURATION(in) = kFrameTime;
            GstBuffer* out = gst_harness_push_and_pull(video_, in);
            if (out == nullptr) {
                std::fprintf(stderr, "korgstbench: no frame came out\n");
                std::exit(1);
            }
            gst_buffer_unref(out);
        }
        return (Now() - start) / frames;
    }

  private:
    static constexpr GstClockTime kFrameTime = GST_SECOND / 30;
    GstHarness* video_;
    GstHarness* overlay_;
    GstBuffer* frame_;
    GstClockTime count_ = 0;
};

struct BlendCase {
    const char* title;
    const char* format;
    double alpha;
};

constexpr BlendCase kBlendCases[] = {{"I420, alpha 0.5", "I420", 0.5},
                                     {"I420, alpha 1", "I420", 1},
                                     {"BGRA, alpha 1", "BGRA", 1},
                                     {"BGRA, alpha 0.5", "BGRA", 0.5}};

std::vector<Case> ConvertCases(unsigned threads) {
    const std::string n = " n-threads=" + std::to_string(threads);
    std::vector<Case> cases;
    const auto add = [&](const char* from, const char* to, const std::string& in, const std::string& out) {
        const std::string colours = in.empty() ? out : in;
        cases.push_back({std::string(from) + " to " + to + (colours.empty() ? "" : ", " + (in == "sRGB" ? out : in)),
                         Caps(from, in), Caps(to, out), "korconvert" + n, "videoconvert" + n});
    };
    for (const char* matrix : {"bt601", "bt709"}) {
        for (const char* rgb : {"BGRA", "RGBA", "ARGB", "ABGR", "RGB", "BGR"}) {
            add(rgb, "I420", "sRGB", matrix);
        }
        add("BGRA", "Y444", "sRGB", matrix);
        for (const char* rgb : {"BGRA", "RGBA", "ARGB", "ABGR", "BGR"}) {
            add("I420", rgb, matrix, "sRGB");
        }
        add("Y444", "BGRA", matrix, "sRGB");
    }
    for (const char* yuv : {"YUY2", "UYVY", "NV12", "NV21", "Y42B"}) {
        add(yuv, "I420", "", "");
    }
    add("I420", "YUY2", "", "");
    add("I420", "UYVY", "", "");
    return cases;
}

std::vector<Case> FlipCases() {
    std::vector<Case> cases;
    for (const char* direction : {"90r", "180", "90l", "horiz", "vert", "ul-lr", "ur-ll"}) {
        const std::string property = std::string(" video-direction=") + direction;
        const bool swaps = std::strchr("9u", direction[0]) != nullptr;
        cases.push_back({std::string("I420, ") + direction, Caps("I420", ""), Caps("I420", "", swaps),
                         "korconvert" + property, "videoflip" + property});
    }
    return cases;
}

void PrintRow(const std::string& title, double ours, double theirs) {
    std::printf("  %-24s %8.3f %8.3f %8.2f\n", title.c_str(), ours, theirs, theirs / ours);
    std::fflush(stdout);
}

void PrintMean(double logarithms, std::size_t count) {
    std::printf("  %-24s %26.2f\n", "geometric mean", std::exp(logarithms / static_cast<double>(count)));
}

// The logarithm of the ratio of the best rounds.
template <typename Kind>
double Race(const std::string& title, Kind& ours, Kind& theirs, int rounds) {
    double best[2] = {1e9, 1e9};
    for (int round = 0; round < rounds; ++round) {
        best[0] = std::min(best[0], ours.Round(4));
        best[1] = std::min(best[1], theirs.Round(4));
    }
    PrintRow(title, best[0], best[1]);
    return std::log(best[1] / best[0]);
}

void Compare(const std::vector<Case>& cases, int rounds) {
    double logarithms = 0;
    for (const Case& test : cases) {
        Contestant ours(test.ours, test);
        Contestant theirs(test.theirs, test);
        logarithms += Race(test.title, ours, theirs, rounds);
    }
    PrintMean(logarithms, cases.size());
}

void CompareBlends(int rounds) {
    double logarithms = 0;
    for (const BlendCase& test : kBlendCases) {
        BlendContestant ours(true, test.format, test.alpha);
        BlendContestant theirs(false, test.format, test.alpha);
        logarithms += Race(test.title, ours, theirs, rounds);
    }
    PrintMean(logarithms, std::size(kBlendCases));
}

void Header(const char* title) {
    std::printf("\n%s\n  %-24s %8s %8s %8s\n", title, "", "ours/ms", "theirs", "ratio");
}

}  // namespace

int main(int argc, char** argv) {
    gst_init(&argc, &argv);
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 12;
    const unsigned processors = g_get_num_processors();
    Header("korconvert beside videoconvert, one thread each");
    Compare(ConvertCases(1), rounds);
    if (processors > 1) {
        const std::string title = "korconvert beside videoconvert, " + std::to_string(processors) + " threads each";
        onTheWall = true;
        Header(title.c_str());
        Compare(ConvertCases(processors), rounds);
        onTheWall = false;
    }
    Header("korconvert beside videoflip, one thread each");
    Compare(FlipCases(), rounds);
    Header("korblend beside compositor, one thread each, a picture of 960x540");
    CompareBlends(rounds);
    return 0;
}
