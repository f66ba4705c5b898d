// korframe demo: the path of a typical frame, from a camera to the screen, with a picture of each stage.
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "commands/Commands.h"
#include "commands/Options.h"
#include "image/Canvas.h"
#include "image/TestCard.h"
#include "io/Errors.h"
#include "io/InputFile.h"
#include "io/PictureFile.h"
#include "Kor/Video/Common/KorYuv420.h"
#include "pipeline/LibraryCall.h"
#include "pipeline/Random.h"

namespace korframe {

namespace {

constexpr std::uint8_t kOverlayAlpha = 224;

struct Stage {
    std::string file;
    std::string caption;
    Frame picture;
};

// ---- The library's functions that the path calls ----

// Both sides must be even, here and below.
YuvImage CaptureBgra(const Frame& bgra) {
    YuvImage image(Layout::I420, bgra.Width(), bgra.Height());
    CallLibrary(KorBGRAToI420, image, bgra, bgra.Width(), bgra.Height(), false);
    return image;
}

Frame RenderBgra(const YuvImage& image, KorVideoFrameDitherLevel ditherLevel) {
    Frame bgra(FormatOf(Layout::Bgra), image.Width(), image.Height());
    CallLibrary(KorI420ToBGRA, image, bgra, bgra.Width(), bgra.Height(), ditherLevel);
    return bgra;
}

void RotatePlane(const Plane& from, Plane& to, KorImageRotationDegree angle) {
    CallLibrary(KorPlanarRotation, RowsOf(from), to, from.width, from.height, angle);
}

// What a camera lying on its side delivers: the scene rotated counterclockwise, bottom row first, in UYVY.
Frame FilmSideways(const Frame& scene) {
    const YuvImage upright = CaptureBgra(scene);
    YuvImage sideways(Layout::I420, scene.Height(), scene.Width());
    RotatePlane(upright.y, sideways.y, 270);
    RotatePlane(upright.u, sideways.u, 270);
    RotatePlane(upright.v, sideways.v, 270);
    CallLibrary(KorI420FlipVertical, sideways, sideways.Width(), sideways.Height());
    Frame uyvy(FormatOf(Layout::Uyvy), sideways.Width(), sideways.Height());
    CallLibrary(KorI420ToUYVY, sideways, uyvy, uyvy.Width(), uyvy.Height(), KOR_VIDEOFRAMEDITHERLEVEL_Off);
    return uyvy;
}

YuvImage CaptureUyvy(const Frame& uyvy, bool flip, KorImageRotationDegree angle) {
    const bool swapped = angle % 180 != 0;
    YuvImage image(Layout::I420, swapped ? uyvy.Height() : uyvy.Width(), swapped ? uyvy.Width() : uyvy.Height());
    CallLibrary(KorUYVYToI420WithRotation, image, uyvy, uyvy.Width(), uyvy.Height(), flip, angle);
    return image;
}

void Composite(YuvImage& background, const YuvImage& overlay, std::size_t x, std::size_t y) {
    CallLibrary(KorI420AlphaBlend, background, overlay, overlay.Width(), overlay.Height(), x, y, kOverlayAlpha);
}

// ---- Pictures ----

// BGRA of even size, without the last column or row of an odd one.
Frame EvenBgra(const Frame& picture) {
    Frame bgra(FormatOf(Layout::Bgra), picture.Width() / 2 * 2, picture.Height() / 2 * 2);
    Frame whole;
    Reorder(picture, bgra.Format(), whole);
    for (std::size_t row = 0; row < bgra.Height(); ++row) {
        std::memcpy(bgra.Pixel(0, row), whole.Pixel(0, row), bgra.Pitch());
    }
    return bgra;
}

Frame LoadPicture(const std::string& path) {
    InputFile input(path);
    Frame picture;
    WarnOfPicture(input.Name(), ReadPicture(input, input.Name(), PictureRequest(), picture), nullptr);
    return picture;
}

Frame LoadScene(const std::string& path) {
    Frame picture = LoadPicture(path);
    if (picture.Width() < kSmallestTestCard || picture.Height() < kSmallestTestCard) {
        FailFile(path, "is " + std::to_string(picture.Width()) + "x" + std::to_string(picture.Height()) +
                           "; the demo needs at least " + std::to_string(kSmallestTestCard) + " pixels on a side");
    }
    return EvenBgra(picture);
}

// A small second picture: the self-view in a video call.
Frame DrawSelfView(std::size_t width, std::size_t height) {
    Frame view(FormatOf(Layout::Rgba), width, height);
    Canvas canvas(view);
    canvas.Fill({0, 0, width, height}, Grey(255));
    const std::size_t edge = height / 32 + 1;
    for (std::size_t y = edge; y + edge < height; ++y) {
        canvas.Fill({edge, y, width - 2 * edge, 1}, {0, static_cast<std::uint8_t>(160 - 96 * y / height),
                                                     static_cast<std::uint8_t>(96 + 96 * y / height)});
    }
    const std::size_t radius = height / 6;
    canvas.Ring(width / 2, height / 3, radius, radius, {255, 208, 160});
    canvas.Fill(
        {width / 2 - radius * 3 / 2, height / 3 + radius * 5 / 4, radius * 3, height * 2 / 3 - radius * 5 / 4 - edge},
        {224, 96, 32});
    return EvenBgra(view);
}

struct TileSize {
    std::size_t width;
    std::size_t height;
};

// Keeps the picture's aspect; its longer side fills the tile.
TileSize FitTile(const Frame& picture, std::size_t side) {
    const std::size_t longest = std::max(picture.Width(), picture.Height());
    return {std::max<std::size_t>(picture.Width() * side / longest, 1),
            std::max<std::size_t>(picture.Height() * side / longest, 1)};
}

Frame DrawContactSheet(const std::vector<Stage>& stages) {
    constexpr std::size_t kTile = 400;
    constexpr std::size_t kMargin = 20;
    constexpr std::size_t kCaption = 34;
    constexpr std::size_t kColumns = 3;
    constexpr std::size_t kScale = 2;
    // Each row is as high as its tallest picture.
    std::vector<std::size_t> tops = {kMargin};
    for (std::size_t first = 0; first < stages.size(); first += kColumns) {
        std::size_t tallest = 0;
        for (std::size_t i = first; i < std::min(first + kColumns, stages.size()); ++i) {
            tallest = std::max(tallest, FitTile(stages[i].picture, kTile).height);
        }
        tops.push_back(tops.back() + kCaption + tallest + kMargin);
    }
    Frame sheet(FormatOf(Layout::Rgba), kColumns * (kTile + kMargin) + kMargin, tops.back());
    Canvas canvas(sheet);
    canvas.Fill({0, 0, sheet.Width(), sheet.Height()}, Grey(32));
    for (std::size_t i = 0; i < stages.size(); ++i) {
        const Frame& picture = stages[i].picture;
        const TileSize tile = FitTile(picture, kTile);
        const std::size_t x = kMargin + i % kColumns * (kTile + kMargin);
        const std::size_t y = tops[i / kColumns];
        canvas.Text(x, y, kScale, Grey(255), stages[i].caption);
        canvas.Picture({x, y + kCaption, tile.width, tile.height}, picture);
    }
    return sheet;
}

// The difference of two pictures, amplified around middle grey.
Frame DrawDifference(const Frame& before, const Frame& after) {
    constexpr int kGain = 16;
    Frame difference(before.Format(), before.Width(), before.Height());
    for (std::size_t i = 0; i < difference.Size(); ++i) {
        const int amplified = 128 + kGain * (after.Data()[i] - before.Data()[i]);
        difference.Data()[i] = static_cast<std::uint8_t>(std::clamp(amplified, 0, 255));
    }
    return difference;
}

// ---- The path ----

std::vector<Stage> WalkThePath(Frame scene, const Frame* second) {
    const Frame camera = FilmSideways(scene);
    // As it lies in memory: neither flipped nor rotated.
    Frame stored = RenderBgra(CaptureUyvy(camera, false, 0), KOR_VIDEOFRAMEDITHERLEVEL_Off);

    YuvImage frame = CaptureUyvy(camera, true, 90);
    Frame captured = RenderBgra(frame, KOR_VIDEOFRAMEDITHERLEVEL_Off);

    // At most a quarter of each side of the frame, near its bottom right corner; a user's picture keeps its aspect.
    Frame view(FormatOf(Layout::Rgba), frame.Width() / 4, frame.Height() / 4);
    if (second != nullptr) {
        const bool wide = second->Width() * view.Height() > second->Height() * view.Width();
        const std::size_t width =
            wide ? view.Width() : std::max<std::size_t>(view.Height() * second->Width() / second->Height(), 2);
        const std::size_t height =
            wide ? std::max<std::size_t>(view.Width() * second->Height() / second->Width(), 2) : view.Height();
        view.Reset(FormatOf(Layout::Rgba), width, height);
        Canvas(view).Picture({0, 0, width, height}, *second);
    } else {
        view = DrawSelfView(view.Width(), view.Height());
    }
    const YuvImage overlay = CaptureBgra(EvenBgra(view));
    const std::size_t margin = frame.Height() / 24;
    Composite(frame, overlay, frame.Width() - overlay.Width() - margin, frame.Height() - overlay.Height() - margin);
    Frame composed = RenderBgra(frame, KOR_VIDEOFRAMEDITHERLEVEL_Off);
    Frame rendered = RenderBgra(frame, KOR_VIDEOFRAMEDITHERLEVEL_1);
    Frame noise = DrawDifference(composed, rendered);

    std::vector<Stage> stages;
    stages.push_back({"1-scene.png", "1 Scene", std::move(scene)});
    stages.push_back({"2-camera.png", "2 UYVY as it lies in memory", std::move(stored)});
    stages.push_back({"3-captured.png", "3 Captured: flip, rotate 90", std::move(captured)});
    stages.push_back(
        {"4-composed.png", "4 Overlay blended, alpha " + std::to_string(kOverlayAlpha), std::move(composed)});
    stages.push_back({"5-rendered.png", "5 Rendered to BGRA, dither 1", std::move(rendered)});
    stages.push_back({"6-noise.png", "6 Noise added, times 16", std::move(noise)});
    return stages;
}

struct DemoOptions {
    std::string directory;
    std::string picture;
    std::string overlay;
    std::optional<std::uint64_t> seed;
    OutputPolicy policy;
};

void MakeDirectory(const std::string& path) {
    struct stat status = {};
    const bool exists = stat(path.c_str(), &status) == 0;
    if (exists && !S_ISDIR(status.st_mode)) {
        FailFile(path, "is a file; expected a directory");
    }
    if (!exists && mkdir(path.c_str(), 0777) != 0) {
        FailFile(path, std::string("cannot be created: ") + std::strerror(errno));
    }
}

void RunDemo(const DemoOptions& options) {
    if (options.seed) {
        SeedRandom(*options.seed, 0);
    }
    Frame scene = options.picture.empty() ? EvenBgra(DrawTestCard(1280, 720)) : LoadScene(options.picture);
    Frame second;
    if (!options.overlay.empty()) {
        second = LoadPicture(options.overlay);
    }
    MakeDirectory(options.directory);
    std::vector<Stage> stages = WalkThePath(std::move(scene), options.overlay.empty() ? nullptr : &second);
    Frame sheet = DrawContactSheet(stages);
    stages.push_back({"contact-sheet.png", "All stages", std::move(sheet)});
    for (const Stage& stage : stages) {
        const std::string path = options.directory + "/" + stage.file;
        WritePicture(path, PictureKind::Png, stage.picture, options.policy);
        std::printf("%s: %s\n", path.c_str(), stage.caption.c_str());
    }
}

}  // namespace

void AddDemo(CLI::App& app) {
    const auto options = std::make_shared<DemoOptions>();
    CLI::App* command =
        app.add_subcommand("demo", "Follow a frame from camera to screen and write a picture of each stage");
    command->add_option("DIRECTORY", options->directory, "where to put the pictures; created if missing")
        ->required()
        ->type_name("");
    command->add_option("PICTURE", options->picture, "what the camera sees, PNG, JPEG or PPM; default: the test card")
        ->type_name("");
    command
        ->add_option("--overlay", options->overlay,
                     "what to blend over it, PNG, JPEG or PPM; default: a drawn self-view")
        ->type_name("PICTURE");
    AddForceOption(*command, options->policy.force);
    AddSeedOption(*command, options->seed);
    command->footer(
        "A camera on its side delivers UYVY, bottom row first. The frame is captured with a flip and a rotation\n"
        "by 90 degrees, a second picture is blended over it, and it is rendered to BGRA with dither level 1. A\n"
        "picture with an odd side loses its last column or row.");
    command->callback([options] { RunDemo(*options); });
}

}  // namespace korframe
