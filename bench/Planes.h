// The memory that a case works on: planes of the right size, filled with noise, and the count of the bytes that the
// function reads and writes in them.
#ifndef KOR_BENCH_PLANES_H
#define KOR_BENCH_PLANES_H

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "Kor/Utils/SysDep/KorBaseTypes.h"

namespace bench {

struct FrameSize {
    KorSizeT width;
    KorSizeT height;
    // Every pitch is rounded up to a multiple of this.
    KorSizeT pitchMultiple = 1;

    double Pixels() const { return static_cast<double>(width) * static_cast<double>(height); }
    // Such as 1280x720, or 1280x720@4096 with a multiple.
    std::string Label() const;
};

struct Plane {
    KorUint8* data;
    KorSizeT pitch;
};

// Bytes that the system hands out in whole pages, all of them touched.
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
    explicit Planes(FrameSize size)
        : size_(size) {}

    KorSizeT Width() const { return size_.width; }
    KorSizeT Height() const { return size_.height; }

    // Planes of rows of so many bytes. The name says what the function does with every byte of them.
    Plane Read(KorSizeT rowBytes, KorSizeT rows);
    Plane Write(KorSizeT rowBytes, KorSizeT rows);
    Plane ReadAndWrite(KorSizeT rowBytes, KorSizeT rows);
    // Does not count: what lies between two passes, since the task is the same without, or a plane that is read in part.
    Plane Scratch(KorSizeT rowBytes, KorSizeT rows);
    void CountRead(KorSizeT rowBytes, KorSizeT rows);

    // Bytes read and bytes written, together.
    double Moved() const { return moved_; }

  private:
    Plane Add(KorSizeT rowBytes, KorSizeT rows, int times);

    FrameSize size_;
    double moved_ = 0;
    std::vector<Memory> memory_;
};

}  // namespace bench

#endif
