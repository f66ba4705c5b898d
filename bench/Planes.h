// The memory of a case: planes of the right size, filled with noise, and the number of bytes that the function reads
// and writes in them.
#ifndef KOR_BENCH_PLANES_H
#define KOR_BENCH_PLANES_H

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "conformance/core/PlaneShape.h"
#include "Kor/Utils/SysDep/KorBaseTypes.h"

namespace bench {

struct FrameSize {
    KorSizeT width;
    KorSizeT height;
    // Every pitch is rounded up to a multiple of this.
    KorSizeT pitchMultiple = 1;

    double Pixels() const { return static_cast<double>(width) * static_cast<double>(height); }
    // For example 1280x720, or 1280x720@4096 with a multiple.
    std::string Label() const;
};

// Bytes from the system in whole pages, all of them present.
class Memory {
  public:
    explicit Memory(KorSizeT bytes);

    KorUint8* Data() const { return data_.get(); }
    void FillWithNoise(KorSizeT bytes, uint64_t seed) const;

  private:
    struct Free {
        void operator()(KorUint8* data) const { std::free(data); }
    };
    std::unique_ptr<KorUint8, Free> data_;
};

class Planes {
  public:
    explicit Planes(FrameSize size) : size_(size) {}

    KorSizeT Width() const { return size_.width; }
    KorSizeT Height() const { return size_.height; }

    // A plane with rows of rowBytes.
    kit::PlaneView Add(KorSizeT rowBytes, KorSizeT rows);
    // Bytes that the call reads and writes.
    void Count(double moved) { moved_ += moved; }

    // Bytes read plus bytes written.
    double Moved() const { return moved_; }

  private:
    FrameSize size_;
    double moved_ = 0;
    std::vector<Memory> memory_;
};

}  // namespace bench

#endif
