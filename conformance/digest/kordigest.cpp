/*
 * kordigest: the digests of the library that is linked. It also builds without the build system, for the portable
 * target:
 *
 *   c++ -std=c++17 -I. -o kordigest conformance/digest/?*.cpp conformance/core/?*.cpp \
 *       Kor/Video/Common/KorYuv420.cpp Kor/Video/Common/C/KorYuv420_C_.cpp platform/KorTblDitherStd4.cpp
 */
#include "conformance/digest/DigestMain.h"

int main(int argc, char** argv) {
    return kit::DispatchedDigestMain(argc, argv);
}
