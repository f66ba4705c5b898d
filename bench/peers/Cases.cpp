#include "bench/peers/Cases.h"

#include <libyuv.h>

#include <random>
#include <utility>

#include "Kor/Video/Common/KorYuv420.h"

namespace peers {

namespace {

constexpr size_t kAlignment = 64;

// The largest: 32-bit pixels of both, and three full planes of both, each with a spare row and column.
size_t MemoryFor(size_t width, size_t height) {
    return 2 * (4 + 3) * (width + 2) * (height + 2) + 16 * kAlignment;
}

}  // namespace

Frame::Frame(int frameWidth, int frameHeight)
    : width(frameWidth), height(frameHeight), memory(MemoryFor(Width(), Height())) {
    std::mt19937 random(420);
    for (KorUint8& byte : memory) {
        byte = static_cast<KorUint8>(random() >> 8);
    }
    const size_t plane = (Width() + 1) * (Height() + 1);
    packedIn = Take(4 * plane);
    yIn = Take(plane);
    uIn = Take(plane);
    vIn = Take(plane);
    packedOut = Take(4 * plane);
    yOut = Take(plane);
    uOut = Take(plane);
    vOut = Take(plane);
}

KorUint8* Frame::Take(size_t bytes) {
    const uintptr_t base = reinterpret_cast<uintptr_t>(memory.data());
    const uintptr_t at = (base + taken + kAlignment - 1) & ~(kAlignment - 1);
    taken = at + bytes - base;
    return memory.data() + (at - base);
}

namespace {

using KorCapture = decltype(&KorBGRAToI420);
using KorRender = decltype(&KorI420ToBGRA);
using PeerToI420 = decltype(&libyuv::ARGBToI420);
using PeerFromI420 = decltype(&libyuv::I420ToARGB);

// A packed picture of some bytes a pixel to planes whose chroma is width / part by height / part.
Case Capture(const char* name, KorCapture kor, PeerToI420 peer, size_t pixelBytes, size_t part, const char* swsFrom,
             const char* swsTo) {
    return {name,
            static_cast<double>(pixelBytes) + (part == 2 ? 1.5 : 3.0),
            [=](Frame& f) {
                const size_t pitchC = (f.Width() + part - 1) / part;
                kor(f.yOut, f.Width(), f.uOut, pitchC, f.vOut, pitchC, f.packedIn, pixelBytes * f.Width(), f.Width(),
                    f.Height(), 0);
            },
            [=](Frame& f) {
                const int pitchC = static_cast<int>((f.Width() + part - 1) / part);
                peer(f.packedIn, static_cast<int>(pixelBytes) * f.width, f.yOut, f.width, f.uOut, pitchC, f.vOut,
                     pitchC, f.width, f.height);
            },
            swsFrom,
            swsTo};
}

Case Render(const char* name, KorRender kor, PeerFromI420 peer, size_t pixelBytes, size_t part,
            KorVideoFrameDitherLevel level, const char* swsFrom, const char* swsTo) {
    return {name,
            static_cast<double>(pixelBytes) + (part == 2 ? 1.5 : 3.0),
            [=](Frame& f) {
                const size_t pitchC = (f.Width() + part - 1) / part;
                kor(f.yIn, f.Width(), f.uIn, pitchC, f.vIn, pitchC, f.packedOut, pixelBytes * f.Width(), f.Width(),
                    f.Height(), level);
            },
            [=](Frame& f) {
                const int pitchC = static_cast<int>((f.Width() + part - 1) / part);
                peer(f.yIn, f.width, f.uIn, pitchC, f.vIn, pitchC, f.packedOut, static_cast<int>(pixelBytes) * f.width,
                     f.width, f.height);
            },
            swsFrom,
            swsTo};
}

void AddCaptures(std::vector<Case>& cases) {
    // The peer names 32-bit orders after the word of a little-endian machine, so that its ARGB is B, G, R, A in memory.
    cases.push_back(Capture("BGRA to I420", &KorBGRAToI420, &libyuv::ARGBToI420, 4, 2, "bgra", "yuv420p"));
    cases.push_back(Capture("RGBA to I420", &KorRGBAToI420, &libyuv::ABGRToI420, 4, 2, "rgba", "yuv420p"));
    cases.push_back(Capture("ARGB to I420", &KorARGBToI420, &libyuv::BGRAToI420, 4, 2, "argb", "yuv420p"));
    cases.push_back(Capture("ABGR to I420", &KorABGRToI420, &libyuv::RGBAToI420, 4, 2, "abgr", "yuv420p"));
    cases.push_back(
        Capture("BGRA to I420 BT.709", &KorBGRAToI420UsingBT709, &libyuv::ARGBToI420, 4, 2, "bgra", "yuv420p"));
    cases.push_back(Capture("BGRA to I444", &KorBGRAToI444, &libyuv::ARGBToI444, 4, 1, "bgra", "yuv444p"));
    cases.push_back(
        Capture("BGRA to I444 BT.709", &KorBGRAToI444UsingBT709, &libyuv::ARGBToI444, 4, 1, "bgra", "yuv444p"));
    cases.push_back(Capture("24BG to I420", &Kor24BGToI420, &libyuv::RGB24ToI420, 3, 2, "bgr24", "yuv420p"));
    cases.push_back(Capture("Raw to I420", &KorRawToI420, &libyuv::RAWToI420, 3, 2, "rgb24", "yuv420p"));
    cases.push_back(Capture("YUY2 to I420", &KorYUY2ToI420, &libyuv::YUY2ToI420, 2, 2, "yuyv422", "yuv420p"));
    cases.push_back(Capture("UYVY to I420", &KorUYVYToI420, &libyuv::UYVYToI420, 2, 2, "uyvy422", "yuv420p"));
    cases.push_back(Capture("Yuv2 to I420", &KorYuv2ToI420, &libyuv::YUY2ToI420, 2, 2, "", ""));
}

void AddCallersMatrix(std::vector<Case>& cases, const char* name, const KorInt (*matrix)[3]) {
    Case general = Capture(name, &KorBGRAToI420, &libyuv::ARGBToI420, 4, 2, "", "");
    general.kor = [matrix](Frame& f) {
        KorBGRAToI420General(f.yOut, f.Width(), f.uOut, f.WidthC(), f.vOut, f.WidthC(), f.packedIn, 4 * f.Width(),
                             f.Width(), f.Height(), 0, matrix);
    };
    cases.push_back(general);
}

void AddRotatedCapture(std::vector<Case>& cases, const std::string& name, decltype(&KorYUY2ToI420WithRotation) kor,
                       KorUint fourCc, KorImageRotationDegree angle) {
    cases.push_back({name, 3.5,
                     [=](Frame& f) {
                         const bool isQuarter = angle % 180 != 0;
                         const size_t pitch = isQuarter ? f.Height() : f.Width();
                         kor(f.yOut, pitch, f.uOut, pitch / 2, f.vOut, pitch / 2, f.packedIn, 2 * f.Width(), f.Width(),
                             f.Height(), 0, angle);
                     },
                     [=](Frame& f) {
                         const int pitch = angle % 180 != 0 ? f.height : f.width;
                         libyuv::ConvertToI420(f.packedIn, 2 * f.Width() * f.Height(), f.yOut, pitch, f.uOut, pitch / 2,
                                               f.vOut, pitch / 2, 0, 0, f.width, f.height, f.width, f.height,
                                               static_cast<libyuv::RotationMode>(angle), fourCc);
                     },
                     "", ""});
}

void AddM420(std::vector<Case>& cases) {
    cases.push_back({"M420 to I420", 3.0,
                     [](Frame& f) {
                         KorM420ToI420(f.yOut, f.Width(), f.uOut, f.Width() / 2, f.vOut, f.Width() / 2, f.packedIn,
                                       3 * f.Width(), f.Width(), f.Height(), 0);
                     },
                     [](Frame& f) {
                         libyuv::NV12ToI420(f.yIn, f.width, f.packedIn, f.width, f.yOut, f.width, f.uOut, f.width / 2,
                                            f.vOut, f.width / 2, f.width, f.height);
                     },
                     "nv12", "yuv420p"});
}

void AddPackers(std::vector<Case>& cases) {
    cases.push_back(Render("I420 to YUY2", &KorI420ToYUY2, &libyuv::I420ToYUY2, 2, 2, KOR_VIDEOFRAMEDITHERLEVEL_Off,
                           "yuv420p", "yuyv422"));
    cases.push_back(Render("I420 to UYVY", &KorI420ToUYVY, &libyuv::I420ToUYVY, 2, 2, KOR_VIDEOFRAMEDITHERLEVEL_Off,
                           "yuv420p", "uyvy422"));
    cases.push_back(Render("I420 to YUY2 dithered", &KorI420ToYUY2, &libyuv::I420ToYUY2, 2, 2,
                           KOR_VIDEOFRAMEDITHERLEVEL_1, "", ""));
    Case yuv2 =
        Render("I420 to Yuv2", &KorI420ToYUY2, &libyuv::I420ToYUY2, 2, 2, KOR_VIDEOFRAMEDITHERLEVEL_Off, "", "");
    yuv2.kor = [](Frame& f) {
        KorI420toYuv2(f.yIn, f.Width(), f.uIn, f.WidthC(), f.vIn, f.WidthC(), f.packedOut, 2 * f.Width(), f.Width(),
                      f.Height());
    };
    cases.push_back(yuv2);
}

constexpr KorInt kRenderMatrix[3][3] = {{298, 0, 459}, {298, -55, -136}, {298, 541, 0}};

void AddRenderers(std::vector<Case>& cases) {
    cases.push_back(Render("I420 to BGRA", &KorI420ToBGRA, &libyuv::I420ToARGB, 4, 2, KOR_VIDEOFRAMEDITHERLEVEL_Off,
                           "yuv420p", "bgra"));
    cases.push_back(Render("I420 to RGBA", &KorI420ToRGBA, &libyuv::I420ToABGR, 4, 2, KOR_VIDEOFRAMEDITHERLEVEL_Off,
                           "yuv420p", "rgba"));
    cases.push_back(Render("I420 to ARGB", &KorI420ToARGB, &libyuv::I420ToBGRA, 4, 2, KOR_VIDEOFRAMEDITHERLEVEL_Off,
                           "yuv420p", "argb"));
    cases.push_back(Render("I420 to ABGR", &KorI420ToABGR, &libyuv::I420ToRGBA, 4, 2, KOR_VIDEOFRAMEDITHERLEVEL_Off,
                           "yuv420p", "abgr"));
    cases.push_back(Render("I420 to BGRA dithered", &KorI420ToBGRA, &libyuv::I420ToARGB, 4, 2,
                           KOR_VIDEOFRAMEDITHERLEVEL_1, "", ""));
    cases.push_back(Render("I420 to BGRA BT.709", &KorI420ToBGRAUsingBT709, &libyuv::H420ToARGB, 4, 2,
                           KOR_VIDEOFRAMEDITHERLEVEL_Off, "", ""));
    cases.push_back(Render("I444 to BGRA", &KorI444ToBGRA, &libyuv::I444ToARGB, 4, 1, KOR_VIDEOFRAMEDITHERLEVEL_Off,
                           "yuv444p", "bgra"));
    cases.push_back(Render("I444 to BGRA dithered", &KorI444ToBGRA, &libyuv::I444ToARGB, 4, 1,
                           KOR_VIDEOFRAMEDITHERLEVEL_1, "", ""));
    cases.push_back(Render("I444 to BGRA BT.709", &KorI444ToBGRAUsingBT709, &libyuv::H444ToARGB, 4, 1,
                           KOR_VIDEOFRAMEDITHERLEVEL_Off, "", ""));
    Case general = Render("I420 to BGRA, caller's matrix", &KorI420ToBGRA, &libyuv::I420ToARGB, 4, 2,
                          KOR_VIDEOFRAMEDITHERLEVEL_Off, "", "");
    general.kor = [](Frame& f) {
        KorI420ToBGRAGeneral(f.yIn, f.Width(), f.uIn, f.WidthC(), f.vIn, f.WidthC(), f.packedOut, 4 * f.Width(),
                             f.Width(), f.Height(), kRenderMatrix, KOR_VIDEOFRAMEDITHERLEVEL_Off);
    };
    cases.push_back(general);
    cases.push_back(Render("I420 to 24BG", &KorI420To24BG, &libyuv::I420ToRGB24, 3, 2, KOR_VIDEOFRAMEDITHERLEVEL_Off,
                           "yuv420p", "bgr24"));
}

void AddGeometry(std::vector<Case>& cases) {
    cases.push_back({"split", 4.0,
                     [](Frame& f) {
                         KorPlanarUVDeinterlace(f.packedIn, 2 * static_cast<KorDistanceT>(f.width), f.uOut, f.Width(),
                                                f.vOut, f.Width(), f.Width(), f.Height());
                     },
                     [](Frame& f) {
                         libyuv::SplitUVPlane(f.packedIn, 2 * f.width, f.uOut, f.width, f.vOut, f.width, f.width,
                                              f.height);
                     },
                     "", ""});
    cases.push_back(
        {"mirror", 2.0, [](Frame& f) { KorPlanarMirror(f.yIn, f.width, f.yOut, f.Width(), f.Width(), f.Height()); },
         [](Frame& f) { libyuv::MirrorPlane(f.yIn, f.width, f.yOut, f.width, f.width, f.height); }, "", ""});
    for (const KorImageRotationDegree angle : {90u, 180u, 270u}) {
        cases.push_back({"rotate plane by " + std::to_string(angle), 2.0,
                         [angle](Frame& f) {
                             const size_t pitch = angle == 180 ? f.Width() : f.Height();
                             KorPlanarRotation(f.yIn, f.width, f.yOut, pitch, f.Width(), f.Height(), angle);
                         },
                         [angle](Frame& f) {
                             const int pitch = angle == 180 ? f.width : f.height;
                             libyuv::RotatePlane(f.yIn, f.width, f.yOut, pitch, f.width, f.height,
                                                 static_cast<libyuv::RotationMode>(angle));
                         },
                         "", ""});
    }
    const auto addSplitRotation = [&cases](KorImageRotationDegree angle, decltype(&libyuv::SplitRotateUV90) peer) {
        cases.push_back({"rotate by " + std::to_string(angle) + " and split", 4.0,
                         [angle](Frame& f) {
                             const size_t pitch = angle == 180 ? f.Width() : f.Height();
                             KorPlanarUVDeinterlaceRotation(f.packedIn, 2 * static_cast<KorDistanceT>(f.width), f.uOut,
                                                            pitch, f.vOut, pitch, f.Width(), f.Height(), angle);
                         },
                         [angle, peer](Frame& f) {
                             const int pitch = angle == 180 ? f.width : f.height;
                             peer(f.packedIn, 2 * f.width, f.uOut, pitch, f.vOut, pitch, f.width, f.height);
                         },
                         "", ""});
    };
    addSplitRotation(90, &libyuv::SplitRotateUV90);
    addSplitRotation(180, &libyuv::SplitRotateUV180);
    addSplitRotation(270, &libyuv::SplitRotateUV270);
    cases.push_back(
        {"4:2:2 to 4:2:0, a plane", 1.5,
         [](Frame& f) { KorPlanarUV422To420(f.yIn, f.width, f.yOut, f.Width(), f.Width(), f.Height() / 2); },
         [](Frame& f) {
             libyuv::ScalePlane(f.yIn, f.width, f.width, f.height, f.yOut, f.width, f.width, f.height / 2,
                                libyuv::kFilterBox);
         },
         "", ""});
}

void AddBlends(std::vector<Case>& cases) {
    // The peer blends a plane with a plane of alpha, and has nothing for a constant.
    const auto peer = [](Frame& f) {
        libyuv::BlendPlane(f.yIn, f.width, f.yOut, f.width, f.packedIn, f.width, f.yOut, f.width, f.width, f.height);
        for (const auto& [from, to] : {std::pair(f.uIn, f.uOut), std::pair(f.vIn, f.vOut)}) {
            libyuv::BlendPlane(from, f.widthC(), to, f.widthC(), f.packedIn, f.widthC(), to, f.widthC(), f.widthC(),
                               (f.height + 1) / 2);
        }
    };
    cases.push_back({"blend with a constant", 4.5,
                     [](Frame& f) {
                         KorI420AlphaBlend(f.yOut, f.Width(), f.uOut, f.WidthC(), f.vOut, f.WidthC(), f.yIn, f.Width(),
                                           f.uIn, f.WidthC(), f.vIn, f.WidthC(), f.Width(), f.Height(), 0, 0, 77);
                     },
                     peer, "", ""});
    cases.push_back({"blend with an array", 6.0,
                     [](Frame& f) {
                         KorI420AlphaArrayBlend(f.yOut, f.Width(), f.uOut, f.WidthC(), f.vOut, f.WidthC(), f.yIn,
                                                f.Width(), f.uIn, f.WidthC(), f.vIn, f.WidthC(), f.Width(), f.Height(),
                                                0, 0, f.packedIn, f.Width(), f.packedIn, f.WidthC(), f.packedIn,
                                                f.WidthC());
                     },
                     peer, "", ""});
}

constexpr KorInt kByteMatrix[3][3] = {{47, 157, 16}, {-26, -87, 112}, {112, -102, -10}};
constexpr KorInt kLargeMatrix[3][3] = {{300, 157, 16}, {-26, -300, 112}, {112, -102, -300}};

}  // namespace

std::vector<Case> Cases() {
    std::vector<Case> cases;
    AddCaptures(cases);
    AddCallersMatrix(cases, "BGRA to I420, matrix of bytes", kByteMatrix);
    AddCallersMatrix(cases, "BGRA to I420, larger matrix", kLargeMatrix);
    for (const KorImageRotationDegree angle : {90u, 180u, 270u}) {
        const std::string by = " to I420 by " + std::to_string(angle);
        AddRotatedCapture(cases, "YUY2" + by, &KorYUY2ToI420WithRotation, libyuv::FOURCC_YUY2, angle);
        AddRotatedCapture(cases, "UYVY" + by, &KorUYVYToI420WithRotation, libyuv::FOURCC_UYVY, angle);
    }
    AddM420(cases);
    AddPackers(cases);
    AddRenderers(cases);
    AddGeometry(cases);
    AddBlends(cases);
    return cases;
}

}  // namespace peers
