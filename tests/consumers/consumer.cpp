// A C++ program: the version of the headers, and a plane rotated by 90 degrees.
#include <array>
#include <iostream>

#include "Kor/Video/Common/KorYuv420.h"

static_assert(KOR_VERSION_MAJOR >= 0 && sizeof(KorVideoFrameDitherLevel) == 4, "the headers are those of the library");

int main() {
    const std::array<KorUint8, 6> plane = {'a', 'b', 'c', 'd', 'e', 'f'};
    std::array<KorUint8, 6> rotated{};
    KorPlanarRotation(plane.data(), 3, rotated.data(), 2, 3, 2, 90);
    if (rotated != std::array<KorUint8, 6>{'d', 'a', 'e', 'b', 'f', 'c'}) {
        std::cerr << "consumer: the rotated plane is wrong\n";
        return 1;
    }
    return 0;
}
