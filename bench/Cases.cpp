#include "bench/Cases.h"

#include "bench/Baselines.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"

namespace bench {

namespace {

void FillWithNoise(std::vector<KorUint8>& plane, KorSizeT bytes, uint64_t seed) {
    plane.resize(bytes);
    for (KorUint8& sample : plane) {
        seed ^= seed << 13;
        seed ^= seed >> 7;
        seed ^= seed << 17;
        sample = static_cast<KorUint8>(seed >> 56);
    }
}

// Bytes of a pixel in each kind of image.
constexpr double kPlane = 1;
constexpr double kI420 = 1.5;
constexpr double kI444 = 3;
constexpr double kPacked = 2;
constexpr double kRgb24 = 3;
constexpr double kRgb32 = 4;

constexpr KorInt kCaptureCoefficients[3][3] = {{47, 157, 16}, {-26, -87, 112}, {112, -102, -10}};
constexpr KorInt kRenderCoefficients[3][3] = {{298, 0, 459}, {298, -55, -136}, {298, 541, 0}};

constexpr KorVideoFrameDitherLevel kLevels[] = {KOR_VIDEOFRAMEDITHERLEVEL_Off, KOR_VIDEOFRAMEDITHERLEVEL_1};

std::string WithDither(const std::string& name, KorVideoFrameDitherLevel level) {
    return level == KOR_VIDEOFRAMEDITHERLEVEL_Off ? name : name + "/dither";
}

// Captures into I420 or I444: x, y, z are the destination, a is the source.
template <class Function>
Case Capture(const char* name, Function function, double sourceBytes, double destinationBytes) {
    const KorSizeT pitchBytes = static_cast<KorSizeT>(sourceBytes);
    const KorSizeT chroma = destinationBytes > kI420 ? 1 : 2;
    return {name, sourceBytes + destinationBytes, [=](Planes& p) {
                function(p.x.data(), p.width, p.y.data(), p.width / chroma, p.z.data(), p.width / chroma,
                         p.a.data(), pitchBytes * p.width, p.width, p.height, KorBool{0});
            }};
}

// Renderers and packers out of I420 or I444: a, b, c are the source, x is the destination.
template <class Function>
void AddRender(std::vector<Case>& cases, const char* name, Function function, double sourceBytes, double destinationBytes) {
    const KorSizeT pitchBytes = static_cast<KorSizeT>(destinationBytes);
    const KorSizeT chroma = sourceBytes > kI420 ? 1 : 2;
    for (const KorVideoFrameDitherLevel level : kLevels) {
        cases.push_back({WithDither(name, level), sourceBytes + destinationBytes, [=](Planes& p) {
                             function(p.a.data(), p.width, p.b.data(), p.width / chroma, p.c.data(), p.width / chroma,
                                      p.x.data(), pitchBytes * p.width, p.width, p.height, level);
                         }});
    }
}

void AddPlaneGeometry(std::vector<Case>& cases) {
    const auto pitch = [](const Planes& p) { return static_cast<KorDistanceT>(p.width); };
    cases.push_back({"KorPlanarUV422To420_C_", 3 * kPlane / 2, [=](Planes& p) { KorPlanarUV422To420_C_(p.a.data(), pitch(p), p.x.data(), p.width, p.width, p.height / 2); }});
    cases.push_back({"KorPlanarUVDeinterlace_C_", 4 * kPlane, [=](Planes& p) { KorPlanarUVDeinterlace_C_(p.a.data(), 2 * pitch(p), p.x.data(), p.width, p.y.data(), p.width, p.width, p.height); }});
    cases.push_back({"KorPlanarMirror_C_", 2 * kPlane, [=](Planes& p) { KorPlanarMirror_C_(p.a.data(), pitch(p), p.x.data(), p.width, p.width, p.height); }});
    cases.push_back({"KorPlanarUVDeinterlaceMirror_C_", 4 * kPlane, [=](Planes& p) { KorPlanarUVDeinterlaceMirror_C_(p.a.data(), 2 * pitch(p), p.x.data(), p.width, p.y.data(), p.width, p.width, p.height); }});
    for (const KorImageRotationDegree angle : {0u, 90u, 180u, 270u}) {
        cases.push_back({"KorPlanarRotation_C_/" + std::to_string(angle), 2 * kPlane, [=](Planes& p) {
                             KorPlanarRotation_C_(p.a.data(), pitch(p), p.x.data(), angle % 180 == 0 ? p.width : p.height, p.width, p.height, angle);
                         }});
    }
    for (const KorImageRotationDegree angle : {0u, 90u, 180u, 270u}) {
        cases.push_back({"KorPlanarUVDeinterlaceRotation_C_/" + std::to_string(angle), 4 * kPlane, [=](Planes& p) {
                             const KorSizeT turned = angle % 180 == 0 ? p.width : p.height;
                             KorPlanarUVDeinterlaceRotation_C_(p.a.data(), 2 * pitch(p), p.x.data(), turned, p.y.data(), turned, p.width, p.height, angle);
                         }});
    }
    cases.push_back({"KorI420FlipVertical_C_", 2 * kI420, [](Planes& p) {
                         KorI420FlipVertical_C_(p.x.data(), p.width, p.y.data(), p.width / 2, p.z.data(), p.width / 2, p.width, p.height);
                     }});
}

void AddRgbToYuv(std::vector<Case>& cases) {
    cases.push_back(Capture("KorRGBAToI420_C_", KorRGBAToI420_C_, kRgb32, kI420));
    cases.push_back(Capture("KorBGRAToI420_C_", KorBGRAToI420_C_, kRgb32, kI420));
    cases.push_back(Capture("KorARGBToI420_C_", KorARGBToI420_C_, kRgb32, kI420));
    cases.push_back(Capture("KorABGRToI420_C_", KorABGRToI420_C_, kRgb32, kI420));
    cases.push_back(Capture("KorBGRAToI444_C_", KorBGRAToI444_C_, kRgb32, kI444));
    cases.push_back(Capture("KorBGRAToI420UsingBT709_C_", KorBGRAToI420UsingBT709_C_, kRgb32, kI420));
    cases.push_back(Capture("KorBGRAToI444UsingBT709_C_", KorBGRAToI444UsingBT709_C_, kRgb32, kI444));
    cases.push_back({"KorBGRAToI420General_C_", kRgb32 + kI420, [](Planes& p) {
                         KorBGRAToI420General_C_(p.x.data(), p.width, p.y.data(), p.width / 2, p.z.data(), p.width / 2,
                                                 p.a.data(), 4 * p.width, p.width, p.height, 0, kCaptureCoefficients);
                     }});
    cases.push_back(Capture("KorRawToI420_C_", KorRawToI420_C_, kRgb24, kI420));
    cases.push_back(Capture("Kor24BGToI420_C_", Kor24BGToI420_C_, kRgb24, kI420));
}

void AddYuvToRgb(std::vector<Case>& cases) {
    AddRender(cases, "KorI420ToRGBA_C_", KorI420ToRGBA_C_, kI420, kRgb32);
    AddRender(cases, "KorI420ToBGRA_C_", KorI420ToBGRA_C_, kI420, kRgb32);
    AddRender(cases, "KorI420ToARGB_C_", KorI420ToARGB_C_, kI420, kRgb32);
    AddRender(cases, "KorI420ToABGR_C_", KorI420ToABGR_C_, kI420, kRgb32);
    AddRender(cases, "KorI444ToBGRA_C_", KorI444ToBGRA_C_, kI444, kRgb32);
    AddRender(cases, "KorI444ToBGRAUsingBT709_C_", KorI444ToBGRAUsingBT709_C_, kI444, kRgb32);
    AddRender(cases, "KorI420ToBGRAUsingBT709_C_", KorI420ToBGRAUsingBT709_C_, kI420, kRgb32);
    for (const KorVideoFrameDitherLevel level : kLevels) {
        cases.push_back({WithDither("KorI420ToBGRAGeneral_C_", level), kI420 + kRgb32, [=](Planes& p) {
                             KorI420ToBGRAGeneral_C_(p.a.data(), p.width, p.b.data(), p.width / 2, p.c.data(), p.width / 2,
                                                     p.x.data(), 4 * p.width, p.width, p.height, kRenderCoefficients, level);
                         }});
    }
    AddRender(cases, "KorI420To24BG_C_", KorI420To24BG_C_, kI420, kRgb24);
    cases.push_back({"baseline/RenderWithByteStores", kI420 + kRgb32, [](Planes& p) {
                         RenderWithByteStores(p.a.data(), p.width, p.b.data(), p.width / 2, p.c.data(), p.width / 2,
                                              p.x.data(), 4 * p.width, p.width, p.height);
                     }});
}

void AddPackedYuv(std::vector<Case>& cases) {
    cases.push_back(Capture("KorYUY2ToI420_C_", KorYUY2ToI420_C_, kPacked, kI420));
    cases.push_back(Capture("KorUYVYToI420_C_", KorUYVYToI420_C_, kPacked, kI420));
    AddRender(cases, "KorI420ToYUY2_C_", KorI420ToYUY2_C_, kI420, kPacked);
    AddRender(cases, "KorI420ToUYVY_C_", KorI420ToUYVY_C_, kI420, kPacked);
    cases.push_back(Capture("KorYuv2ToI420_C_", KorYuv2ToI420_C_, kPacked, kI420));
    cases.push_back({"KorI420toYuv2_C_", kI420 + kPacked, [](Planes& p) {
                         KorI420toYuv2_C_(p.a.data(), p.width, p.b.data(), p.width / 2, p.c.data(), p.width / 2,
                                          p.x.data(), 2 * p.width, p.width, p.height);
                     }});
    cases.push_back({"KorM420ToI420_C_", 2 * kI420, [](Planes& p) {
                         KorM420ToI420_C_(p.x.data(), p.width, p.y.data(), p.width / 2, p.z.data(), p.width / 2,
                                          p.a.data(), 3 * p.width, p.width, p.height, 0);
                     }});
    for (const KorImageRotationDegree angle : {0u, 90u, 180u, 270u}) {
        const std::string suffix = "/" + std::to_string(angle);
        cases.push_back({"KorYUY2ToI420WithRotation_C_" + suffix, kPacked + kI420, [=](Planes& p) {
                             const KorSizeT pitch = angle % 180 == 0 ? p.width : p.height;
                             KorYUY2ToI420WithRotation_C_(p.x.data(), pitch, p.y.data(), pitch / 2, p.z.data(), pitch / 2,
                                                          p.a.data(), 2 * p.width, p.width, p.height, 0, angle);
                         }});
        cases.push_back({"KorUYVYToI420WithRotation_C_" + suffix, kPacked + kI420, [=](Planes& p) {
                             const KorSizeT pitch = angle % 180 == 0 ? p.width : p.height;
                             KorUYVYToI420WithRotation_C_(p.x.data(), pitch, p.y.data(), pitch / 2, p.z.data(), pitch / 2,
                                                          p.a.data(), 2 * p.width, p.width, p.height, 0, angle);
                         }});
        cases.push_back({"baseline/ConvertThenRotate" + suffix, kPacked + kI420, [=](Planes& p) {
                             KorUint8* scratchU = p.b.data() + p.width * p.height;
                             KorUint8* scratchV = p.c.data() + p.width * p.height;
                             ConvertThenRotate(p.x.data(), p.y.data(), p.z.data(), p.b.data(), scratchU, scratchV,
                                               p.a.data(), p.width, p.height, angle);
                         }});
    }
}

void AddCompositing(std::vector<Case>& cases) {
    cases.push_back({"KorI420Dither_C_", 2 * kI420, [](Planes& p) {
                         KorI420Dither_C_(p.a.data(), p.width, p.b.data(), p.width / 2, p.c.data(), p.width / 2,
                                          p.x.data(), p.width, p.y.data(), p.width / 2, p.z.data(), p.width / 2,
                                          p.width, p.height, KOR_VIDEOFRAMEDITHERLEVEL_1, 1);
                     }});
    cases.push_back({"KorI420AlphaBlend_C_", 3 * kI420, [](Planes& p) {
                         KorI420AlphaBlend_C_(p.x.data(), p.width, p.y.data(), p.width / 2, p.z.data(), p.width / 2,
                                              p.a.data(), p.width, p.b.data(), p.width / 2, p.c.data(), p.width / 2,
                                              p.width, p.height, 0, 0, 77);
                     }});
    cases.push_back({"KorI420AlphaArrayBlend_C_", 4 * kI420, [](Planes& p) {
                         KorUint8* alpha = p.a.data() + 2 * p.width * p.height;
                         KorUint8* alphaC = p.b.data() + p.width * p.height;
                         KorI420AlphaArrayBlend_C_(p.x.data(), p.width, p.y.data(), p.width / 2, p.z.data(), p.width / 2,
                                                   p.a.data(), p.width, p.b.data(), p.width / 2, p.c.data(), p.width / 2,
                                                   p.width, p.height, 0, 0,
                                                   alpha, p.width, alphaC, p.width / 2, alphaC, p.width / 2);
                     }});
}

}  // namespace

// Four bytes a pixel for what may be packed, two for what is a plane or scratch behind one.
Planes::Planes(KorSizeT width_, KorSizeT height_)
    : width(width_), height(height_) {
    const KorSizeT pixels = width * height;
    FillWithNoise(a, 4 * pixels, 1);
    FillWithNoise(b, 2 * pixels, 2);
    FillWithNoise(c, 2 * pixels, 3);
    FillWithNoise(x, 4 * pixels, 4);
    FillWithNoise(y, 2 * pixels, 5);
    FillWithNoise(z, 2 * pixels, 6);
}

std::vector<Case> Cases() {
    std::vector<Case> cases;
    AddPlaneGeometry(cases);
    AddRgbToYuv(cases);
    AddYuvToRgb(cases);
    AddPackedYuv(cases);
    AddCompositing(cases);
    return cases;
}

}  // namespace bench
