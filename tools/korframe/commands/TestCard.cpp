// korframe testcard: draws a picture for trying out conversions.
#include "image/TestCard.h"

#include <memory>

#include "commands/Commands.h"
#include "commands/Options.h"
#include "commands/Values.h"
#include "io/Errors.h"
#include "io/PictureFile.h"

namespace korframe {

namespace {

struct TestCardOptions {
    std::string output;
    Size size = {1280, 720};
    OutputPolicy policy;
};

void RunTestCard(const TestCardOptions& options) {
    const PictureKind kind = IsStandardOutput(options.output) ? PictureKind::Png : PictureKindOfName(options.output);
    if (kind != PictureKind::Png && kind != PictureKind::Ppm) {
        FailUsage(options.output + ": expected a name that ends in .png or .ppm; a test card is a picture");
    }
    const Size size = options.size;
    if (size.width < kSmallestTestCard || size.height < kSmallestTestCard) {
        FailUsage("--size: expected at least " + std::to_string(kSmallestTestCard) +
                  " pixels on each side of a test card, not " + SizeText(size.width, size.height));
    }
    WritePicture(options.output, kind, DrawTestCard(size.width, size.height), options.policy);
}

}  // namespace

void AddTestCard(CLI::App& app) {
    const auto options = std::make_shared<TestCardOptions>();
    CLI::App* command = app.add_subcommand("testcard", "Draw a picture for trying out conversions");
    command->add_option("OUTPUT", options->output, "PNG or PPM file to write; - for PNG on standard output")
        ->required()
        ->type_name("");
    command->add_option("--size", options->size, "width and height")
        ->check(IsSize())
        ->default_str("1280x720")
        ->type_name("WxH");
    AddForceOption(*command, options->policy.force);
    command->callback([options] { RunTestCard(*options); });
}

}  // namespace korframe
