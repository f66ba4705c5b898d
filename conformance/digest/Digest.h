// Digests of everything that the functions write, over a fixed set of inputs, and the manifest that they are held to.
//
// A digest is FNV-1a of 64 bits over, case by case, every byte of every plane after the call (with its padding and what
// lies around it, sources included) and the sizes of the random draws. Inputs and draws follow from fixed seeds in
// integer arithmetic, so the digests are the same from every compiler and on every machine. They hold for the noise
// table of the platform target.
#ifndef KOR_CONFORMANCE_DIGEST_DIGEST_H
#define KOR_CONFORMANCE_DIGEST_DIGEST_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "conformance/core/Catalogue.h"
#include "conformance/KorConformance.h"

namespace kit {

struct Digest {
    std::string function;
    std::string option;  // as NameOption tells it
    std::uint64_t value = 0;
};

// All digests of a table without null pointers, in the order of the public header. The program's KorRandomGetBytes has
// to hand its draws to ScriptedRandom::Draw meanwhile; throws std::logic_error if it does not.
std::vector<Digest> MakeDigests(const KorConformanceTable& table);

// The same for functions that are called in another way, such as through another language.
using Caller = std::function<void(const Entry&, const PlaneView* planes, const Case&)>;
std::vector<Digest> MakeDigests(const Caller& call);

// The manifest as text: a comment, then one line "function option digest" each.
std::string WriteManifest(const std::vector<Digest>& digests);
// Throws std::runtime_error with the number of the first line that is none.
std::vector<Digest> ReadManifest(const std::string& text);

// One line for each digest that differs, is missing, or is not expected. Empty when all agree.
std::vector<std::string> CompareDigests(const std::vector<Digest>& expected, const std::vector<Digest>& found);

// How many functions the digests belong to.
std::size_t CountFunctions(const std::vector<Digest>& digests);

}  // namespace kit

#endif
