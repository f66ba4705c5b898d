// Bytes in another order: pairs taken apart, vectors reversed, tiles transposed.
#ifndef KOR_VIDEO_COMMON_VECTOR_REORDER_H
#define KOR_VIDEO_COMMON_VECTOR_REORDER_H

#include "Kor/Video/Common/Vector/Ops.h"

namespace kor {
namespace KOR_TARGET_NAMESPACE {
namespace {

enum class Order {
    Forwards,
    Backwards,
};

// Places of bytes in a table of `size`: the even ones of a range and then the odd ones, or every one, in either order.
template <KorUint size>
struct PlaceTable {
    alignas(size) KorUint8 places[size] = {};

    // Place k is first + k * step.
    static constexpr PlaceTable Run(KorUint first, KorInt step) {
        PlaceTable table;
        for (KorUint k = 0; k < size; ++k) {
            table.places[k] = static_cast<KorUint8>(first + k * static_cast<KorUint>(step));
        }
        return table;
    }
    // The first half of this table, then the first half of another.
    constexpr PlaceTable Then(const PlaceTable& other) const {
        PlaceTable table;
        for (KorUint k = 0; k < size; ++k) {
            table.places[k] = k < size / 2 ? places[k] : other.places[k - size / 2];
        }
        return table;
    }
};

// The first and the second bytes of the pairs in two vectors that follow each other in memory.
template <Order order>
KOR_INLINE inline void SplitPairs(V8 a, V8 b, V8& first, V8& second) {
    constexpr bool forwards = order == Order::Forwards;
    const D8 d;
#if defined(KOR_VNNI)
    static constexpr PlaceTable<64> kEven = forwards ? PlaceTable<64>::Run(0, 2) : PlaceTable<64>::Run(126, -2);
    static constexpr PlaceTable<64> kOdd = forwards ? PlaceTable<64>::Run(1, 2) : PlaceTable<64>::Run(127, -2);
    first = V8{_mm512_permutex2var_epi8(a.raw, hn::Load(d, kEven.places).raw, b.raw)};
    second = V8{_mm512_permutex2var_epi8(a.raw, hn::Load(d, kOdd.places).raw, b.raw)};
#else
    static constexpr PlaceTable<16> kEven = forwards ? PlaceTable<16>::Run(0, 2) : PlaceTable<16>::Run(14, -2);
    static constexpr PlaceTable<16> kOdd = forwards ? PlaceTable<16>::Run(1, 2) : PlaceTable<16>::Run(15, -2);
    static constexpr PlaceTable<16> kEvenThenOdd = kEven.Then(kOdd);
    // Halves of blocks: the first bytes of eight pairs, and the second ones.
    const hn::ScalableTag<uint64_t> d64;
    const V8 places = hn::LoadDup128(d, kEvenThenOdd.places);
    const auto halvesA = hn::BitCast(d64, hn::TableLookupBytes(a, places));
    const auto halvesB = hn::BitCast(d64, hn::TableLookupBytes(b, places));
    const auto ordered = [](auto x) KOR_INLINE {
#if HWY_TARGET == HWY_AVX2
        return V8{forwards ? _mm256_permute4x64_epi64(x.raw, 0xd8) : _mm256_permute4x64_epi64(x.raw, 0x72)};
#else
        return hn::BitCast(D8(), x);
#endif
    };
    first = ordered(forwards ? hn::InterleaveLower(d64, halvesA, halvesB) : hn::InterleaveLower(d64, halvesB, halvesA));
    second = ordered(forwards ? hn::InterleaveUpper(d64, halvesA, halvesB) : hn::InterleaveUpper(d64, halvesB, halvesA));
#endif
}

// The bytes of a vector in reverse order.
KOR_INLINE inline V8 Reversed(V8 x) {
    const D8 d;
#if defined(KOR_VNNI)
    static constexpr PlaceTable<64> kBackwards = PlaceTable<64>::Run(63, -1);
    return V8{_mm512_permutexvar_epi8(hn::Load(d, kBackwards.places).raw, x.raw)};
#else
    static constexpr PlaceTable<16> kBackwards = PlaceTable<16>::Run(15, -1);
    return hn::ReverseBlocks(d, hn::TableLookupBytes(x, hn::LoadDup128(d, kBackwards.places)));
#endif
}

// Transposition works on tiles of 16 bytes by as many rows as a vector has bytes. Vector r holds 16 bytes of the rows r, r + 16,
// and so on, a row in every 128 bits.
constexpr KorSizeT kTileBytes = 16;

struct Tile {
    V8 rows[kTileBytes];

    KOR_INLINE inline explicit Tile(SourceRows src) {
        for (KorSizeT r = 0; r < kTileBytes; ++r) {
            rows[r] = LoadBlocks(src.Row(r), static_cast<KorDistanceT>(kTileBytes) * src.pitch);
        }
    }

