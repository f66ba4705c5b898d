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

#if !defined(KOR_VNNI)
// Where a permutation inside every 128 bits takes each byte from.
struct alignas(16) BlockPlaces {
    KorUint8 bytes[16];

    template <class PlaceOf>
    static constexpr BlockPlaces Make(PlaceOf placeOf) {
        BlockPlaces places = {};
        for (KorUint i = 0; i < 16; ++i) {
            places.bytes[i] = static_cast<KorUint8>(placeOf(i));
        }
        return places;
    }
    KOR_INLINE V8 Of(V8 x) const { return hn::TableLookupBytes(x, hn::LoadDup128(D8(), bytes)); }
};
#endif

// The bytes of a vector in reverse order.
KOR_INLINE inline V8 Reversed(V8 x) {
#if defined(KOR_VNNI)
    static constexpr Places kPlaces = Places::Make([](KorUint i) { return 63 - i; });
    return V8{_mm512_permutexvar_epi8(kPlaces.Load(), x.raw)};
#else
    static constexpr BlockPlaces kPlaces = BlockPlaces::Make([](KorUint i) { return 15 - i; });
    return hn::ReverseBlocks(D8(), kPlaces.Of(x));
#endif
}

// The first and the second bytes of the pairs in two vectors that follow each other in memory.
template <Order order>
KOR_INLINE inline void SplitPairs(V8 a, V8 b, V8& first, V8& second) {
    constexpr bool forwards = order == Order::Forwards;
#if defined(KOR_VNNI)
    static constexpr Places kFirst = Places::Make([](KorUint i) { return forwards ? 2 * i : 126 - 2 * i; });
    static constexpr Places kSecond = Places::Make([](KorUint i) { return forwards ? 2 * i + 1 : 127 - 2 * i; });
    first = V8{_mm512_permutex2var_epi8(a.raw, kFirst.Load(), b.raw)};
    second = V8{_mm512_permutex2var_epi8(a.raw, kSecond.Load(), b.raw)};
#elif HWY_ARCH_X86
    // In every block the first bytes of its eight pairs, then the second ones: fewer steps than to take each of them alone.
    static constexpr BlockPlaces kPlaces = BlockPlaces::Make([](KorUint i) { return (forwards ? 2 * (i % 8) : 14 - 2 * (i % 8)) + i / 8; });
    const hn::ScalableTag<uint64_t> d64;
    const auto halvesA = hn::BitCast(d64, kPlaces.Of(forwards ? a : b));
    const auto halvesB = hn::BitCast(d64, kPlaces.Of(forwards ? b : a));
    const auto ordered = [](auto halves) KOR_INLINE {
#if HWY_TARGET == HWY_AVX2
        return V8{_mm256_permute4x64_epi64(halves.raw, forwards ? 0xd8 : 0x72)};
#else
        return hn::BitCast(D8(), halves);
#endif
    };
    first = ordered(hn::InterleaveLower(d64, halvesA, halvesB));
    second = ordered(hn::InterleaveUpper(d64, halvesA, halvesB));
#else
    first = TakeOfPairs<0>(a, b);
    second = TakeOfPairs<1>(a, b);
    if constexpr (!forwards) {
        first = Reversed(first);
        second = Reversed(second);
    }
#endif
}

// Transposition works on tiles of 16 bytes by as many rows as a vector has bytes. Vector r holds 16 bytes of the rows r, r + 16,
// and so on, a row in every 128 bits.
constexpr KorSizeT kTileBytes = 16;

#if HWY_HAVE_SCALABLE
// Vectors whose length the compiler does not know cannot be elements of an array, so that these lie in memory.
class TileRows {
  public:
    KOR_INLINE inline V8 operator[](KorSizeT r) const { return hn::Load(D8(), bytes_[r]); }
    KOR_INLINE inline void Set(KorSizeT r, V8 row) { hn::Store(row, D8(), bytes_[r]); }

  private:
    alignas(HWY_MAX_BYTES) KorUint8 bytes_[kTileBytes][HWY_MAX_BYTES];
};
#else
class TileRows {
  public:
    KOR_INLINE inline V8 operator[](KorSizeT r) const { return rows_[r]; }
    KOR_INLINE inline void Set(KorSizeT r, V8 row) { rows_[r] = row; }

  private:
    V8 rows_[kTileBytes];
};
#endif

struct Tile {
    TileRows rows;

    KOR_INLINE inline explicit Tile(SourceRows src) {
        for (KorSizeT r = 0; r < kTileBytes; ++r) {
            rows.Set(r, LoadBlocks(src.Row(r), static_cast<KorDistanceT>(kTileBytes) * src.pitch));
        }
    }

