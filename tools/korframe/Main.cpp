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

#include "Commands.h"
#include "Errors.h"
#include "Kor/Utils/SysDep/KorBaseTypes.h"
#include "OutputFile.h"

namespace korframe {

namespace {

constexpr void (*kCommands[])(CLI::App&) = {
    AddConvert,
    AddBlend,
    AddInfo,
    AddCompare,
    AddFormats,
    AddTestCard,
    AddDemo,
    AddVerify,
    AddBench,
};

std::string Version() {
    return "korframe " + std::to_string(KOR_VERSION_MAJOR) + "." + std::to_string(KOR_VERSION_MINOR) + "." +
           std::to_string(KOR_VERSION_PATCH);
}

// A descriptor that was closed before the start would go to the next file opened, which then passes for a standard
// stream. Each is held by one on which its use fails.
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

// The first option that nobody knows. It is the likelier mistake where a positional is missing, too.
std::string UnknownOption(const CLI::App& app) {
    const std::vector<std::string> unknown = app.remaining(true);
    const auto found = std::find_if(unknown.begin(), unknown.end(), [](const std::string& argument) {
        return argument.size() > 1 && argument[0] == '-' && argument != "--";
    });
    return found == unknown.end() ? "" : *found;
}

int Run(int argc, char** argv) {
    CLI::App app("Converts, turns, renders and blends raw video frames.", "korframe");
    app.set_version_flag("--version", Version());
    app.require_subcommand(1);
    for (const auto add : kCommands) {
        add(app);
    }
    const auto isNamed = [argv](const CLI::App* command) { return command->get_name() == argv[1]; };
    if (argc > 1 && argv[1][0] != '-' && argv[1][0] != 0 && app.get_subcommands(isNamed).empty()) {
        return Report(std::string(argv[1]) + " is no subcommand; korframe --help tells the usage", ExitStatus::Usage);
    }
    try {
        app.parse(argc, argv);  // runs the subcommand that is named
        FlushStandardOutput();
    } catch (const CLI::Success& wish) {
        app.exit(wish);  // --help, --version
        std::cout.flush();
        FlushStandardOutput();
        return static_cast<int>(ExitStatus::Success);
    } catch (const CLI::ParseError& error) {
        const std::string command =
            app.get_subcommands().empty() ? "" : " " + app.get_subcommands().front()->get_name();
        const std::string unknown = UnknownOption(app);
        const std::string problem = unknown.empty() ? error.what() : unknown + " is no option";
        return Report(problem + "; korframe" + command + " --help tells the usage", ExitStatus::Usage);
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
