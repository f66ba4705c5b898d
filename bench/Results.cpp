#include "bench/Results.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace bench {

namespace {

using Json = nlohmann::ordered_json;

// The compiler of this program, which also compiled the library.
std::string Compiler() {
#if defined(__clang__)
    return std::string("Clang ") + std::to_string(__clang_major__) + "." + std::to_string(__clang_minor__);
#elif defined(__GNUC__)
    return std::string("GCC ") + std::to_string(__GNUC__) + "." + std::to_string(__GNUC_MINOR__);
#else
    return "unknown";
#endif
}

// As reported by Linux; unknown elsewhere.
std::string Processor() {
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);) {
        const std::size_t colon = line.find(": ");
        if (line.rfind("model name", 0) == 0 && colon != std::string::npos) {
            return line.substr(colon + 2);
        }
    }
    return "unknown";
}

}  // namespace

void Results::Add(const Case& subject, const Figure& figure) {
    entries_.push_back({subject.family, subject.function, subject.option, subject.isBrief, figure});
}

std::optional<Figure> Results::Find(const Case& subject, const FrameSize& size) const {
    for (const Entry& entry : entries_) {
        if (entry.function == subject.function && entry.option == subject.option &&
            entry.figure.size.Label() == size.Label()) {
            return entry.figure;
        }
    }
    return std::nullopt;
}

void Results::Write(const std::string& path, const std::string& note) const {
    Json results = Json::array();
    for (const Entry& entry : entries_) {
        const Figure& figure = entry.figure;
        results.push_back({{"family", entry.family},
                           {"function", entry.function},
                           {"option", entry.option},
                           {"brief", entry.isBrief},
                           {"size", figure.size.Label()},
                           {"width", figure.size.width},
                           {"height", figure.size.height},
                           {"pitchMultiple", figure.size.pitchMultiple},
                           {"bytes", figure.bytes},
                           {"seconds", figure.seconds},
                           {"memcpySeconds", figure.memcpySeconds},
                           {"roofline", figure.Roofline()},
                           {"pixelsPerSecond", figure.PixelsPerSecond()},
                           {"spread", figure.spread},
                           {"rounds", figure.rounds}});
    }
    const Json document = {{"note", note}, {"compiler", Compiler()}, {"processor", Processor()}, {"results", results}};
    std::ofstream file(path);
    file << document.dump(1) << '\n';
    file.close();
    if (!file) {
        throw std::runtime_error(path + ": cannot be written");
    }
}

Results Results::Read(const std::string& path) {
    std::ifstream file(path);
    if (!file) {
        throw std::runtime_error(path + ": cannot be opened");
    }
    try {
        Results results;
        const Json document = Json::parse(file);
        for (const Json& entry : document.at("results")) {
            const FrameSize size = {entry.at("width"), entry.at("height"), entry.at("pitchMultiple")};
            results.entries_.push_back({entry.at("family"),
                                        entry.at("function"),
                                        entry.at("option"),
                                        entry.at("brief"),
                                        {size, entry.at("bytes"), entry.at("seconds"), entry.at("memcpySeconds"),
                                         entry.at("spread"), entry.at("rounds")}});
        }
        return results;
    } catch (const Json::exception& error) {
        throw std::runtime_error(path + ": expected a file written by korbench --json: " + error.what());
    }
}

}  // namespace bench
