// Render: converts an I420 picture to BGRA, once plain and once dithered, and writes a picture that any viewer opens.
//
// The picture is a soft, dark ramp, where eight bits are visibly too few: rendered plain, it shows vertical stripes.
// Dithering adds a little noise before the conversion, and the stripes disappear.
//
//   render [FILE.ppm]       upper half plain, lower half dithered; the default is render.ppm
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "Kor/Video/Common/KorYuv420.h"

namespace {

constexpr KorSizeT kWidth = 1280;
constexpr KorSizeT kHeight = 360;
constexpr KorSizeT kBytes = 4;  // B, G, R, A

using Picture = std::vector<KorUint8>;

void Expect(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "render: %s\n", what);
        std::exit(EXIT_FAILURE);
    }
}

// Luma rises from 32 to 52 across the width; chroma is colourless.
Picture Render(KorVideoFrameDitherLevel level) {
    Picture y(kWidth * kHeight);
    for (KorSizeT i = 0; i < y.size(); ++i)
        y[i] = static_cast<KorUint8>(32 + i % kWidth * 20 / kWidth);
    const Picture chroma(kWidth / 2 * kHeight / 2, 128);  // both planes may be the same, because they are only read

    Picture bgra(kWidth * kHeight * kBytes);
    KorI420ToBGRA(y.data(), kWidth, chroma.data(), kWidth / 2, chroma.data(), kWidth / 2, bgra.data(), kWidth * kBytes,
                  kWidth, kHeight, level);
    return bgra;
}

double Mean(const Picture& picture) {
    double sum = 0;
    for (const KorUint8 byte : picture)
        sum += byte;
    return sum / static_cast<double>(picture.size());
}

// The noise changes single pixels, by a few steps at the weakest level, but not the overall brightness.
void Check(const Picture& plain, const Picture& dithered) {
    KorSizeT changed = 0;
    for (KorSizeT i = 0; i < plain.size(); ++i) {
        Expect(std::abs(plain[i] - dithered[i]) <= 16, "the noise is too strong");
        Expect(i % kBytes != 3 || dithered[i] == 255, "the rendered picture is not opaque");
        changed += plain[i] != dithered[i];
    }
    Expect(changed > plain.size() / 4, "there is no noise");
    Expect(std::abs(Mean(plain) - Mean(dithered)) < 1, "the noise changed the brightness");
}

// PPM stores R, G, B.
void AppendAsRgb(std::ofstream& file, const Picture& bgra) {
    for (KorSizeT i = 0; i < bgra.size(); i += kBytes) {
        file.put(static_cast<char>(bgra[i + 2]));
        file.put(static_cast<char>(bgra[i + 1]));
        file.put(static_cast<char>(bgra[i]));
    }
}

}  // namespace

int main(int argc, char** argv) {
    const std::string name = argc > 1 ? argv[1] : "render.ppm";

    const Picture plain = Render(KOR_VIDEOFRAMEDITHERLEVEL_Off);
    const Picture dithered = Render(KOR_VIDEOFRAMEDITHERLEVEL_0);
    Check(plain, dithered);

    std::ofstream file(name, std::ios::binary);
    file << "P6\n" << kWidth << " " << 2 * kHeight << "\n255\n";
    AppendAsRgb(file, plain);
    AppendAsRgb(file, dithered);
    file.close();
    Expect(file.good(), ("cannot write " + name).c_str());
    std::printf("Wrote %s: a dark ramp, plain above, dithered below.\n", name.c_str());
    return 0;
}
