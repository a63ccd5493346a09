// The command line: help, hints, what is refused and in which words, completion.

#include "tests/host/host.hpp"

#include "zspvoice.h"

#include <sstream>

namespace zsp::test {

namespace {

using HostCommandLine = Host;

constexpr const char* kCommands[] = {"encode", "decode", "codecs", "aec",
                                     "vad",    "alc",    "demo",   "info"};

TEST_F(HostCommandLine, WhatMakesNoSenseIsToldInPlainWords)
{
    put("in.wav", wavFile(someSignal(800)));
    struct Row {
        const char* arguments;
        const char* message;
        const char* hint;
    };
    const Row rows[] = {
        {"", "no command is named", "zsp --help"},
        {"sing", "no command sing", "zsp --help"},
        {"encde in.wav x.ul", "no command encde, did you mean encode?", "zsp --help"},
        {"g722 encode in.wav x.g722", "zsp encode --codec g722", "zsp --help"},
        {"--frobnicate", "--frobnicate: unknown option", "zsp --help"},
        {"help sing", "no command sing", "zsp --help"},
        // Unknown before wrong, wrong before missing.
        {"encode --bogus", "--bogus: unknown option", "zsp encode --help"},
        {"encode --rate x --bogus 3 in.wav", "--bogus: unknown option", "zsp encode --help"},
        {"alc --targt 20", "--targt: unknown option, did you mean --target?", "zsp alc --help"},
        {"alc --target x", "--target: x is not a number from 0 to 90 dB", "zsp alc --help"},
        {"encode", "no input file is named, IN", "zsp encode --help"},
        {"encode in.wav", "no output file is named: the last file, or -o OUT", "zsp encode --help"},
        {"aec in.wav -o x.wav", "no input file is named, MIC", "zsp aec --help"},
        {"aec --far in.wav in.wav", "no output file is named", "zsp aec --help"},
        {"alc in.wav x.wav y.wav", "y.wav: one file too many", "zsp alc --help"},
        {"alc in.wav x.wav -o y.wav", "x.wav: one file too many", "zsp alc --help"},
        {"info in.wav", "in.wav: one file too many", "zsp info --help"},
        {"vad --dtx=yes in.wav", "--dtx: takes no value", "zsp vad --help"},
        {"vad in.wav --report", "--report: needs a value, FILE", "zsp vad --help"},
        {"vad --report --dtx in.wav", "--report: needs a value, FILE", "zsp vad --help"},
        {"vad --report '' in.wav", "--report: the value is empty", "zsp vad --help"},
        {"vad --report= in.wav", "--report: the value is empty", "zsp vad --help"},
        {"encode '' x.ul", "a file name is empty", "zsp encode --help"},
        {"encode in.wav -o ''", "--output: the value is empty", "zsp encode --help"},
        {"vad -d zip in.wav", "--detector: zip is not amr1, amr2 or amrwb", "zsp vad --help"},
        {"vad -d 0 in.wav", "--detector: 0 is not amr1, amr2 or amrwb", "zsp vad --help"},
        {"aec -t 7 in.wav in.wav x.wav", "--tail: 7 is not a number from 8 to 512 ms", "zsp aec"},
        {"alc --max-gain -1 in.wav x.wav", "--max-gain: -1 is not a number from 0 to 60 dB", "alc"},
        {"alc --max-gain nan in.wav x.wav", "nan is not a number from 0 to 60 dB", "zsp alc"},
        {"alc --peak inf in.wav x.wav", "inf is not a number from 0 to 90 dB", "zsp alc --help"},
        {"alc --peak 1e400 in.wav x.wav", "1e400 is not a number from 0 to 90 dB", "zsp alc"},
        {"encode -r 33 in.wav x.g726", "g726 has no 33 kbit/s, but 16, 24, 32 or 40", "encode"},
        {"encode -r 24 in.wav x.g722", "g722 has no 24 kbit/s, but 48, 56 or 64", "encode"},
        {"encode -r fast in.wav x.g726", "fast is no bit rate, as 24, 24k or 24000", "encode"},
        {"encode -r nan in.wav x.g726", "nan is no bit rate", "zsp encode --help"},
        {"encode -r 1e99 in.wav x.g726", "1e99 is no bit rate", "zsp encode --help"},
        {"encode -c mp3 in.wav x",
         "mp3 is none of pcmu, pcma, g722, g726, g726aal2, g728, g729, g729a, gsm or g7231",
         "encode"},
        {"encode in.wav x", "x tells no codec by an extension; name one with --codec", "encode"},
        {"encode in.wav x.zip", ".zip is the extension of no codec", "zsp encode --help"},
        {"encode -f zip in.wav x.ul", "--format: zip is not wav, au, flac", "zsp encode --help"},
        {"encode -d in.wav x.g722", "--dtx: G722 has no silence compression", "zsp encode --help"},
        {"encode --highpass off in.wav x.g728", "is for G.723.1, not for G728",
         "zsp encode --help"},
        {"encode --highpass no in.wav x.g723", "no is not on or off", "zsp encode --help"},
        {"encode -u in.wav x.g722", "--unpacked: is for G.726, not for G722", "zsp encode --help"},
        {"decode -l x in.g726 x.wav", "--law: x is not linear, mu or a", "zsp decode --help"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.arguments);
        const Outcome outcome = zsp(row.arguments);
        EXPECT_EQ(outcome.status, 2) << outcome.text;
        EXPECT_TRUE(outcome.text.starts_with("zsp: ")) << outcome.text;
        EXPECT_NE(outcome.text.find(row.message), std::string::npos) << outcome.text;
        EXPECT_NE(outcome.text.find("\nTry 'zsp "), std::string::npos) << outcome.text;
        EXPECT_NE(outcome.text.rfind(row.hint), std::string::npos) << outcome.text;
        EXPECT_EQ(outcome.text.find_first_of("{}>"), std::string::npos) << outcome.text;
        EXPECT_EQ(files(), std::vector<std::string>{"in.wav"});
    }
}

TEST_F(HostCommandLine, OptionsInEveryForm)
{
    put("in.wav", wavFile(someSignal(800)));
    ASSERT_EQ(zsp("encode --rate 24 in.wav wanted.g726").text, "");
    for (const char* arguments :
         {"--rate=24 in.wav x.g726", "-r 24 in.wav x.g726", "-r24 in.wav x.g726",
          "in.wav x.g726 -r 24k", "in.wav -r24000 x.g726", "-o x.g726 --rate 24 in.wav",
          "--output=x.g726 -r=24 in.wav", "-r 40 -r 24 in.wav x.g726", "-r 24 -- in.wav x.g726",
          "-c G726-24 in.wav x.g726", "-c G726 -r 24.0K in.wav x.g726"}) {
        fs::remove(path("x.g726"));
        EXPECT_EQ(zsp("encode " + std::string(arguments)).text, "") << arguments;
        EXPECT_EQ(get("x.g726"), get("wanted.g726")) << arguments;
    }
    put("-odd", wavFile(someSignal(800)));
    EXPECT_EQ(zsp("encode -r 24 -- -odd x.g726").text, "");
    EXPECT_EQ(get("x.g726"), get("wanted.g726"));
}

TEST_F(HostCommandLine, HelpOfEveryCommand)
{
    const Outcome all = zsp("--help");
    EXPECT_EQ(all.status, 0);
    EXPECT_EQ(zsp("help").text, all.text);
    EXPECT_EQ(zsp("-h").text, all.text);
    for (const std::string command : kCommands) {
        EXPECT_NE(all.text.find("\n  " + command + " "), std::string::npos) << command;
        const Outcome help = zsp(command + " --help");
        EXPECT_EQ(help.status, 0);
        EXPECT_TRUE(help.text.starts_with("Usage: zsp " + command + " [OPTIONS]")) << help.text;
        EXPECT_EQ(zsp("help " + command).text, help.text);
        std::istringstream lines(help.text);
        for (std::string line; std::getline(lines, line);)
            EXPECT_LE(line.size(), 80u) << line;
    }
    const Outcome version = zsp("--version");
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.text, "zsp " ZSP_VERSION ", with libzspvoice " ZSPVOICE_VERSION "\n");
}

TEST_F(HostCommandLine, CodecsListsTheTable)
{
    const Outcome outcome = zsp("codecs");
    EXPECT_EQ(outcome.status, 0);
    for (int i = 0; i < zspvCodecCount(); ++i) {
        const ZspvCodec& codec = *zspvCodecByIndex(i);
        for (const std::string& text :
             {std::string("\n") + codec.family + " ", std::string(" ") + codec.rtpName,
              std::string(" .") + codec.fileExtension + " ", std::string(codec.standard)})
            EXPECT_NE(outcome.text.find(text), std::string::npos) << text;
    }
    EXPECT_EQ(zsp("codecs --names").text,
              "pcmu\npcma\ng722\ng726\ng726aal2\ng728\ng729\ng729a\ngsm\ng7231\n");
}

// The manual names every command and option, and no others.
TEST_F(HostCommandLine, TheManualIsComplete)
{
    std::ifstream page(ZSP_MANUAL);
    std::string manual{std::istreambuf_iterator<char>(page), {}};
    manual.erase(std::remove(manual.begin(), manual.end(), '\\'), manual.end());
    std::string helps = zsp("--help").text;
    for (const std::string command : kCommands) {
        EXPECT_NE(manual.find(".SS \"zsp " + command), std::string::npos) << command;
        helps += zsp(command + " --help").text;
    }
    const auto options = [](const std::string& text) {
        std::vector<std::string> found;
        for (std::size_t at = text.find("--"); at != std::string::npos; at = text.find("--", at)) {
            const std::size_t end = text.find_first_not_of("-abcdefghijklmnopqrstuvwxyz", at);
            if (end > at + 2) found.push_back(text.substr(at, end - at));
            at = std::min(end, text.size());
        }
        std::sort(found.begin(), found.end());
        found.erase(std::unique(found.begin(), found.end()), found.end());
        return found;
    };
    EXPECT_EQ(options(manual), options(helps));
}

TEST_F(HostCommandLine, BashCompletesCommandsOptionsAndValues)
{
    put("speech.wav", {1});
    struct Row {
        const char* words; // the last one is to be completed
        const char* wanted;
    };
    const Row rows[] = {
        {"zsp ''", "encode decode codecs aec vad alc demo selftest info help --help --version"},
        {"zsp de", "decode demo"},
        {"zsp help a", "aec alc"},
        {"zsp vad --d", "--detector --dtx"},
        {"zsp aec --s", "--suppressor"},
        {"zsp encode --codec g7", "g722 g726 g726aal2 g728 g729 g729a g7231"},
        {"zsp encode -c pcm", "pcmu pcma"},
        {"zsp vad --detector ''", "amr1 amr2 amrwb"},
        {"zsp vad -d amrw", "amrwb"},
        {"zsp vad --detector = amr", "amr1 amr2 amrwb"},
        {"zsp aec --suppressor o", "on off"},
        {"zsp encode --rate ''", ""},
        {"zsp encode sp", "speech.wav"},
        {"zsp encode --unpacked sp", "speech.wav"},
        {"zsp vad --report sp", "speech.wav"},
        {"zsp alc -o sp", "speech.wav"},
    };
    for (const Row& row : rows) {
        const Outcome outcome = shell(
            "cd " + directory_.string() + "; PATH=" + fs::path(ZSP_PROGRAM).parent_path().string() +
            ":$PATH exec bash -c 'source " ZSP_COMPLETION
            "; COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); _zsp; echo \"${COMPREPLY[*]}\"' - " +
            row.words);
        EXPECT_EQ(outcome.text, row.wanted + std::string("\n")) << row.words;
    }
}

TEST_F(HostCommandLine, InfoNamesEveryExport)
{
    const Outcome outcome = zsp("info --exports");
    EXPECT_EQ(outcome.status, 0);
#define ZSP_EXPORT(name) EXPECT_NE(outcome.text.find(" " #name "\n"), std::string::npos) << #name;
#define ZSP_EXPORT_AS(name, shared) ZSP_EXPORT(name)
#define ZSPV_EXPORT(name) EXPECT_NE(outcome.text.find(" " #name "\n"), std::string::npos) << #name;
#include "core/exports.inc"
#include "voice/exports.inc"
}

#ifdef ZSP_OLD_PROCESSOR
TEST_F(HostCommandLine, SaysWhenTheProcessorIsNotEnough)
{
    put("in.wav", wavFile(someSignal(800)));
    const std::string preload = "export LD_PRELOAD=" ZSP_OLD_PROCESSOR "; zsp ";
    for (const char* arguments : {"--version", "--help", "help aec", "info"})
        EXPECT_EQ(run(preload + arguments).status, 0) << arguments;
    EXPECT_NE(run(preload + "info").text.find("AVX2, FMA or BMI2 is missing"), std::string::npos);
    for (const char* arguments :
         {"encode in.wav out.ul", "decode in.wav out.wav", "codecs", "alc in.wav out.wav",
          "vad in.wav", "aec in.wav in.wav out.wav", "demo"}) {
        const Outcome outcome = run(preload + arguments);
        EXPECT_EQ(outcome.status, 1) << arguments;
        EXPECT_NE(outcome.text.find("this processor lacks AVX2"), std::string::npos)
            << outcome.text;
    }
    EXPECT_EQ(files(), std::vector<std::string>{"in.wav"});
}
#endif

} // namespace

} // namespace zsp::test
