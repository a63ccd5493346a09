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
    return {resampled(audio, 8000), resampled(audio, 16000)};
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

namespace {

void runDemo(const std::string& input, const std::string& directory)
{
    const bool bundled = input.empty();
    const std::string name = bundled ? "bundled telephone prompts" : input;
    const auto [narrow, wide] =
        bundled ? Speech{bundledSpeech8k(), bundledSpeech16k()} : userSpeech(input);

    std::error_code error;
    std::filesystem::create_directories(directory, error);
    if (error) throw Failure(directory, error.message());

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
    demoCalls(narrow, wide, directory, report);
    demoG726(narrow, directory, report);
    demoByHearing(narrow, directory, report);
    demoG729(narrow, directory, report);
    demoG722(wide, directory, report);
    demoLevel(wide, directory, report);
    demoVad(narrow, directory, report);

    const std::string path = directory + "/report.html";
    report.write(path);
    std::printf("\nReport: %s\n", path.c_str());
}

} // namespace

Command demoCommand()
{
    return {.name = "demo",
            .summary = "Show everything on bundled speech, or yours, with a report to look at",
            .files = {{"[IN]"},
                      "[DIR]",
                      "IN is a recording of speech, - for standard input; without it there is "
                      "bundled speech. DIR is where the sounds and report.html go (default: "
                      "demo-out)."},
            .examples = "  zsp demo\n"
                        "  zsp demo speech.wav results\n",
            .run = [](const Files& files) {
                requireProcessor();
                runDemo(files.inputs.empty() ? "" : files.inputs[0],
                        files.output.empty() ? "demo-out" : files.output);
            }};
}

} // namespace zsp::host
