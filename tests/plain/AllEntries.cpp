// Every sample value with every 16-bit entry that a noise table can hold, at every level. A table holds a quarter of
// the entries, so there are four of these programs; KOR_FIRST_ENTRY is the smallest entry of this one.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "Kor/Os/KorRandom.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"

#define KOR_4(i) KOR_FIRST_ENTRY + (i), KOR_FIRST_ENTRY + (i) + 1, KOR_FIRST_ENTRY + (i) + 2, KOR_FIRST_ENTRY + (i) + 3
#define KOR_16(i) KOR_4(i), KOR_4((i) + 4), KOR_4((i) + 8), KOR_4((i) + 12)
#define KOR_64(i) KOR_16(i), KOR_16((i) + 16), KOR_16((i) + 32), KOR_16((i) + 48)
#define KOR_256(i) KOR_64(i), KOR_64((i) + 64), KOR_64((i) + 128), KOR_64((i) + 192)
#define KOR_1024(i) KOR_256(i), KOR_256((i) + 256), KOR_256((i) + 512), KOR_256((i) + 768)
#define KOR_4096(i) KOR_1024(i), KOR_1024((i) + 1024), KOR_1024((i) + 2048), KOR_1024((i) + 3072)

constexpr KorSizeT kEntries = 16384;

const KorInt16 KorTblDitherStd4[kEntries] = {KOR_4096(0), KOR_4096(4096), KOR_4096(8192), KOR_4096(12288)};

// Every start is 0, except for V of the packed formats: it starts where a row of U ends, so that together they walk
// through the whole table.
KorBool KorRandomGetBytes(char* buffer, KorSizeT count) {
    static unsigned draws = 0;
    const KorSizeT start = draws++ % 3 == 2 ? kEntries / 2 : 0;
    if (count != sizeof start) {
        return 0;
    }
    std::copy_n(reinterpret_cast<const char*>(&start), sizeof start, buffer);
    return 1;
}

namespace {

using Bytes = std::vector<KorUint8>;

// The sample plus the entry divided by a power of two, rounded half up and clamped to a byte.
int NoisySample(int sample, int entry, int divisor) {
    const int scaled = entry + divisor / 2;
    const int quotient = scaled >= 0 ? scaled / divisor : -((divisor - 1 - scaled) / divisor);
    return std::clamp(sample + quotient, 0, 255);
}

unsigned long long sums = 0;

// Checks samples against the entries from `first` on.
void Expect(const char* what, const KorUint8* found, KorSizeT step, KorSizeT count, KorSizeT first, int sample,
            int divisor) {
    for (KorSizeT i = 0; i < count; ++i) {
        const int entry = KOR_FIRST_ENTRY + static_cast<int>(first + i);
        if (found[step * i] != NoisySample(sample, entry, divisor)) {
            std::fprintf(stderr, "%s: sample %d with entry %d divided by %d gives %d, not %d\n", what, sample, entry,
                         divisor, found[step * i], NoisySample(sample, entry, divisor));
            std::exit(EXIT_FAILURE);
        }
    }
    sums += count;
}

// Planes of one value, as wide as the table, whose first rows meet every entry once: U the lower half, V the upper.
struct Picture {
    Bytes y = Bytes(2 * kEntries), u = Bytes(kEntries / 2), v = Bytes(kEntries / 2);

    void SetAll(int sample) {
        for (Bytes* plane : {&y, &u, &v}) {
            std::fill(plane->begin(), plane->end(), static_cast<KorUint8>(sample));
        }
    }
};

void TryFilter(const Picture& in, int sample, unsigned level) {
    static Picture out;
    KorI420Dither_C_(in.y.data(), kEntries, in.u.data(), kEntries / 2, in.v.data(), kEntries / 2, out.y.data(),
                     kEntries, out.u.data(), kEntries / 2, out.v.data(), kEntries / 2, kEntries, 2,
                     static_cast<KorVideoFrameDitherLevel>(level), 0);
    Expect("filter, luma", out.y.data(), 1, kEntries, 0, sample, 8 >> level);
    Expect("filter, U", out.u.data(), 1, kEntries / 2, 0, sample, 16 >> level);
    Expect("filter, V", out.v.data(), 1, kEntries / 2, kEntries / 2, sample, 16 >> level);
}

// Packing only moves samples, so it exposes the noise of the conversions.
void TryConverter(const Picture& in, int sample, unsigned level) {
    static Bytes x(4 * kEntries);
    KorI420ToYUY2_C_(in.y.data(), kEntries, in.u.data(), kEntries / 2, in.v.data(), kEntries / 2, x.data(),
                     2 * kEntries, kEntries, 2, static_cast<KorVideoFrameDitherLevel>(level));
    Expect("converter, luma", x.data(), 2, kEntries, 0, sample, 8 >> level);
    Expect("converter, U", x.data() + 1, 4, kEntries / 2, 0, sample, 16 >> level);
    Expect("converter, V", x.data() + 3, 4, kEntries / 2, kEntries / 2, sample, 16 >> level);
}

}  // namespace

int main() {
    Picture in;
    for (int sample = 0; sample < 256; ++sample) {
        in.SetAll(sample);
        for (unsigned level = 0; level < 4; ++level) {
            TryFilter(in, sample, level);
            if (level != KOR_VIDEOFRAMEDITHERLEVEL_Off) {
                TryConverter(in, sample, level);
            }
        }
    }
    std::printf("%llu sums, entries %d to %d\n", sums, KOR_FIRST_ENTRY,
                KOR_FIRST_ENTRY + static_cast<int>(kEntries) - 1);
    return EXIT_SUCCESS;
}
