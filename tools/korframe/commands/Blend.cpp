// korframe blend: convert with one overlay, which has options of its own.
#include <memory>
#include <string>

#include "commands/Commands.h"
#include "commands/Options.h"
#include "commands/Values.h"
#include "pipeline/Pipeline.h"

namespace korframe {

namespace {

struct BlendOptions {
    std::string background;
    std::string overlay;
    std::string output;
    InputOptions from;
    RawOptions overlayFrom;
    OutputOptions to;
    KorVideoFrameDitherLevel dither = KOR_VIDEOFRAMEDITHERLEVEL_Off;
    std::string matrix;
    Position at;
    unsigned alpha = 255;
    bool alphaChannel = false;
};

OverlayRequest RequestOverlay(const BlendOptions& options) {
    OverlayRequest overlay;
    overlay.option = "--at " + std::to_string(options.at.x) + "," + std::to_string(options.at.y);
    overlay.input = options.overlayFrom.Request(options.overlay);
    overlay.input.sizeOption = "--overlay-size";
    overlay.input.fromOption = "--overlay-from";
    overlay.input.keepAlpha = options.alphaChannel;
    overlay.input.maxPixels = options.from.raw.maxPixels;
    overlay.input.alphaAdvice = "--alpha-channel blends by their alpha";
    overlay.at = options.at;
    overlay.alpha = static_cast<std::uint8_t>(options.alpha);
    overlay.ownAlpha = options.alphaChannel;
    return overlay;
}

void RunBlend(const BlendOptions& options) {
    ChainRequest request;
    request.overlays.push_back(RequestOverlay(options));
    Step dither = {StepKind::Dither};
    dither.level = options.dither;
    request.steps = {{StepKind::Blend}, dither};
    options.from.Fill(request, options.background);
    request.matrix = options.matrix;
    options.to.Fill(request, options.output);
    RunChain(request);
}

}  // namespace

void AddBlend(CLI::App& app) {
    const auto options = std::make_shared<BlendOptions>();
    CLI::App* command = app.add_subcommand("blend", "Blend one picture or clip over another");
    command->add_option("BACKGROUND", options->background, "picture, Y4M file or raw frames; - for standard input")
        ->required()
        ->type_name("");
    command->add_option("OVERLAY", options->overlay, "what to blend over it; - for standard input")
        ->required()
        ->type_name("");
    AddOutputArgument(*command, options->output);
    command
        ->add_option("--at", options->at,
                     "column and row of the background for the top left corner of the overlay; may be negative")
        ->check(IsPosition())
        ->type_name("X,Y");
    CLI::Option* alpha = command->add_option("--alpha", options->alpha, "opacity of the overlay, 0 to 255 (default)")
                             ->transform(IsWholeNumber(0, 255))
                             ->type_name("N");
    command->add_flag("--alpha-channel", options->alphaChannel, "take the opacity from the overlay's own alpha channel")
        ->excludes(alpha);
    options->from.Add(*command);
    command->add_option("--overlay-from", options->overlayFrom.from, "layout of raw frames of the overlay")
        ->transform(IsLayout())
        ->type_name("LAYOUT");
    command->add_option("--overlay-size", options->overlayFrom.size, "width and height of raw frames of the overlay")
        ->check(IsSize())
        ->type_name("WxH");
    options->to.Add(*command);
    command->add_option("--dither", options->dither, kDitherHelp)->transform(IsDitherLevel())->type_name("LEVEL");
    AddMatrixOption(*command, options->matrix);
    command->footer(
        "The output is as long as the background; an overlay that ends earlier keeps its last frame. A picture\n"
        "as background lasts as long as the overlay. Whatever lies outside the background is cropped. Chroma is\n"
        "placed at half the position, rounded down."
        "\n\n" +
        std::string(kMatrixFileHelp));
    command->callback([options] { RunBlend(*options); });
}

}  // namespace korframe
