#include "io/Stream.h"

#include <algorithm>

namespace korframe {

namespace {

const char* const kColourRange = "COLORRANGE=";
const char* const kChroma = "YSCSS=";
const char* const kMatrix = "KORMATRIX=";

// What follows the name of a field; nothing if there is no such field.
std::optional<std::string> ValueOf(const ClipTags& tags, const std::string& name) {
    for (const std::string& extension : tags.extensions) {
        if (extension.compare(0, name.size(), name) == 0) {
            return extension.substr(name.size());
        }
    }
    return std::nullopt;
}

void DropField(ClipTags& tags, const std::string& name) {
    const auto isNamed = [&](const std::string& extension) { return extension.compare(0, name.size(), name) == 0; };
    auto& extensions = tags.extensions;
    extensions.erase(std::remove_if(extensions.begin(), extensions.end(), isNamed), extensions.end());
}

}  // namespace

bool IsFullRange(const ClipTags& tags) {
    return ValueOf(tags, kColourRange) == "FULL";
}

bool IsRangeKnown(const ClipTags& tags) {
    return IsFullRange(tags) || ValueOf(tags, kColourRange) == "LIMITED";
}

void SetRange(ClipTags& tags, bool full) {
    DropField(tags, kColourRange);
    tags.extensions.push_back(std::string(kColourRange) + (full ? "FULL" : "LIMITED"));
}

std::string MatrixOf(const ClipTags& tags) {
    const std::string name = ValueOf(tags, kMatrix).value_or("");
    return name == "601" || name == "709" ? name : "";
}

void SetMatrix(ClipTags& tags, const std::string& name) {
    DropField(tags, kMatrix);
    if (!name.empty()) {
        tags.extensions.push_back(kMatrix + name);
    }
}

void DropChromaField(ClipTags& tags) {
    DropField(tags, kChroma);
}

}  // namespace korframe
