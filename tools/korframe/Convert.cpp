// korframe convert: from any layout to any other that the library reaches.
#include <memory>
#include <string>
#include <vector>

#include "Commands.h"
#include "Options.h"
#include "Parse.h"
#include "Pipeline.h"

namespace korframe {

namespace {

struct ConvertOptions {
    std::string input;
    std::string output;
    InputOptions from;
    OutputOptions to;
    std::string matrix;
    std::vector<std::string> angles;
};

// The steps in the order in which they stand on the command line.
std::vector<Step> OrderedSteps(const CLI::App& command, const ConvertOptions& options) {
    std::vector<Step> steps;
    std::size_t angle = 0;
    for (const CLI::Option* option : command.parse_order()) {
        const std::string name = option->get_name();
        if (name == "--flip") {
            steps.push_back({StepKind::Flip});
        } else if (name == "--mirror") {
            steps.push_back({StepKind::Mirror});
        } else if (name == "--rotate") {
            const Step turn = {StepKind::Turn, ParseAngle(name, options.angles[angle++])};
            if (turn.angle != 0) {
                steps.push_back(turn);
            }
        }
    }
    return steps;
}

void RunConvert(const CLI::App& command, const ConvertOptions& options) {
    const std::vector<Step> steps = OrderedSteps(command, options);
    const InputRequest inputRequest = options.from.Request(options.input);
    WriterRequest request = options.to.Request(options.output);
    std::unique_ptr<FrameSource> source = OpenSource(inputRequest);
    request.matrix = RequestMatrix(options.matrix, source->Info().format->IsRgb(), WritesRgb(request.kind));

    Reader reader(std::move(source), request.kind.layout, request.matrix, steps);
    Writer writer(request, reader.Info());
    YuvImage image;
    Pump(writer, [&] {
        const bool more = reader.Read(image);
        if (more) {
            writer.Write(image);
        }
        return more;
    });
}

}  // namespace

void AddConvert(CLI::App& app) {
    const auto options = std::make_shared<ConvertOptions>();
    CLI::App* command = app.add_subcommand("convert", "Converts, turns and renders pictures, clips and raw frames");
    command->add_option("INPUT", options->input, "PNG, JPEG, PPM or Y4M file or raw frames; - for standard input")
        ->required()
        ->type_name("");
    AddOutputArgument(*command, options->output);
    options->from.Add(*command);
    options->to.Add(*command);
    AddMatrixOption(*command, options->matrix);
    command->add_flag("--flip", "step: top to bottom");
    command->add_flag("--mirror", "step: left to right");
    command->add_option("--rotate", options->angles, "step: turn clockwise by 0, 90, 180 or 270 degrees")
        ->type_name("DEGREES")
        ->allow_extra_args(false);
    command->footer(std::string("Steps are taken in the order given, any number of times.\n\nLayouts:\n") +
                    FormatTable() + "\n" + kMatrixFileHelp +
                    "\nOdd sizes: 4:2:0 is rendered and packed in blocks of 2x2, so the last column and row are "
                    "repeated to make the\n"
                    "size even, and cut off afterwards. Flipped, mirrored or turned, 4:2:0 chroma of odd sizes may lie "
                    "one pixel off.\n"
                    "Transparent pictures are laid over black.");
    command->callback([command, options] { RunConvert(*command, *options); });
}

}  // namespace korframe