    // One step of a perfect shuffle of all bytes of 16 rows. Four of them make columns of the rows; after three, even and odd
    // rows still make columns of their own, in the lower and the upper half of every block.
    KOR_INLINE inline void InterleaveHalves() {
        const D8 d;
        V8 to[kTileBytes];
        for (KorSizeT r = 0; r < kTileBytes / 2; ++r) {
            to[2 * r] = hn::InterleaveLower(d, rows[r], rows[r + kTileBytes / 2]);
            to[2 * r + 1] = hn::InterleaveUpper(d, rows[r], rows[r + kTileBytes / 2]);
        }
        for (KorSizeT r = 0; r < kTileBytes; ++r) {
            rows[r] = to[r];
        }
    }

    KOR_INLINE inline void Transpose() {
        InterleaveHalves();
        InterleaveHalves();
        InterleaveHalves();
        InterleaveHalves();
    }

  private:
    // Blocks of 128 bits that lie a distance apart.
    static KOR_INLINE inline V8 LoadBlocks(const KorUint8* x, KorDistanceT distance) {
        const hn::Full128<KorUint8> block;
#if HWY_TARGET == HWY_AVX3
        const auto blocks = [&](KorDistanceT i) KOR_INLINE { return hn::LoadU(block, x + i * distance).raw; };
        __m512i all = _mm512_castsi128_si512(blocks(0));
        all = _mm512_inserti32x4(all, blocks(1), 1);
        all = _mm512_inserti32x4(all, blocks(2), 2);
        return V8{_mm512_inserti32x4(all, blocks(3), 3)};
#elif HWY_TARGET == HWY_AVX2
        return hn::Combine(D8(), hn::LoadU(block, x + distance), hn::LoadU(block, x));
#else
        static_cast<void>(distance);
        return hn::LoadU(block, x);
#endif
    }
};

// Where a plane that is rotated by a quarter keeps its samples: source column i becomes a row, which begins with the source's
// last row at 90 degrees and with its first at 270.
struct TurnedPlane {
    KorUint8* firstColumn;
    KorDistanceT column;
    bool upwards;

    TurnedPlane(Plane dst, KorSizeT width, bool is90)
        : firstColumn(is90 ? dst.samples : dst.Row(width - 1)),
          column(is90 ? static_cast<KorDistanceT>(dst.pitch) : -static_cast<KorDistanceT>(dst.pitch)),
          upwards(is90) {}

    KorUint8* Column(KorSizeT i) const { return firstColumn + static_cast<KorDistanceT>(i) * column; }
};

// The rows of a source in the order in which the rows of the rotated plane have them.
[[maybe_unused]] SourceRows Along(SourceRows src, KorSizeT height, bool upwards) {
    return upwards ? SourceRows{src.Row(height - 1), -src.pitch} : src;
}

[[maybe_unused]] bool HasTiles(KorSizeT rowBytes, KorSizeT height) {
    return rowBytes >= kTileBytes && height >= hn::Lanes(D8());
}

// Tiles are visited in bands of rows, and in a band one cache line of the source after the other: both sides then finish the
// lines that they have begun while these are at hand. The rows of a line lie a pitch apart, where hardware foresees nothing, so
// the band's next line is asked for ahead. Tiles at the right and lower edges move back into the picture.
//
// Bands of one plane have 128 rows. Those of pairs, which have longer rows and more destinations, have half of that: the pages of
// the band are visited once a line, and the processor must not forget where they lie.
constexpr KorSizeT kBand = 128;
constexpr KorSizeT kBandOfPairs = 64;

template <class Turn>
KOR_INLINE inline void ForEachTile(SourceRows src, KorSizeT rowBytes, KorSizeT height, KorSizeT bandRows, Turn turn) {
    constexpr KorSizeT kLine = 64;
    const KorSizeT tileRows = hn::Lanes(D8());
    for (KorSizeT band = 0; band < height; band += bandRows) {
        const KorSizeT bandEnd = Min(height, band + bandRows);
        for (KorSizeT line = 0; line < rowBytes; line += kLine) {
            const KorSizeT lineEnd = Min(rowBytes, line + kLine);
            for (KorSizeT row = band; row < bandEnd; row += tileRows) {
                const KorSizeT j = Min(row, height - tileRows);
                for (KorSizeT r = 0; lineEnd < rowBytes && r < tileRows; ++r) {
                    __builtin_prefetch(src.Row(j + r) + lineEnd);
                }
                for (KorSizeT i = line; i < lineEnd; i += kTileBytes) {
                    turn(Min(i, rowBytes - kTileBytes), j);
                }
            }
        }
    }
}

}  // namespace
}  // namespace KOR_TARGET_NAMESPACE
}  // namespace kor

#endif
