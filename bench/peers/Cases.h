// What is measured beside other libraries: one case for every function that a peer has.
#ifndef KOR_BENCH_PEERS_CASES_H
#define KOR_BENCH_PEERS_CASES_H

#include <functional>
#include <string>
#include <vector>

#include "Kor/Utils/SysDep/KorBaseTypes.h"

namespace peers {

// Planes and a packed image of one size, for reading and for writing, aligned to 64 bytes and with tight pitches.
// Planes of chroma have room for 4:4:4; pictures may be rotated.
class Frame {
  public:
    Frame(int frameWidth, int frameHeight);

    const int width, height;
    KorUint8 *packedIn, *yIn, *uIn, *vIn;
    KorUint8 *packedOut, *yOut, *uOut, *vOut;

    size_t Width() const { return static_cast<size_t>(width); }
    size_t Height() const { return static_cast<size_t>(height); }
    size_t WidthC() const { return (Width() + 1) / 2; }
    size_t HeightC() const { return (Height() + 1) / 2; }
    int widthC() const { return (width + 1) / 2; }

  private:
    KorUint8* Take(size_t bytes);

    std::vector<KorUint8> memory;
    size_t taken = 0;
};

using Call = std::function<void(Frame&)>;

struct Case {
    std::string name;
    // What a call reads and writes, in bytes for each pixel: memcpy moves half of it.
    double bytes;
    Call kor, libyuv;
    // The formats of libswscale, source and destination; empty where it has none.
    std::string swscaleFrom, swscaleTo;
};

std::vector<Case> Cases();

}  // namespace peers

#endif
