// All functions on several threads at the same time: on frames of their own, and on parts of one frame. They write what
// a single thread writes, under the target that KOR_TARGET names. Under ThreadSanitizer, accessing a byte that does not
// belong to the call shows as a race.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "conformance/core/Catalogue.h"
#include "conformance/core/Pattern.h"
#include "conformance/digest/Dispatched.h"
#include "Kor/Os/KorRandom.h"
#include "Kor/Video/Common/KorYuv420.h"

namespace {

thread_local std::uint64_t drawSeed = 0;

}  // namespace

// Draws that depend on a seed of the thread, so that results are predictable.
KorBool KorRandomGetBytes(char* buffer, KorSizeT count) {
    const std::uint64_t value = kit::MixSeed(drawSeed++, 0);
    std::memcpy(buffer, &value, count);
    return 1;
}

namespace {

constexpr unsigned kThreads = 4;
using Bytes = std::vector<std::uint8_t>;

void OnThreads(unsigned count, void (*work)(unsigned, const void*), const void* data) {
    std::vector<std::thread> threads;
    for (unsigned number = 0; number < count; ++number) {
        threads.emplace_back(work, number, data);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

template <class Work>
void OnThreads(unsigned count, const Work& work) {
    OnThreads(
        count, [](unsigned number, const void* data) { (*static_cast<const Work*>(data))(number); }, &work);
}

// ---- Frames of their own --------------------------------------------------------------------------------------------

// One call with planes of its own; returns all their bytes.
Bytes MakeCall(const kit::Entry& entry, const kit::Case& options) {
    const kit::Layout layout = kit::LayOut(entry, options);
    std::array<Bytes, kit::kMaximumPlanes> memory;
    std::array<kit::PlaneView, kit::kMaximumPlanes> views;
    for (std::size_t i = 0; i < layout.count; ++i) {
        const kit::PlaneShape& shape = layout.planes[i].shape;
        memory[i].resize(shape.Front() + shape.Span() + 1);
        kit::FillNoise(kit::MixSeed(options.seed, i), memory[i].data(), memory[i].size());
        views[i] = {memory[i].data() + shape.Front(), shape.pitch, shape.rows};
    }
    drawSeed = options.seed;
    kit::Call(entry.of(kit::DispatchedTable()), views.data(), options);
    Bytes all;
    for (std::size_t i = 0; i < layout.count; ++i) {
        all.insert(all.end(), memory[i].begin(), memory[i].end());
    }
    return all;
}

// Each thread makes all calls of a function, starting at a different one, so that different calls coincide.
std::size_t TryFramesOfTheirOwn(const kit::Entry& entry) {
    std::vector<kit::Case> cases;
    kit::Sweep sweep = entry.options();
    sweep.sizes = {{0, 0}, {1, 1}, {2, 2}, {33, 5}, {130, 6}, {259, 18}};
    sweep.pitches = {kit::Pitches::Odd};
    sweep.placements = {kit::Placement::Rear};
    kit::ForEachCase(sweep, 420, [&](const kit::Case& options) {
        cases.push_back(options);
        return true;
    });
    std::vector<Bytes> expected;
    for (const kit::Case& options : cases) {
        expected.push_back(MakeCall(entry, options));
    }
    OnThreads(kThreads, [&](unsigned number) {
        for (std::size_t i = 0; i < cases.size(); ++i) {
            const std::size_t which = (i + number * cases.size() / kThreads) % cases.size();
            if (MakeCall(entry, cases[which]) != expected[which]) {
                std::fprintf(stderr, "%s on a thread differs with %s\n", entry.name,
                             kit::Describe(cases[which]).c_str());
                std::exit(EXIT_FAILURE);
            }
        }
    });
    return kThreads * cases.size();
}

// ---- Parts of one frame ---------------------------------------------------------------------------------------------

// Frames large enough for all functions; every plane has this pitch. Rows of neighbouring parts are adjacent.
constexpr std::size_t kPitch = 1024;
constexpr std::size_t kWidth = 240;
constexpr std::size_t kHeight = 48;

struct Frame {
    std::array<Bytes, 9> planes;

    Frame() {
        for (std::size_t i = 0; i < planes.size(); ++i) {
            planes[i].resize(kPitch * (kHeight + 1));
            kit::FillNoise(i, planes[i].data(), planes[i].size());
        }
    }
    KorUint8* At(std::size_t plane, std::size_t column, std::size_t row) {
        return planes[plane].data() + row * kPitch + column;
    }
};

// Converts the part of a frame at (x, y); sizes and positions are even.
using Part = void (*)(Frame& f, std::size_t x, std::size_t y, std::size_t width, std::size_t height);

template <decltype(&KorRGBAToI420) capture, std::size_t pixelBytes>
void CaptureI420(Frame& f, std::size_t x, std::size_t y, std::size_t width, std::size_t height) {
    capture(f.At(0, x, y), kPitch, f.At(1, x / 2, y / 2), kPitch, f.At(2, x / 2, y / 2), kPitch,
            f.At(3, pixelBytes * x, y), kPitch, width, height, 0);
}

template <decltype(&KorRGBAToI420) capture>
void CaptureI444(Frame& f, std::size_t x, std::size_t y, std::size_t width, std::size_t height) {
    capture(f.At(0, x, y), kPitch, f.At(1, x, y), kPitch, f.At(2, x, y), kPitch, f.At(3, 4 * x, y), kPitch, width,
            height, 0);
}

template <decltype(&KorI420ToRGBA) render, std::size_t pixelBytes>
void RenderI420(Frame& f, std::size_t x, std::size_t y, std::size_t width, std::size_t height) {
    render(f.At(0, x, y), kPitch, f.At(1, x / 2, y / 2), kPitch, f.At(2, x / 2, y / 2), kPitch,
           f.At(3, pixelBytes * x, y), kPitch, width, height, KOR_VIDEOFRAMEDITHERLEVEL_Off);
}

template <decltype(&KorI420ToRGBA) render>
void RenderI444(Frame& f, std::size_t x, std::size_t y, std::size_t width, std::size_t height) {
    render(f.At(0, x, y), kPitch, f.At(1, x, y), kPitch, f.At(2, x, y), kPitch, f.At(3, 4 * x, y), kPitch, width,
           height, KOR_VIDEOFRAMEDITHERLEVEL_Off);
}

constexpr KorInt kMatrix[3][3] = {{47, 157, 16}, {-26, -87, 112}, {112, -102, -10}};

void CaptureGeneral(Frame& f, std::size_t x, std::size_t y, std::size_t width, std::size_t height) {
    KorBGRAToI420General(f.At(0, x, y), kPitch, f.At(1, x / 2, y / 2), kPitch, f.At(2, x / 2, y / 2), kPitch,
                         f.At(3, 4 * x, y), kPitch, width, height, 0, kMatrix);
}

void RenderGeneral(Frame& f, std::size_t x, std::size_t y, std::size_t width, std::size_t height) {
    KorI420ToBGRAGeneral(f.At(0, x, y), kPitch, f.At(1, x / 2, y / 2), kPitch, f.At(2, x / 2, y / 2), kPitch,
                         f.At(3, 4 * x, y), kPitch, width, height, kMatrix, KOR_VIDEOFRAMEDITHERLEVEL_Off);
}

void PackYuv2(Frame& f, std::size_t x, std::size_t y, std::size_t width, std::size_t height) {
    KorI420toYuv2(f.At(0, x, y), kPitch, f.At(1, x / 2, y / 2), kPitch, f.At(2, x / 2, y / 2), kPitch,
                  f.At(3, 2 * x, y), kPitch, width, height);
}

void Mirror(Frame& f, std::size_t x, std::size_t y, std::size_t width, std::size_t height) {
    KorPlanarMirror(f.At(0, x, y), kPitch, f.At(1, x, y), kPitch, width, height);
}

void Halve(Frame& f, std::size_t x, std::size_t y, std::size_t width, std::size_t height) {
    KorPlanarUV422To420(f.At(0, x, y), kPitch, f.At(1, x, y / 2), kPitch, width, height / 2);
}

template <decltype(&KorPlanarUVDeinterlace) split>
void Split(Frame& f, std::size_t x, std::size_t y, std::size_t width, std::size_t height) {
    split(f.At(0, 2 * x, y), kPitch, f.At(1, x, y), kPitch, f.At(2, x, y), kPitch, width, height);
}

// M420 blocks cannot be cut into columns: each column has narrow blocks of its own, next to the others'.
void CaptureM420(Frame& f, std::size_t x, std::size_t y, std::size_t width, std::size_t height) {
    KorM420ToI420(f.At(0, x, y), kPitch, f.At(1, x / 2, y / 2), kPitch, f.At(2, x / 2, y / 2), kPitch,
                  f.At(3, 3 * x, y / 2), kPitch, width, height, 0);
}

// Rotation exchanges the axes: a part's destination is as far down as the part is to the right.
template <KorImageRotationDegree angle>
constexpr std::size_t kRotatedPitch = angle == 90 || angle == 270 ? 64 : kPitch;

template <KorImageRotationDegree angle>
KorUint8* Rotated(Bytes& plane, std::size_t x, std::size_t y) {
    return plane.data() + (kRotatedPitch<angle> == kPitch ? y * kPitch + x : x * kRotatedPitch<angle> + y);
}

template <KorImageRotationDegree angle>
void Rotate(Frame& f, std::size_t x, std::size_t y, std::size_t width, std::size_t height) {
    KorPlanarRotation(f.At(0, x, y), kPitch, Rotated<angle>(f.planes[1], x, y), kRotatedPitch<angle>, width, height,
                      angle);
}

template <KorImageRotationDegree angle>
void SplitRotated(Frame& f, std::size_t x, std::size_t y, std::size_t width, std::size_t height) {
    KorPlanarUVDeinterlaceRotation(f.At(0, 2 * x, y), kPitch, Rotated<angle>(f.planes[1], x, y), kRotatedPitch<angle>,
                                   Rotated<angle>(f.planes[2], x, y), kRotatedPitch<angle>, width, height, angle);
}

template <decltype(&KorYUY2ToI420WithRotation) capture, KorImageRotationDegree angle>
void CaptureRotated(Frame& f, std::size_t x, std::size_t y, std::size_t width, std::size_t height) {
    capture(Rotated<angle>(f.planes[0], x, y), kRotatedPitch<angle>, Rotated<angle>(f.planes[1], x / 2, y / 2),
            kRotatedPitch<angle>, Rotated<angle>(f.planes[2], x / 2, y / 2), kRotatedPitch<angle>, f.At(3, 2 * x, y),
            kPitch, width, height, 0, angle);
}

void FlipInPlace(Frame& f, std::size_t x, std::size_t y, std::size_t width, std::size_t height) {
    KorI420FlipVertical(f.At(0, x, y), kPitch, f.At(1, x / 2, y / 2), kPitch, f.At(2, x / 2, y / 2), kPitch, width,
                        height);
}

void DitherInPlace(Frame& f, std::size_t x, std::size_t y, std::size_t width, std::size_t height) {
    KorI420Dither(f.At(0, x, y), kPitch, f.At(1, x / 2, y / 2), kPitch, f.At(2, x / 2, y / 2), kPitch, f.At(0, x, y),
                  kPitch, f.At(1, x / 2, y / 2), kPitch, f.At(2, x / 2, y / 2), kPitch, width, height,
                  KOR_VIDEOFRAMEDITHERLEVEL_1, 0);
}

void Blend(Frame& f, std::size_t x, std::size_t y, std::size_t width, std::size_t height) {
    KorI420AlphaBlend(f.At(0, 0, 0), kPitch, f.At(1, 0, 0), kPitch, f.At(2, 0, 0), kPitch, f.At(3, x, y), kPitch,
                      f.At(4, x / 2, y / 2), kPitch, f.At(5, x / 2, y / 2), kPitch, width, height, x, y, 99);
}

void BlendArray(Frame& f, std::size_t x, std::size_t y, std::size_t width, std::size_t height) {
    KorI420AlphaArrayBlend(f.At(0, 0, 0), kPitch, f.At(1, 0, 0), kPitch, f.At(2, 0, 0), kPitch, f.At(3, x, y), kPitch,
                           f.At(4, x / 2, y / 2), kPitch, f.At(5, x / 2, y / 2), kPitch, width, height, x, y,
                           f.At(6, x, y), kPitch, f.At(7, x / 2, y / 2), kPitch, f.At(8, x / 2, y / 2), kPitch);
}

struct NamedPart {
    const char* name;
    Part convert;
};

constexpr NamedPart kParts[] = {
    {"KorRGBAToI420", CaptureI420<&KorRGBAToI420, 4>},
    {"KorBGRAToI420", CaptureI420<&KorBGRAToI420, 4>},
    {"KorARGBToI420", CaptureI420<&KorARGBToI420, 4>},
    {"KorABGRToI420", CaptureI420<&KorABGRToI420, 4>},
    {"KorBGRAToI420UsingBT709", CaptureI420<&KorBGRAToI420UsingBT709, 4>},
    {"KorBGRAToI420General", CaptureGeneral},
    {"KorBGRAToI444", CaptureI444<&KorBGRAToI444>},
    {"KorBGRAToI444UsingBT709", CaptureI444<&KorBGRAToI444UsingBT709>},
    {"KorRawToI420", CaptureI420<&KorRawToI420, 3>},
    {"Kor24BGToI420", CaptureI420<&Kor24BGToI420, 3>},
    {"KorYUY2ToI420", CaptureI420<&KorYUY2ToI420, 2>},
    {"KorUYVYToI420", CaptureI420<&KorUYVYToI420, 2>},
    {"KorYUY2ToI420WithRotation, 0", CaptureRotated<&KorYUY2ToI420WithRotation, 0>},
    {"KorYUY2ToI420WithRotation, 90", CaptureRotated<&KorYUY2ToI420WithRotation, 90>},
    {"KorYUY2ToI420WithRotation, 180", CaptureRotated<&KorYUY2ToI420WithRotation, 180>},
    {"KorYUY2ToI420WithRotation, 270", CaptureRotated<&KorYUY2ToI420WithRotation, 270>},
    {"KorUYVYToI420WithRotation, 0", CaptureRotated<&KorUYVYToI420WithRotation, 0>},
    {"KorUYVYToI420WithRotation, 90", CaptureRotated<&KorUYVYToI420WithRotation, 90>},
    {"KorUYVYToI420WithRotation, 180", CaptureRotated<&KorUYVYToI420WithRotation, 180>},
    {"KorUYVYToI420WithRotation, 270", CaptureRotated<&KorUYVYToI420WithRotation, 270>},
    {"KorYuv2ToI420", CaptureI420<&KorYuv2ToI420, 2>},
    {"KorM420ToI420", CaptureM420},
    {"KorI420ToRGBA", RenderI420<&KorI420ToRGBA, 4>},
    {"KorI420ToBGRA", RenderI420<&KorI420ToBGRA, 4>},
    {"KorI420ToARGB", RenderI420<&KorI420ToARGB, 4>},
    {"KorI420ToABGR", RenderI420<&KorI420ToABGR, 4>},
    {"KorI420ToBGRAUsingBT709", RenderI420<&KorI420ToBGRAUsingBT709, 4>},
    {"KorI420ToBGRAGeneral", RenderGeneral},
    {"KorI420To24BG", RenderI420<&KorI420To24BG, 3>},
    {"KorI444ToBGRA", RenderI444<&KorI444ToBGRA>},
    {"KorI444ToBGRAUsingBT709", RenderI444<&KorI444ToBGRAUsingBT709>},
    {"KorI420ToYUY2", RenderI420<&KorI420ToYUY2, 2>},
    {"KorI420ToUYVY", RenderI420<&KorI420ToUYVY, 2>},
    {"KorI420toYuv2", PackYuv2},
    {"KorPlanarMirror", Mirror},
    {"KorPlanarUV422To420", Halve},
    {"KorPlanarUVDeinterlace", Split<&KorPlanarUVDeinterlace>},
    {"KorPlanarUVDeinterlaceMirror", Split<&KorPlanarUVDeinterlaceMirror>},
    {"KorPlanarRotation, 90", Rotate<90>},
    {"KorPlanarRotation, 180", Rotate<180>},
    {"KorPlanarRotation, 270", Rotate<270>},
    {"KorPlanarUVDeinterlaceRotation, 90", SplitRotated<90>},
    {"KorPlanarUVDeinterlaceRotation, 180", SplitRotated<180>},
    {"KorPlanarUVDeinterlaceRotation, 270", SplitRotated<270>},
    {"KorI420FlipVertical", FlipInPlace},
    {"KorI420Dither", DitherInPlace},
    {"KorI420AlphaBlend", Blend},
    {"KorI420AlphaArrayBlend", BlendArray},
};

// A function added to the catalogue but not to the parts would go untested.
void RequireParts(const kit::Entry& entry) {
    const std::string entryName = entry.name;
    for (const NamedPart& part : kParts) {
        const std::string name = part.name;
        if (name.substr(0, name.find(',')) + "_C_" == entryName) {
            return;
        }
    }
    std::fprintf(stderr, "%s has no parts\n", entry.name);
    std::exit(EXIT_FAILURE);
}

// The parts are columns or bands of rows, one per thread.
void TryPartsOfOneFrame(const NamedPart& part, bool columns) {
    const std::size_t width = columns ? kWidth / kThreads : kWidth;
    const std::size_t height = columns ? kHeight : kHeight / kThreads;
    const auto convert = [&](Frame& frame, unsigned number) {
        part.convert(frame, columns ? number * width : 0, columns ? 0 : number * height, width, height);
    };
    Frame alone, shared;
    for (unsigned number = 0; number < kThreads; ++number) {
        convert(alone, number);
    }
    OnThreads(kThreads, [&](unsigned number) { convert(shared, number); });
    if (alone.planes != shared.planes) {
        std::fprintf(stderr, "%s on %s of one frame differs\n", part.name, columns ? "columns" : "bands");
        std::exit(EXIT_FAILURE);
    }
}

}  // namespace

int main() {
    if (const std::string complaint = kit::ComplaintAboutEnvironment(); !complaint.empty()) {
        std::printf("skipped: %s\n", complaint.c_str());
        return 77;
    }
    std::size_t calls = 0;
    for (const kit::Entry& entry : kit::Catalogue()) {
        RequireParts(entry);
        calls += TryFramesOfTheirOwn(entry);
    }
    for (const NamedPart& part : kParts) {
        TryPartsOfOneFrame(part, false);
        TryPartsOfOneFrame(part, true);
    }
    std::printf("%s: %zu functions, %zu calls on %u threads; %zu walks over bands and columns of one frame\n",
                KorYuv420Target(), kit::Catalogue().size(), calls, kThreads, 2 * (sizeof kParts / sizeof *kParts));
    return EXIT_SUCCESS;
}
