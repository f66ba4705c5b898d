// korframe convert: from any layout to any other that the library reaches, by any steps.
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Commands.h"
#include "Errors.h"
#include "Options.h"
#include "Parse.h"
#include "Pipeline.h"
#include "Render.h"

namespace korframe {

namespace {

struct ConvertOptions {
    std::string input;
    std::string output;
    InputOptions from;
    OutputOptions to;
    std::string matrix;
    // The values of each step's option, one for each time it is given.
    std::map<std::string, std::vector<std::string>> values;
};

bool IsRendered(const PixelFormat& format) {
    return !format.IsPlanarYuv() && Render::Reaches(Layout::I420, format.layout);
}

void AppendStep(ChainRequest& request, const std::string& name, const std::string& value) {
    Step step = {StepKind::Flip};
    if (name == "--mirror") {
        step.kind = StepKind::Mirror;
    } else if (name == "--rotate") {
        step.kind = StepKind::Turn;
        step.angle = ParseAngle(name, value);
        if (step.angle == 0) {
            return;
        }
    } else if (name == "--dither") {
        step.kind = StepKind::Dither;
        step.level = ParseDitherLevel(name, value);
    } else if (name == "--blend") {
        step.kind = StepKind::Blend;
        step.overlay = request.overlays.size();
        request.overlays.push_back(ParseOverlay(name, value));
    } else if (name == "--render") {
        step.kind = StepKind::Render;
        step.layout = &ParseFormat(name, value, IsRendered);
    }
    request.steps.push_back(step);
}

// The steps in the order in which they stand on the command line.
void AppendSteps(ChainRequest& request, const CLI::App& command, const ConvertOptions& options) {
    std::map<std::string, std::size_t> seen;
    for (const CLI::Option* option : command.parse_order()) {
        const std::string name = option->get_name();
        if (name == "--flip" || name == "--mirror") {
            AppendStep(request, name, "");
        } else if (const auto found = options.values.find(name); found != options.values.end()) {
            AppendStep(request, name, found->second[seen[name]++]);
        }
    }
}

void RunConvert(const CLI::App& command, const ConvertOptions& options) {
    ChainRequest request;
    AppendSteps(request, command, options);
    request.input = options.from.Request(options.input);
    request.matrix = options.matrix;
    options.to.Fill(request, options.output);
    RunChain(request);
}

}  // namespace

void AddConvert(CLI::App& app) {
    const auto options = std::make_shared<ConvertOptions>();
    CLI::App* command = app.add_subcommand("convert", "Converts pictures, clips and raw frames, by steps in any order");
    command->add_option("INPUT", options->input, "PNG, JPEG, PPM or Y4M file or raw frames; - for standard input")
        ->required()
        ->type_name("");
    AddOutputArgument(*command, options->output);
    options->from.Add(*command);
    options->to.Add(*command);
    AddMatrixOption(*command, options->matrix);
    const auto addStep = [&](const std::string& name, const char* type, const std::string& help) {
        command->add_option(name, options->values[name], "step: " + help)->type_name(type)->allow_extra_args(false);
    };
    command->add_flag("--flip", "step: top to bottom");
    command->add_flag("--mirror", "step: left to right");
    addStep("--rotate", "DEGREES", "turn clockwise by 0, 90, 180 or 270 degrees");
    addStep("--dither", "LEVEL",
            "noise: off, 0 (weakest), 1 or 2 (strongest); the renderer's own where rendering comes next, else by the "
            "filter for planes");
    addStep("--blend", "OVERLAY[:X,Y[,ALPHA]]",
            "lay a picture or Y4M clip over the frames at column X and row Y, with an opacity of 0 to 255 or, for own, "
            "that of its alpha channel");
    addStep("--render", "LAYOUT",
            "make frames of the layout of the planes, to be written, or to be captured again for what follows");
    command->footer(std::string("Steps are taken in the order given, any number of times. An overlay that ends stays with "
                                "its last frame; a picture\n"
                                "as INPUT lasts as long as the longest clip that is laid over it.\n\nLayouts:\n") +
                    FormatTable() + "\n" + kMatrixFileHelp +
                    "\nOdd sizes: 4:2:0 is rendered and packed in blocks of 2x2, so the last column and row are "
                    "repeated to make the\n"
                    "size even, and cut off afterwards. Flipped, mirrored or turned, 4:2:0 chroma of odd sizes may lie "
                    "one pixel off.\n"
                    "Transparent pictures are laid over black.");
    command->callback([command, options] { RunConvert(*command, *options); });
}

}  // namespace korframe
