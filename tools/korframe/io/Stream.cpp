#include "io/Stream.h"

#include <algorithm>

namespace korframe {

namespace {

const char* const kColourRange = "COLORRANGE=";
const char* const kChroma = "YSCSS=";

void DropField(ClipTags& tags, const std::string& name) {
    const auto isNamed = [&](const std::string& extension) { return extension.compare(0, name.size(), name) == 0; };
    auto& extensions = tags.extensions;
    extensions.erase(std::remove_if(extensions.begin(), extensions.end(), isNamed), extensions.end());
}

}  // namespace

bool IsFullRange(const ClipTags& tags) {
    const std::string full = std::string(kColourRange) + "FULL";
    return std::find(tags.extensions.begin(), tags.extensions.end(), full) != tags.extensions.end();
}

void SetLimitedRange(ClipTags& tags) {
    DropField(tags, kColourRange);
    tags.extensions.push_back(std::string(kColourRange) + "LIMITED");
}

void DropChromaField(ClipTags& tags) {
    DropField(tags, kChroma);
}

}  // namespace korframe
