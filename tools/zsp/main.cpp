// The command line of zsp. Exit status: 0 when all went well, 1 when something failed, 2 when the
// command line makes no sense.

#include "tools/zsp/commands/commands.hpp"
#include "tools/zsp/io/failure.hpp"
#include "tools/zsp/io/text.hpp"
#include "tools/zsp/system/system.hpp"

#include "zspcore.h"
#include "zspvoice.h"

#include <algorithm>
#include <cstdio>
#include <exception>

namespace zsp::host {

bool processorSuffices()
{
    constexpr std::uint64_t kNeeded = ZSP_CPU_AVX2 | ZSP_CPU_FMA | ZSP_CPU_BMI2;
    return (zspGetEnabledCpuFeatures() & kNeeded) == kNeeded;
}

void requireProcessor()
{
    if (!processorSuffices())
        throw Failure("this processor lacks AVX2, FMA or BMI2, which the library needs");
}

namespace {

std::vector<Command> allCommands()
{
    return {encodeCommand(), decodeCommand(), codecsCommand(),   aecCommand(), vadCommand(),
            alcCommand(),    demoCommand(),   selftestCommand(), infoCommand()};
}

std::string overview(const std::vector<Command>& commands)
{
    std::string text = "Usage: zsp COMMAND [OPTIONS] FILES\n\n"
                       "Speech coding and voice processing for audio files.\n\nCommands:\n";
    for (const Command& command : commands)
        text += format("  %-9s", command.name.c_str()) + command.summary + "\n";
    return text + "  help     Say more about a command: zsp help encode, or zsp encode --help\n\n"
                  "The last file is the output, or -o FILE names it; - is standard input or "
                  "output.\nzsp --version tells the versions, zsp demo shows everything at once.\n";
}

const Command& commandNamed(const std::vector<Command>& commands, const std::string& name)
{
    const auto found = std::find_if(commands.begin(), commands.end(),
                                    [&name](const Command& c) { return c.name == name; });
    if (found != commands.end()) return *found;
    if (name == "g722" || name == "g726")
        throw UsageError("no command " + name + ": it is zsp encode --codec " + name +
                         " and zsp decode --codec " + name + " now");
    if (name.starts_with('-')) throw UsageError(name + ": unknown option");
    std::vector<std::string> names = {"help"};
    for (const Command& command : commands)
        names.push_back(command.name);
    throw UsageError("no command " + name + suggestion(name, names));
}

/// What the arguments ask for; `hint` becomes what tells more when that makes no sense.
void run(const std::vector<std::string>& arguments, std::string& hint)
{
    const std::vector<Command> commands = allCommands();
    if (arguments.empty()) throw UsageError("no command is named");
    const std::string& name = arguments[0];
    if (name == "--help" || name == "-h" || (name == "help" && arguments.size() == 1)) {
        std::fputs(overview(commands).c_str(), stdout);
    } else if (name == "help") {
        std::fputs(helpText(commandNamed(commands, arguments[1])).c_str(), stdout);
    } else if (name == "--version" || name == "-V") {
        std::printf("zsp %d.%d.%d, with libzspvoice %d.%d.%d\n", ZSPSC_VERSION_MAJOR,
                    ZSPSC_VERSION_MINOR, ZSPSC_VERSION_PATCH, ZSPVOICE_VERSION_MAJOR,
                    ZSPVOICE_VERSION_MINOR, ZSPVOICE_VERSION_PATCH);
    } else {
        const Command& command = commandNamed(commands, name);
        hint = "zsp " + command.name + " --help";
        runCommand(command, {arguments.begin() + 1, arguments.end()});
    }
    if (std::fflush(stdout) != 0) failWithErrno("-");
}

int runAndTell(int argc, char** argv)
{
    std::string hint = "zsp --help";
    try {
        run({argv + std::min(argc, 1), argv + argc}, hint);
        return 0;
    } catch (const UsageError& error) {
        std::fprintf(stderr, "zsp: %s\nTry '%s'.\n", error.what(), hint.c_str());
        return 2;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "zsp: %s\n", error.what());
        return 1;
    }
}

} // namespace

} // namespace zsp::host

int main(int argc, char** argv)
{
    try {
        zsp::host::passBytes();
        return zsp::host::runAndTell(argc, argv);
    } catch (...) { // memory is short already while the command line is set up
        std::fputs("zsp: out of memory\n", stderr);
        return 1;
    }
}
