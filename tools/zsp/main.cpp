// The command line of zsp. Exit status: 0 when all went well, 1 when something failed, 2 when the
// command line makes no sense.

#include "tools/zsp/commands/commands.hpp"
#include "tools/zsp/io/failure.hpp"

#include "zspcore.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <functional>
#include <map>

namespace zsp::host {

namespace {

/// The library computes with AVX2 throughout and would end with an illegal instruction elsewhere.
void requireProcessor()
{
    constexpr std::uint64_t kNeeded = ZSP_CPU_AVX2 | ZSP_CPU_FMA | ZSP_CPU_BMI2;
    if ((zspGetEnabledCpuFeatures() & kNeeded) != kNeeded)
        throw Failure("this processor lacks AVX2, FMA or BMI2, which the library needs");
}

const std::map<std::string, Container> kContainers = {{"auto", Container::automatic},
                                                      {"wav", Container::wav},
                                                      {"au", Container::au},
                                                      {"raw", Container::raw}};
const std::map<std::string, Encoding> kLaws = {
    {"linear", Encoding::linear}, {"mu", Encoding::muLaw}, {"a", Encoding::aLaw}};
const std::map<std::string, Packing> kPackings = {
    {"none", Packing::unpacked}, {"rfc3551", Packing::rfc3551}, {"aal2", Packing::aal2}};

const std::map<std::string, DetectorKind> kDetectors = {
    {"amr1", DetectorKind::amr1}, {"amr2", DetectorKind::amr2}, {"amrwb", DetectorKind::amrWb}};

/// Accepts the keys of `map`; the help lists them.
template <typename T>
CLI::Validator oneOf(const std::map<std::string, T>& map)
{
    std::string names;
    for (const auto& entry : map)
        names += (names.empty() ? "" : "|") + entry.first;
    CLI::Validator validator = CLI::CheckedTransformer(map, CLI::ignore_case);
    validator.description(names);
    return validator;
}

constexpr const char* kInputKind =
    "Kind of the input file (default: by its header; by name when raw)";
constexpr const char* kOutputKind =
    "Kind of the output file (default: by its name; au for standard output)";

void addFiles(CLI::App& command, std::string& input, std::string& output)
{
    command.add_option("input", input, "Input file, - for standard input")->required();
    command.add_option("output", output, "Output file, - for standard output")->required();
}

void addInfo(CLI::App& app)
{
    auto options = std::make_shared<InfoOptions>();
    CLI::App* command = app.add_subcommand("info", "Library version, processor and exports");
    command->add_flag("--exports", options->exports, "List the exported functions");
    command->callback([options] { runInfo(*options); });
}

void addG726(CLI::App& app)
{
    CLI::App* group = app.add_subcommand("g726", "G.726 ADPCM at 16, 24, 32 or 40 kbit/s");
    group->require_subcommand(1);
    const auto add = [group](const char* name, const char* what, const char* law,
                             const char* container, void (*run)(const G726Options&)) {
        auto options = std::make_shared<G726Options>();
        CLI::App* command = group->add_subcommand(name, what);
        addFiles(*command, options->input, options->output);
        command->add_option("-r,--rate", options->rate, "Bit rate in kbit/s")
            ->check(CLI::IsMember({16, 24, 32, 40}))
            ->capture_default_str();
        command->add_option("-l,--law", options->law, law)->transform(oneOf(kLaws));
        command->add_option("-f,--format", options->container, container)
            ->transform(oneOf(kContainers));
        command
            ->add_option("-p,--packing", options->packing,
                         "Order of the code words in the bytes; none: one per byte "
                         "(default: rfc3551)")
            ->transform(oneOf(kPackings));
        command->callback([options, run] {
            requireProcessor();
            run(*options);
        });
    };
    add("encode", "Code an 8 kHz mono audio file",
        "Samples of a raw input file (default: linear); a header that tells otherwise is an error",
        kInputKind, runG726Encode);
    add("decode", "Decode a file of G.726 code words", "Samples to write (default: linear)",
        kOutputKind, runG726Decode);
}

void addG722(CLI::App& app)
{
    CLI::App* group = app.add_subcommand("g722", "G.722 wide-band coding at 64, 56 or 48 kbit/s");
    group->require_subcommand(1);
    const auto add = [group](const char* name, const char* what, const char* container,
                             void (*run)(const G722Options&)) {
        auto options = std::make_shared<G722Options>();
        CLI::App* command = group->add_subcommand(name, what);
        addFiles(*command, options->input, options->output);
        command
            ->add_option("-m,--mode", options->mode,
                         "1, 2 or 3: 64, 56 or 48 kbit/s of speech; a byte takes two samples in "
                         "each, in modes 2 and 3 its lowest one and two bits are free")
            ->check(CLI::IsMember({1, 2, 3}))
            ->capture_default_str();
        command->add_option("-f,--format", options->container, container)
            ->transform(oneOf(kContainers));
        command->callback([options, run] {
            requireProcessor();
            run(*options);
        });
    };
    add("encode", "Code a 16 kHz mono audio file", kInputKind, runG722Encode);
    add("decode", "Decode a .g722 file", kOutputKind, runG722Decode);
}

void addAlc(CLI::App& app)
{
    auto options = std::make_shared<AlcOptions>();
    CLI::App* command = app.add_subcommand("alc", "G.169 automatic level control of a mono file");
    addFiles(*command, options->input, options->output);
    command->add_option("--max-gain", options->maxGainDb, "Largest gain in dB (default: 11.6)")
        ->check(CLI::Range(0.0, 60.0));
    command
        ->add_option("--target", options->targetDb,
                     "Speech level to reach, dB below full scale (default: 26.1)")
        ->check(CLI::Range(0.0, 90.0));
    command
        ->add_option("--peak", options->peakDb, "Largest output, dB below full scale (default: 0)")
        ->check(CLI::Range(0.0, 90.0));
    command->add_option("--report", options->report, "HTML file with levels and gain over time");
    command->callback([options] {
        requireProcessor();
        runAlc(*options);
    });
}

void addVad(CLI::App& app)
{
    auto options = std::make_shared<VadOptions>();
    CLI::App* command = app.add_subcommand(
        "vad",
        "Voice activity detection: speech segments, activity, comfort-noise schedule.\n"
        "The input is mixed down to one channel and converted to 8 kHz (amr1, amr2) or 12.8 kHz "
        "(amrwb). As in the speech encoders, it is cut below 80 Hz and halved, for amrwb cut below "
        "50 Hz and emphasised. Pitch and tone flags, the high-pass correlation of amr1 and the "
        "prediction gain of amr2 come from an open-loop pitch search of that signal, with the "
        "library's lag search; the encoders search perceptually weighted speech, so their flags "
        "may differ.");
    command->add_option("input", options->input, "Audio file, - for standard input")->required();
    command->add_option("-d,--detector", options->detector, "Which detector (default: amr1)")
        ->transform(oneOf(kDetectors));
    command->add_flag("--dtx", options->dtx,
                      "Print what is sent per frame: S speech, F first "
                      "comfort-noise frame, U update, . nothing");
    command->add_option("--csv", options->csv, "File for decision, levels and noise per frame");
    command->add_option("--report", options->report,
                        "HTML file with waveform, decisions, levels and noise estimate");
    command->callback([options] {
        requireProcessor();
        runVad(*options);
    });
}

const std::map<std::string, bool> kSwitch = {{"on", true}, {"off", false}};

void addAec(CLI::App& app)
{
    auto options = std::make_shared<AecOptions>();
    CLI::App* command = app.add_subcommand(
        "aec", "Remove the echo of the far end from a microphone's or line's signal");
    command->add_option("--far", options->far, "What the loudspeaker or line was given")
        ->required();
    command->add_option("--mic", options->mic, "What came back; both at 8 or at 16 kHz, mono")
        ->required();
    command
        ->add_option("-o,--output", options->output,
                     "Output file, in time with the microphone's signal and as long")
        ->required();
    command->add_option("--tail", options->tailMs, "Longest echo in ms")
        ->check(CLI::Range(8, 512))
        ->capture_default_str();
    command
        ->add_option("--suppressor", options->suppressor,
                     "Attenuate what the filters leave (default: off)")
        ->transform(oneOf(kSwitch));
    command->add_option("--alc", options->levelControl, "Level control after it (default: off)")
        ->transform(oneOf(kSwitch));
    command->add_option("--report", options->report, "HTML report of what was done");
    command->callback([options] {
        requireProcessor();
        runAec(*options);
    });
}

void addDemo(CLI::App& app)
{
    auto options = std::make_shared<DemoOptions>();
    CLI::App* command = app.add_subcommand(
        "demo", "Code bundled speech, or yours, and write what came out with a report");
    command->add_option("input", options->input, "Speech to use instead of the bundled one");
    command->add_option("-o,--output", options->directory, "Directory for the results")
        ->take_last()
        ->capture_default_str();
    command->callback([options] {
        requireProcessor();
        runDemo(*options);
    });
}

int run(int argc, char** argv)
{
    CLI::App app{"Speech coding and voice processing with the zspsc library.", "zsp"};
    app.require_subcommand(1);
    addInfo(app);
    addG726(app);
    addG722(app);
    addAlc(app);
    addVad(app);
    addAec(app);
    addDemo(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& request) { // --help
        return app.exit(request);
    } catch (const CLI::RequiredError& error) {
        const bool unknown = argc > 1 && app.get_subcommands().empty();
        const std::string text =
            unknown ? std::string("no command named ") + argv[1] : error.what();
        std::fprintf(stderr, "zsp: %s\nTry 'zsp --help'.\n", text.c_str());
        return 2;
    } catch (const CLI::ParseError& error) {
        std::fprintf(stderr, "zsp: %s\nTry 'zsp --help'.\n", error.what());
        return 2;
    } catch (const UsageError& error) {
        std::fprintf(stderr, "zsp: %s\n", error.what());
        return 2;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "zsp: %s\n", error.what());
        return 1;
    }
    if (std::fflush(stdout) != 0) {
        std::perror("zsp: standard output");
        return 1;
    }
    return 0;
}

} // namespace

} // namespace zsp::host

int main(int argc, char** argv)
{
    try {
        return zsp::host::run(argc, argv);
    } catch (...) { // memory is short already while the command line is set up
        std::fputs("zsp: out of memory\n", stderr);
        return 1;
    }
}
