// A command line of any words, one per line, taken apart for the command that its first word names.
// Nothing is run.

#include "tests/fuzz/targets/host.hpp"
#include "tools/zsp/io/failure.hpp"

#include <algorithm>
#include <vector>

using namespace zsp::fuzz;
using namespace zsp::host;

namespace {

struct Named {
    const char* name;
    Command (*make)();
};
constexpr std::array kCommands = std::to_array<Named>({{"encode", encodeCommand},
                                                       {"decode", decodeCommand},
                                                       {"codecs", codecsCommand},
                                                       {"aec", aecCommand},
                                                       {"vad", vadCommand},
                                                       {"alc", alcCommand},
                                                       {"demo", demoCommand},
                                                       {"info", infoCommand},
                                                       {"selftest", selftestCommand}});

std::vector<std::string> linesOf(std::string text)
{
    std::vector<std::string> lines;
    for (std::size_t end = 0; end != std::string::npos && lines.size() < 40;) {
        end = text.find('\n');
        lines.push_back(text.substr(0, end));
        lines.back().resize(std::min(lines.back().find('\0'), lines.back().size()));
        text.erase(0, end == std::string::npos ? end : end + 1);
    }
    return lines;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    [[maybe_unused]] static FILE* const silent = std::freopen("/dev/null", "w", stdout);
    std::vector<std::string> words = linesOf({data, data + size});
    for (const Named& named : kCommands) {
        if (named.name != words[0]) continue;
        Command command = named.make();
        bool ran = false;
        const auto kept = command.run; // which owns what the options write to
        command.run = [&](const Files& files) {
            ran = true;
            must(files.inputs.size() <= command.files.inputs.size(), "no file is too many");
            for (const std::string& name : files.inputs)
                must(!name.empty(), "every file has a name");
        };
        words.erase(words.begin());
        try {
            runCommand(command, words);
        } catch (const UsageError& error) {
            must(!ran && *error.what() != 0, "what makes no sense is told, and not run");
        }
        break;
    }
    suggestion(words.empty() ? "" : words[0], {"encode", "decode", "codecs"});
    return 0;
}
