// korpeers [--size WxH] [--ms N] [PATTERN]: Mpix/s of every target beside other libraries, each in the best of many
// calls.
//
// The contestants of a case take turns call by call, so that what slows the machine for a while slows all of them.
extern "C" {
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "bench/peers/Cases.h"
#include "Kor/Video/Common/KorYuv420.h"

namespace {

using peers::Call;
using peers::Case;
using peers::Frame;

struct Contestant {
    std::string name;
    // Null: chosen before every call is not needed.
    const char* target;
    Call call;
    double best;
};

double Seconds(const Contestant& contestant, Frame& frame) {
    if (contestant.target != nullptr) {
        KorYuv420SelectTarget(contestant.target);
    }
    const auto begin = std::chrono::steady_clock::now();
    contestant.call(frame);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

// Whether libswscale has the two formats; the call then converts between the frame's packed image and its planes. With odd sizes
// it may leave planes that have tight pitches.
Call Swscale(const Case& test, int width, int height) {
    if (test.swscaleFrom.empty() || width % 2 != 0 || height % 2 != 0) {
        return nullptr;
    }
    const AVPixelFormat from = av_get_pix_fmt(test.swscaleFrom.c_str());
    const AVPixelFormat to = av_get_pix_fmt(test.swscaleTo.c_str());
    SwsContext* context =
        sws_getContext(width, height, from, width, height, to, SWS_BILINEAR, nullptr, nullptr, nullptr);
    if (context == nullptr) {
        return nullptr;
    }
    return [context, from, to](Frame& f) {
        const auto pitches = [&f](AVPixelFormat format, int(&pitch)[4]) {
            const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(format);
            const int chroma = f.width >> description->log2_chroma_w;
            const bool isPlanar = (description->flags & AV_PIX_FMT_FLAG_PLANAR) != 0;
            pitch[0] = isPlanar ? f.width : f.width * av_get_padded_bits_per_pixel(description) / 8;
            pitch[1] = format == AV_PIX_FMT_NV12 ? f.width : chroma;
            pitch[2] = chroma;
            pitch[3] = 0;
            return isPlanar;
        };
        int pitchFrom[4], pitchTo[4];
        const bool isFromPlanes = pitches(from, pitchFrom);
        const bool isToPlanes = pitches(to, pitchTo);
        const uint8_t* const source[4] = {isFromPlanes ? f.yIn : f.packedIn, f.uIn, f.vIn, nullptr};
        uint8_t* const destination[4] = {isToPlanes ? f.yOut : f.packedOut, f.uOut, f.vOut, nullptr};
        sws_scale(context, source, pitchFrom, 0, f.height, destination, pitchTo);
    };
}

std::vector<Contestant> Contestants(const Case& test, int width, int height) {
    std::vector<Contestant> contestants;
    const char* names[16];
    const KorSizeT count = std::min<KorSizeT>(KorYuv420Targets(names, 16), 16);
    for (KorSizeT i = count; i-- > 0;) {
        if (KorYuv420SelectTarget(names[i])) {
            contestants.push_back({names[i], names[i], test.kor, 1e9});
        }
    }
    contestants.push_back({"libyuv", nullptr, test.libyuv, 1e9});
    if (Call call = Swscale(test, width, height)) {
        contestants.push_back({"swscale", nullptr, call, 1e9});
    }
    const size_t bytes = static_cast<size_t>(test.bytes / 2 * width * height);
    contestants.push_back({"memcpy", nullptr, [bytes](Frame& f) { std::memcpy(f.packedOut, f.packedIn, bytes); }, 1e9});
    return contestants;
}

void Measure(const Case& test, Frame& frame, double seconds) {
    std::vector<Contestant> contestants = Contestants(test, frame.width, frame.height);
    double spent = 0;
    for (int round = 0; round < 5 || spent < seconds; ++round) {
        for (Contestant& contestant : contestants) {
            const double time = Seconds(contestant, frame);
            contestant.best = std::min(contestant.best, time);
            spent += time;
        }
    }
    const double pixels = 1e-6 * frame.width * frame.height;
    double peer = 0;
    for (const Contestant& contestant : contestants) {
        peer = contestant.name == "libyuv" ? contestant.best : peer;
    }
    std::printf("%-32s", test.name.c_str());
    for (const Contestant& contestant : contestants) {
        std::printf("  %s %.0f (%.2f)", contestant.name.c_str(), pixels / contestant.best, peer / contestant.best);
    }
    std::printf("\n");
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
    int width = 1280, height = 720;
    double seconds = 1;
    const char* pattern = "";
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--size") == 0 && i + 1 < argc) {
            if (std::sscanf(argv[++i], "%dx%d", &width, &height) != 2 || width < 2 || height < 2) {
                std::fprintf(stderr, "korpeers: '%s': expected WIDTHxHEIGHT, for example 1280x720\n", argv[i]);
                return 2;
            }
        } else if (std::strcmp(argv[i], "--ms") == 0 && i + 1 < argc) {
            seconds = 1e-3 * std::atof(argv[++i]);
        } else {
            pattern = argv[i];
        }
    }
    av_log_set_level(AV_LOG_ERROR);
    std::printf("%d by %d, Mpix/s (times as fast as libyuv)\n", width, height);
    Frame frame(width, height);
    for (const Case& test : peers::Cases()) {
        if (test.name.find(pattern) != std::string::npos) {
            Measure(test, frame, seconds);
        }
    }
    return 0;
}
