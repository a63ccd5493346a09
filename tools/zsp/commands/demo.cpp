// zsp demo: the library's main jobs on real speech, with figures, sound files and a report.

#include "tools/zsp/demo/demo.hpp"

#include "signals/measure.hpp"
#include "tools/zsp/commands/commands.hpp"
#include "tools/zsp/demo/bundled.hpp"
#include "tools/zsp/io/failure.hpp"
#include "tools/zsp/io/text.hpp"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>

namespace zsp::host {

namespace {

struct Speech {
    Audio narrow, wide; // 8 kHz, 16 kHz
};

Speech userSpeech(const std::string& path)
{
    AudioReader reader(path);
    const Audio audio = readMono(reader);
    return {convertedTo(8000, audio, path), convertedTo(16000, audio, path)};
}

} // namespace

double timesRealTime(double seconds, const std::function<void()>& work)
{
    using Clock = std::chrono::steady_clock;
    double best = 0.0, total = 0.0;
    while (total < 0.1) {
        const auto start = Clock::now();
        work();
        const double taken =
            std::max(std::chrono::duration<double>(Clock::now() - start).count(), 1e-9);
        total += taken;
        best = std::max(best, seconds / taken);
    }
    return best;
}

void runDemo(const DemoOptions& options)
{
    const bool bundled = options.input.empty();
    const std::string name = bundled ? "bundled telephone prompts" : options.input;
    const auto [narrow, wide] =
        bundled ? Speech{bundledSpeech8k(), bundledSpeech16k()} : userSpeech(options.input);

    std::error_code error;
    std::filesystem::create_directories(options.directory, error);
    if (error) throw Failure(options.directory, error.message());

    for (const Audio* speech : {&narrow, &wide})
        std::printf("Input: %s, %.1f s at %d kHz, %.1f dBFS\n", name.c_str(), speech->seconds(),
                    speech->rate / 1000, signals::levelDbfs(speech->samples));
    Report report(
        "Speech through the library",
        format(
            "%.1f s of telephone speech and %.1f s of wide-band speech (%s) in whole calls, coded, "
            "levelled and searched for pauses by the zspsc library: what came out, "
            "and how much of the input it kept.",
            narrow.seconds(), wide.seconds(), name.c_str()));
    demoCalls(narrow, wide, options.directory, report);
    demoG726(narrow, options.directory, report);
    demoG722(wide, options.directory, report);
    demoLevel(wide, options.directory, report);
    demoVad(narrow, options.directory, report);

    const std::string path = options.directory + "/report.html";
    report.write(path);
    std::printf("\nReport: %s\n", path.c_str());
}

} // namespace zsp::host
