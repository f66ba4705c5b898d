// korframe: raw video frames on the command line, through the Kor library.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "commands/Commands.h"
#include "conformance/digest/Dispatched.h"
#include "io/Errors.h"
#include "io/OutputFile.h"
#include "Kor/Video/Common/KorYuv420.h"

namespace korframe {

namespace {

constexpr void (*kCommands[])(CLI::App&) = {
    AddConvert, AddBlend, AddInfo, AddCompare, AddFormats, AddTestCard, AddDemo, AddVerify, AddBench,
};

std::string Version() {
    return "korframe " + std::to_string(KOR_VERSION_MAJOR) + "." + std::to_string(KOR_VERSION_MINOR) + "." +
           std::to_string(KOR_VERSION_PATCH) + " (target " + KorYuv420Target() + ")";
}

// A standard descriptor that was closed at the start would go to the next file opened, which would then pass for that
// stream. Each is occupied by a file on which using it fails.
void OccupyStandardDescriptors() {
    for (const int number : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(number, F_GETFD) < 0 && errno == EBADF &&
            open("/dev/null", number == STDIN_FILENO ? O_WRONLY : O_RDONLY) != number) {
            FailFile("/dev/null", std::string("cannot be opened: ") + std::strerror(errno));
        }
    }
}

int Report(const std::string& message, ExitStatus status) {
    SayLine(message);
    return static_cast<int>(status);
}

// The first unknown option, which is the likelier mistake even if a positional argument is missing.
std::string UnknownOption(const CLI::App& app) {
    const std::vector<std::string> unknown = app.remaining(true);
    const auto found = std::find_if(unknown.begin(), unknown.end(), [](const std::string& argument) {
        return argument.size() > 1 && argument[0] == '-' && argument != "--";
    });
    return found == unknown.end() ? "" : *found;
}

// CLI11's own words where they are plain.
std::string Explain(const CLI::App& app, const CLI::ParseError& error) {
    const std::vector<CLI::App*> commands = app.get_subcommands();
    const std::string help =
        "; see korframe " + (commands.empty() ? "" : commands.front()->get_name() + " ") + "--help";
    if (const std::string unknown = UnknownOption(app); !unknown.empty()) {
        return "unknown option '" + unknown + "'" + help;
    }
    const std::string message = error.what();
    switch (static_cast<CLI::ExitCodes>(error.get_exit_code())) {
        case CLI::ExitCodes::ValidationError:
            return message;  // it says what was expected
        case CLI::ExitCodes::ArgumentMismatch:
            return message.substr(0, message.find(':')) + ": expected exactly one value" + help;
        case CLI::ExitCodes::ExtrasError:
            return "unexpected argument '" + app.remaining(true).front() + "'" + help;
        default:
            return message + help;
    }
}

int Run(int argc, char** argv) {
    if (const std::string complaint = kit::ComplaintAboutEnvironment(); !complaint.empty()) {
        FailUsage(complaint);
    }
    CLI::App app("Convert, rotate, dither, blend and render raw video frames.", "korframe");
    app.set_version_flag("--version", Version());
    app.require_subcommand(1);
    for (const auto add : kCommands) {
        add(app);
    }
    const auto isNamed = [argv](const CLI::App* command) { return command->get_name() == argv[1]; };
    if (argc > 1 && argv[1][0] != '-' && argv[1][0] != 0 && app.get_subcommands(isNamed).empty()) {
        return Report(std::string("unknown subcommand '") + argv[1] + "'; see korframe --help", ExitStatus::Usage);
    }
    try {
        app.parse(argc, argv);  // runs the subcommand
        FlushStandardOutput();
    } catch (const CLI::Success& request) {
        app.exit(request);  // --help, --version
        std::cout.flush();
        FlushStandardOutput();
        return static_cast<int>(ExitStatus::Success);
    } catch (const CLI::ParseError& error) {
        return Report(Explain(app, error), ExitStatus::Usage);
    }
    return static_cast<int>(ExitStatus::Success);
}

}  // namespace

}  // namespace korframe

int main(int argc, char** argv) {
    using korframe::ExitStatus;
    try {
        korframe::OccupyStandardDescriptors();
        korframe::RemoveTemporariesOnSignals();
        return korframe::Run(argc, argv);
    } catch (const korframe::Verdict& verdict) {
        return static_cast<int>(verdict.status);
    } catch (const korframe::Error& error) {
        return korframe::Report(error.what(), error.Status());
    } catch (const std::bad_alloc&) {
        return korframe::Report(korframe::kOutOfMemory, ExitStatus::Failure);
    } catch (const std::exception& error) {
        return korframe::Report(error.what(), ExitStatus::Failure);
    }
}
