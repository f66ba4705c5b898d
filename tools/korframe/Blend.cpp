// korframe blend: the chain of convert with one overlay, told by options of its own.
#include <memory>
#include <string>

#include "Commands.h"
#include "Errors.h"
#include "Options.h"
#include "Pipeline.h"

namespace korframe {

namespace {

struct BlendOptions {
    std::string background;
    std::string overlay;
    std::string output;
    InputOptions from;
    std::string overlayFrom;
    std::string overlaySize;
    OutputOptions to;
    std::string dither = "off";
    std::string matrix;
    std::string at = "0,0";
    std::string alpha = "255";
    bool alphaChannel = false;
};

OverlayRequest RequestOverlay(const BlendOptions& options) {
    InputOptions input;
    input.from = options.overlayFrom;
    input.size = options.overlaySize;
    OverlayRequest overlay;
    overlay.option = "--at " + options.at;
    overlay.input = input.Request(options.overlay);
    overlay.input.sizeOption = "--overlay-size";
    overlay.input.fromOption = "--overlay-from";
    overlay.input.keepAlpha = options.alphaChannel;
    overlay.at = ParsePosition("--at", options.at);
    overlay.alpha = static_cast<std::uint8_t>(ParseUnsigned("--alpha", options.alpha, 255));
    overlay.ownAlpha = options.alphaChannel;
    return overlay;
}

void RunBlend(const BlendOptions& options, bool alphaGiven) {
    ChainRequest request;
    request.overlays.push_back(RequestOverlay(options));
    if (options.alphaChannel && alphaGiven) {
        FailUsage("--alpha " + options.alpha + ": --alpha-channel is given as well; one of the two is wanted");
    }
    request.steps.push_back({StepKind::Blend});
    Step dither = {StepKind::Dither};
    dither.level = ParseDitherLevel("--dither", options.dither);
    request.steps.push_back(dither);
    request.input = options.from.Request(options.background);
    request.matrix = options.matrix;
    options.to.Fill(request, options.output);
    RunChain(request);
}

}  // namespace

void AddBlend(CLI::App& app) {
    const auto options = std::make_shared<BlendOptions>();
    CLI::App* command = app.add_subcommand("blend", "Lays one picture or clip over another");
    command->add_option("BACKGROUND", options->background, "picture, Y4M file or raw frames; - for standard input")
        ->required()
        ->type_name("");
    command->add_option("OVERLAY", options->overlay, "what to lay over it; - for standard input")
        ->required()
        ->type_name("");
    AddOutputArgument(*command, options->output);
    command
        ->add_option("--at", options->at,
                     "column and row of the background for the overlay's left top corner; may be negative")
        ->type_name("X,Y");
    CLI::Option* alpha =
        command->add_option("--alpha", options->alpha, "opacity of the overlay, 0 to 255 (default)")->type_name("N");
    command->add_flag("--alpha-channel", options->alphaChannel,
                      "take the opacity from the overlay's own alpha channel");
    options->from.Add(*command);
    command->add_option("--overlay-from", options->overlayFrom, "layout of raw frames of the overlay")
        ->type_name("LAYOUT");
    command->add_option("--overlay-size", options->overlaySize, "width and height of raw frames of the overlay")
        ->type_name("WxH");
    options->to.Add(*command);
    command->add_option("--dither", options->dither, kDitherHelp)->type_name("LEVEL");
    AddMatrixOption(*command, options->matrix);
    command->footer(
        "The output is as long as the background; an overlay that ends before it stays with its last frame. A picture\n"
        "as background lasts as long as the overlay. What lies outside the background is cut off. Chroma is laid at\n"
        "half the position, rounded down.\n\n" +
        std::string(kMatrixFileHelp));
    command->callback([alpha, options] { RunBlend(*options, alpha->count() > 0); });
}

}  // namespace korframe
