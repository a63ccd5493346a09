// zsp selftest: whether the installed library gives what the reference vectors want.

#include "tools/zsp/cli/values.hpp"
#include "tools/zsp/commands/commands.hpp"

#include "tools/zsp/io/files.hpp"
#include "tools/zsp/report/conformance.hpp"
#include "tools/zsp/system/system.hpp"

#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>

namespace zsp::host {

namespace {

namespace fs = std::filesystem;

/// The vectors that were installed with the program.
fs::path installedVectors()
{
    return (programFile().parent_path() / ZSP_VECTORS).lexically_normal();
}

void runSelftest(const std::string& directory, const std::string& report)
{
    requireProcessor();
    const fs::path vectors = directory.empty() ? installedVectors() : fs::path(directory);
    if (!fs::is_directory(vectors)) throw Failure(vectors.string(), "no directory of vectors");
    const auto write = report.empty() ? nullptr : conformanceWriter(report);

    // Of a directory of one's own a family may be absent; of the installed ones it may not.
    const Conformance result = checkConformance(vectors, directory.empty());
    std::fputs(textOf(result).c_str(), stdout);
    if (write) write(result, report);
    if (result.total == 0) throw Failure(vectors.string(), "no vectors of any family");
    if (result.passed < result.total)
        throw Failure(countOf(result.total - result.passed, "check") + " of " +
                      std::to_string(result.total) + " failed");
}

} // namespace

Command selftestCommand()
{
    const auto report = std::make_shared<std::string>();
    return {
        .name = "selftest",
        .summary = "Check the library against reference vectors, here and now",
        .description =
            "Runs the reference vectors through the installed library, in one call and in "
            "blocks, and compares every word. Prints passed and all per family, with "
            "library version and processor.",
        .files = {{"[DIR]"},
                  "",
                  "DIR holds vectors, a folder per family (default: those that "
                  "were installed with zsp)."},
        .options = {{"--report", 0, "FILE",
                     "Write what came of it: a page .html, or .json, or .txt", takeText(*report)}},
        .examples = "  zsp selftest\n"
                    "  zsp selftest --report conformance.html\n",
        .run = [report](const Files& files) {
            runSelftest(files.inputs.empty() ? "" : files.inputs[0], *report);
        }};
}

} // namespace zsp::host
