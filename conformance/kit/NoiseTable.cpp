#include "conformance/kit/NoiseTable.h"

#include "Kor/Video/Common/KorVideoFrame.h"

namespace {

constexpr KorInt16 E(std::size_t index) {
    return static_cast<KorInt16>(kit::NoiseEntry(index));
}

}  // namespace

// The table must be an array in C, so its entries are spelled out: each list is four of the one before.
#define KOR_4(i) E(i), E((i) + 1), E((i) + 2), E((i) + 3)
#define KOR_16(i) KOR_4(i), KOR_4((i) + 4), KOR_4((i) + 8), KOR_4((i) + 12)
#define KOR_64(i) KOR_16(i), KOR_16((i) + 16), KOR_16((i) + 32), KOR_16((i) + 48)
#define KOR_256(i) KOR_64(i), KOR_64((i) + 64), KOR_64((i) + 128), KOR_64((i) + 192)
#define KOR_1024(i) KOR_256(i), KOR_256((i) + 256), KOR_256((i) + 512), KOR_256((i) + 768)
#define KOR_4096(i) KOR_1024(i), KOR_1024((i) + 1024), KOR_1024((i) + 2048), KOR_1024((i) + 3072)

const KorInt16 KorTblDitherStd4[kit::kNoiseEntries] = {KOR_4096(0), KOR_4096(4096), KOR_4096(8192), KOR_4096(12288)};