    // One step of a perfect shuffle of all bytes of 16 rows. Four of them make columns of the rows; after three, even and odd
    // rows still make columns of their own, in the lower and the upper half of every block.
    KOR_INLINE inline void InterleaveHalves() {
        const D8 d;
        TileRows to;
        for (KorSizeT r = 0; r < kTileBytes / 2; ++r) {
            to.Set(2 * r, hn::InterleaveLower(d, rows[r], rows[r + kTileBytes / 2]));
            to.Set(2 * r + 1, hn::InterleaveUpper(d, rows[r], rows[r + kTileBytes / 2]));
        }
        // GCC copies the array as a whole through memory.
        for (KorSizeT r = 0; r < kTileBytes; ++r) {
            rows.Set(r, to[r]);
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
#if HWY_HAVE_SCALABLE
        alignas(HWY_MAX_BYTES) KorUint8 blocks[HWY_MAX_BYTES];
        for (KorSizeT i = 0; i < hn::Lanes(D8()) / 16; ++i) {
            KorMemCpy(blocks + 16 * i, x + static_cast<KorDistanceT>(i) * distance, 16);
        }
        return hn::Load(D8(), blocks);
#else
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
constexpr KorSizeT kLine = 64;
constexpr KorSizeT kBand = 128;
constexpr KorSizeT kBandOfPairs = 64;

// Whether more rows of a tile meet in a set of the first cache than it holds, which has a line for every address modulo 4096, and
// that some times: the pitch, or a small multiple of it, is near a multiple of 4096.
[[maybe_unused]] bool AreRowsCrowded(KorDistanceT pitch) {
    constexpr KorSizeT kWays = 12;
    const KorSizeT distance = static_cast<KorSizeT>(pitch);
    for (KorSizeT rows = 1; rows <= hn::Lanes(D8()) / kWays; ++rows) {
        if ((rows * distance + 63) % 4096 < 127) {
            return true;
        }
    }
    return false;
}

// A line of as many rows as a tile has, copied: crowded rows drive each other from the cache before the tiles of a line are done.
class StagedLine {
  public:
    // Longer vectors have no room in the stack that a function may take.
    static constexpr KorSizeT kMostRows = HWY_MAX_BYTES < 128 ? HWY_MAX_BYTES : 128;

    KOR_INLINE inline SourceRows Load(SourceRows src) {
        const D8 d;
        for (KorSizeT r = 0; r < hn::Lanes(d); ++r) {
            for (KorSizeT i = 0; i < kLine; i += hn::Lanes(d)) {
                hn::Store(hn::LoadU(d, src.Row(r) + i), d, samples_ + r * kLine + i);
            }
        }
        return TopDown(samples_, kLine);
    }

  private:
    alignas(kLine) KorUint8 samples_[kMostRows * kLine];
};

// Calls turn(i, j, tile) for the tile from byte i and row j on, which lies in the source or in a copy.
template <class Turn>
KOR_INLINE inline void ForEachTile(SourceRows src, KorSizeT rowBytes, KorSizeT height, KorSizeT mostBandRows, Turn turn) {
    const KorSizeT tileRows = hn::Lanes(D8());
    const bool areCrowded = tileRows <= StagedLine::kMostRows && AreRowsCrowded(src.pitch);
    const KorSizeT bandRows = areCrowded ? tileRows : mostBandRows;
    StagedLine staged;
    for (KorSizeT band = 0; band < height; band += bandRows) {
        const KorSizeT bandEnd = Min(height, band + bandRows);
        for (KorSizeT line = 0; line < rowBytes; line += kLine) {
            const KorSizeT lineEnd = Min(rowBytes, line + kLine);
            for (KorSizeT row = band; row < bandEnd; row += tileRows) {
                const KorSizeT j = Min(row, height - tileRows);
                for (KorSizeT r = 0; lineEnd < rowBytes && r < tileRows; ++r) {
                    __builtin_prefetch(src.Row(j + r) + lineEnd);
                }
                const SourceRows rows = src.From(j);
                if (areCrowded && line + kLine == lineEnd) {
                    const SourceRows copy = staged.Load({rows.first + line, rows.pitch});
                    for (KorSizeT i = 0; i < kLine; i += kTileBytes) {
                        turn(line + i, j, SourceRows{copy.first + i, copy.pitch});
                    }
                } else {
                    for (KorSizeT i = line; i < lineEnd; i += kTileBytes) {
                        const KorSizeT at = Min(i, rowBytes - kTileBytes);
                        turn(at, j, SourceRows{rows.first + at, rows.pitch});
                    }
                }
            }
        }
    }
}

}  // namespace
}  // namespace KOR_TARGET_NAMESPACE
}  // namespace kor

#endif
