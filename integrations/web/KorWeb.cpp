// What the page needs besides the 38 functions: their planes, the digests, the test card, and random bytes from a seed,
// so that a picture on the page can be made again, byte for byte, by a native program.
#include <cstdint>
#include <cstring>
#include <vector>

#include "conformance/core/Catalogue.h"
#include "conformance/core/ScriptedRandom.h"
#include "conformance/digest/Digest.h"
#include "image/TestCard.h"
#include "Kor/Os/KorRandom.h"
#include "Kor/Video/Common/KorYuv420.h"

namespace {

// The functions without suffix: in a module without vector forms these are the portable ones.
const KorConformanceTable kFunctions = {
#define KOR_FUNCTION(name, shape, family, frames) &::name,
#include "Kor/Video/Common/KorYuv420Functions_.inc"
};

// A plane as the page reads it from memory.
struct WebPlane {
    const char* name;
    std::uint32_t access;  // 0 read, 1 written, 2 both
    std::uint32_t rowBytes;
    std::uint32_t rows;
    std::uint32_t pitch;
    std::uint32_t spareColumns;
    std::uint32_t spareRows;
    std::uint32_t margin;
    std::uint32_t drifts;
};

std::vector<WebPlane> planes;
korframe::Frame card;

std::uint32_t Word(std::size_t value) {
    return static_cast<std::uint32_t>(value);
}

}  // namespace

// A part of the program that JavaScript provides.
#if defined(__EMSCRIPTEN__)
#define KOR_IMPORT(name) __attribute__((import_module("kor"), import_name(name)))
#define KOR_EXPORT __attribute__((used, visibility("default")))
#else
#define KOR_IMPORT(name)
#define KOR_EXPORT __attribute__((visibility("default")))
#endif

extern "C" {

#if defined(__EMSCRIPTEN__)
// How many functions are done; and a digest, in two halves, because numbers of JavaScript have 53 bits.
KOR_IMPORT("progress") void KorWebTellProgress(std::uint32_t functions);
KOR_IMPORT("digest")
void KorWebTellDigest(const char* function, const char* option, std::uint32_t high, std::uint32_t low);

KOR_EXPORT void KorWebMakeDigests() {
    const kit::Entry* current = nullptr;
    std::uint32_t begun = 0;
    const auto call = [&](const kit::Entry& entry, const kit::PlaneView* views, const kit::Case& options) {
        if (current != &entry) {
            current = &entry;
            KorWebTellProgress(begun++);
        }
        kit::Call(entry.of(kFunctions), views, options);
    };
    for (const kit::Digest& digest : kit::MakeDigests(call)) {
        KorWebTellDigest(digest.function.c_str(), digest.option.c_str(), Word(digest.value >> 32),
                         Word(digest.value & 0xffffffff));
    }
}
#endif

// Draws from here on follow from the seed.
KOR_EXPORT void KorWebServeSeed(std::uint32_t seed) {
    kit::ScriptedRandom::ServeSeed(seed);
}

// The planes of a function, by its place in the list, for a call with these arguments. Returns how many there are.
KOR_EXPORT std::uint32_t KorWebLayOut(std::uint32_t function, std::uint32_t width, std::uint32_t height,
                                      std::uint32_t flip, std::uint32_t rotationDegree, std::uint32_t xPosition,
                                      std::uint32_t yPosition) {
    kit::Case options;
    options.width = width;
    options.height = height;
    options.flip = flip != 0;
    options.rotationDegree = rotationDegree;
    options.xPosition = xPosition;
    options.yPosition = yPosition;
    const kit::Layout layout = kit::LayOut(kit::Catalogue()[function], options);
    planes.clear();
    for (std::size_t i = 0; i < layout.count; ++i) {
        const kit::PlaneUse& use = layout.planes[i];
        const kit::PlaneShape& shape = use.shape;
        planes.push_back({use.name, Word(static_cast<std::size_t>(use.access)), Word(shape.rowBytes), Word(shape.rows),
                          Word(shape.pitch), Word(shape.spareColumns), Word(shape.spareRows), Word(shape.margin),
                          shape.drifts});
    }
    return Word(planes.size());
}

KOR_EXPORT const WebPlane* KorWebPlanes() {
    return planes.data();
}

// The tool's test card, as RGBA with a tight pitch; valid until the next call.
KOR_EXPORT const std::uint8_t* KorWebTestCard(std::uint32_t width, std::uint32_t height) {
    card = korframe::DrawTestCard(width, height);
    return card.Data();
}

KOR_EXPORT KorBool KorRandomGetBytes(char* buffer, KorSizeT count) {
    return kit::ScriptedRandom::Draw(buffer, count) ? 1 : 0;
}

}  // extern "C"
