// The subcommands: what the command line can say to each, and the function that runs it. main.cpp
// fills the options; a function returns when all went well and throws Failure or UsageError.
#pragma once

#include "tools/zsp/io/audio.hpp"
#include "tools/zsp/io/packing.hpp"
#include "tools/zsp/voice/voice_detector.hpp"

#include <optional>
#include <string>

namespace zsp::host {

struct InfoOptions {
    bool exports = false; ///< list them all
};
void runInfo(const InfoOptions& options);

struct G726Options {
    std::string input, output;
    int rate = 32; ///< kbit/s
    Packing packing = Packing::rfc3551;
    Container container = Container::automatic; ///< of the audio side
    std::optional<Encoding> law;                ///< of the audio side
};
void runG726Encode(const G726Options& options);
void runG726Decode(const G726Options& options);

struct G722Options {
    std::string input, output;
    int mode = 1;                               ///< 64, 56 or 48 kbit/s
    Container container = Container::automatic; ///< of the audio side
};
void runG722Encode(const G722Options& options);
void runG722Decode(const G722Options& options);

struct AlcOptions {
    std::string input, output;
    std::optional<double> maxGainDb, targetDb, peakDb; ///< the library's defaults when absent
    std::string report;                                ///< HTML file, none when empty
};
void runAlc(const AlcOptions& options);

struct VadOptions {
    std::string input;
    DetectorKind detector = DetectorKind::amr1;
    bool dtx = false;        ///< print the frame types of discontinuous transmission
    std::string csv, report; ///< files, none when empty
};
void runVad(const VadOptions& options);

struct AecOptions {
    std::string far, mic, output;
    int tailMs = 128;
    bool suppressor = false;
    bool levelControl = false;
    std::string report; ///< empty for none
};
void runAec(const AecOptions& options);

struct DemoOptions {
    std::string input; ///< empty: the bundled speech
    std::string directory = "demo-out";
};
void runDemo(const DemoOptions& options);

} // namespace zsp::host
