// korpeers [--size WxH]... [--ms N] [--json FILE] [--note TEXT] [PATTERN]: Mpix/s of every target beside other
// libraries, each in the best of many calls.
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
#include <exception>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "bench/peers/Cases.h"
#include "Kor/Video/Common/KorYuv420.h"

#define KOR_STRING_OF(x) #x
#define KOR_STRING(x) KOR_STRING_OF(x)

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

// Whether libswscale has the two formats; the call then converts between the frame's packed image and its planes. With
// odd sizes it may leave planes that have tight pitches.
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

// Mpix/s by contestant.
using Speeds = nlohmann::ordered_json;

Speeds Measure(const Case& test, Frame& frame, double seconds) {
    std::vector<Contestant> contestants = Contestants(test, frame.width, frame.height);
    double spent = 0;
    for (int round = 0; round < 5 || spent < seconds; ++round) {
        for (Contestant& contestant : contestants) {
            const double time = Seconds(contestant, frame);
            contestant.best = std::min(contestant.best, time);
            spent += time;
        }
    }
    Speeds speeds;
    for (const Contestant& contestant : contestants) {
        speeds[contestant.name] = 1e-6 * frame.width * frame.height / contestant.best;
    }
    return speeds;
}

void Print(const Case& test, const Speeds& speeds) {
    std::printf("%-32s", test.name.c_str());
    for (const auto& [name, speed] : speeds.items()) {
        std::printf("  %s %.0f (%.2f)", name.c_str(), speed.get<double>(),
                    speed.get<double>() / speeds["libyuv"].get<double>());
    }
    std::printf("\n");
    std::fflush(stdout);
}

struct Size {
    int width, height;

    std::string Label() const { return std::to_string(width) + "x" + std::to_string(height); }
};

struct Options {
    std::vector<Size> sizes;
    double seconds = 1;
    std::string json, note, pattern;
};

[[noreturn]] void Refuse(const std::string& message) {
    std::fprintf(stderr, "korpeers: %s\n", message.c_str());
    std::exit(2);
}

Options Parse(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string option = argv[i];
        if (option.rfind("--", 0) != 0) {
            options.pattern = option;
            continue;
        }
        if (i + 1 == argc) {
            Refuse(option + " needs a value");
        }
        const char* value = argv[++i];
        if (option == "--size") {
            Size size = {};
            if (std::sscanf(value, "%dx%d", &size.width, &size.height) != 2 || size.width < 2 || size.height < 2) {
                Refuse(std::string("'") + value + "': expected WIDTHxHEIGHT, for example 1280x720");
            }
            options.sizes.push_back(size);
        } else if (option == "--ms") {
            options.seconds = 1e-3 * std::atof(value);
        } else if (option == "--json") {
            options.json = value;
        } else if (option == "--note") {
            options.note = value;
        } else {
            Refuse("unknown option '" + option + "'; expected --size, --ms, --json or --note");
        }
    }
    if (options.sizes.empty()) {
        options.sizes.push_back({1280, 720});
    }
    return options;
}

#if defined(__clang__)
constexpr const char* kCompiler = "Clang " KOR_STRING(__clang_major__) "." KOR_STRING(__clang_minor__);
#else
constexpr const char* kCompiler = "GCC " KOR_STRING(__GNUC__) "." KOR_STRING(__GNUC_MINOR__);
#endif

int Run(int argc, char** argv) {
    const Options options = Parse(argc, argv);
    av_log_set_level(AV_LOG_ERROR);
    nlohmann::ordered_json results = {
        {"note", options.note}, {"compiler", kCompiler}, {"sizes", nlohmann::json::object()}};
    for (const Size& size : options.sizes) {
        std::printf("%s, Mpix/s (times as fast as libyuv)\n", size.Label().c_str());
        Frame frame(size.width, size.height);
        nlohmann::ordered_json& ofSize = results["sizes"][size.Label()];
        for (const Case& test : peers::Cases()) {
            if (test.name.find(options.pattern) != std::string::npos) {
                const Speeds speeds = Measure(test, frame, options.seconds);
                Print(test, speeds);
                ofSize[test.name] = speeds;
            }
        }
    }
    if (!options.json.empty()) {
        std::ofstream file(options.json);
        file << results.dump(1) << "\n";
        if (!file.flush()) {
            Refuse("'" + options.json + "' cannot be written");
        }
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "korpeers: %s\n", error.what());
        return 1;
    }
}
