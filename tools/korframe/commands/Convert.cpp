// korframe convert: from any layout to any other that the library can reach, through any steps.
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "commands/Commands.h"
#include "commands/Options.h"
#include "commands/Values.h"
#include "pipeline/Pipeline.h"

namespace korframe {

namespace {

struct ConvertOptions {
    std::string input;
    std::string output;
    InputOptions from;
    OutputOptions to;
    std::string matrix;
    // One value for each time that the option of a step is given.
    std::vector<KorImageRotationDegree> angles;
    std::vector<KorVideoFrameDitherLevel> levels;
    std::vector<std::string> overlays;
    std::vector<Layout> layouts;
};

bool IsRendered(const PixelFormat& format) {
    return format.planeCount == 1;
}

// The steps in the order of the command line.
void AppendSteps(ChainRequest& request, const CLI::App& command, const ConvertOptions& options) {
    std::map<std::string, std::size_t> seen;
    for (const CLI::Option* option : command.parse_order()) {
        const std::string name = option->get_name();
        const std::size_t nth = seen[name]++;
        Step step = {StepKind::Flip};
        if (name == "--mirror") {
            step.kind = StepKind::Mirror;
        } else if (name == "--rotate") {
            step.kind = StepKind::Rotate;
            step.angle = options.angles[nth];
        } else if (name == "--dither") {
            step.kind = StepKind::Dither;
            step.level = options.levels[nth];
        } else if (name == "--blend") {
            step.kind = StepKind::Blend;
            step.overlay = request.overlays.size();
            request.overlays.push_back(ParseOverlay(name, options.overlays[nth]));
            request.overlays.back().input.maxPixels = options.from.raw.maxPixels;
        } else if (name == "--render") {
            step.kind = StepKind::Render;
            step.layout = &FormatOf(options.layouts[nth]);
        } else if (name != "--flip") {
            continue;
        }
        if (step.kind != StepKind::Rotate || step.angle != 0) {
            request.steps.push_back(step);
        }
    }
}

void RunConvert(const CLI::App& command, const ConvertOptions& options) {
    ChainRequest request;
    AppendSteps(request, command, options);
    options.from.Fill(request, options.input);
    request.matrix = options.matrix;
    options.to.Fill(request, options.output);
    RunChain(request);
}

}  // namespace

void AddConvert(CLI::App& app) {
    const auto options = std::make_shared<ConvertOptions>();
    CLI::App* command =
        app.add_subcommand("convert", "Convert pictures, clips and raw frames, with steps in any order");
    command->add_option("INPUT", options->input, kInputHelp)->required()->type_name("");
    AddOutputArgument(*command, options->output);
    options->from.Add(*command);
    options->to.Add(*command);
    AddMatrixOption(*command, options->matrix);
    const auto addStep = [&](const char* name, auto& values, const char* type, const char* help) {
        return command->add_option(name, values, help)->type_name(type)->allow_extra_args(false);
    };
    command->add_flag("--flip", "step: top to bottom");
    command->add_flag("--mirror", "step: left to right");
    addStep("--rotate", options->angles, "DEGREES", "step: rotate clockwise by 0, 90, 180 or 270 degrees")
        ->transform(IsAngle());
    addStep("--dither", options->levels, "LEVEL",
            "step: noise, off, 0 (weakest), 1 or 2 (strongest); the renderer's own if rendering comes next, otherwise "
            "by the filter for planes")
        ->transform(IsDitherLevel());
    addStep(
        "--blend", options->overlays, "OVERLAY[:X,Y[,ALPHA]]",
        "step: blend a picture or Y4M clip over the frames at column X and row Y, with an opacity from 0 to 255 or, "
        "for own, its alpha channel");
    addStep("--render", options->layouts, "LAYOUT",
            "step: render the planes to frames of the layout, to be written, or captured again for the steps that "
            "follow")
        ->transform(IsLayout(IsRendered));
    command->footer(
        std::string(
            "Steps apply in the order given, any number of times. An overlay that ends keeps its last frame; a\n"
            "picture as INPUT lasts as long as the longest clip blended over it.\n\nLayouts:\n") +
        FormatTable() + "\n" + kMatrixFileHelp +
        "\n"
        "Odd sizes: 4:2:0 is rendered and packed in blocks of 2x2, so the last column and row are repeated to\n"
        "make the size even, and cropped afterwards. When flipped, mirrored or rotated, 4:2:0 chroma of odd\n"
        "sizes may be one pixel off. Transparent pictures are composited over black.");
    command->callback([command, options] { RunConvert(*command, *options); });
}

}  // namespace korframe
