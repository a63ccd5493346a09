// The parts of the demo. Each runs one family on speech, prints a table, writes WAV files into the
// directory and adds its section to the report.
#pragma once

#include "tools/zsp/io/audio.hpp"
#include "tools/zsp/report/report.hpp"

#include <functional>
#include <string>

namespace zsp::host {

/// 8 kHz speech.
void demoG726(const Audio& speech, const std::string& directory, Report& report);
/// GSM full rate, G.728, G.723.1, whose figures say less than their sound.
void demoByHearing(const Audio& speech, const std::string& directory, Report& report);
/// G.729 Annex A: what it sends in pauses, and what losses cost. 8 kHz speech.
void demoG729(const Audio& speech, const std::string& directory, Report& report);
/// 16 kHz speech.
void demoG722(const Audio& speech, const std::string& directory, Report& report);

/// Any speech.
void demoLevel(const Audio& speech, const std::string& directory, Report& report);
void demoVad(const Audio& speech, const std::string& directory, Report& report);
/// Whole calls: 8 kHz speech on a telephone line, 16 kHz speech in a room.
void demoCalls(const Audio& narrow, const Audio& wide, const std::string& directory,
               Report& report);

/// How many times faster than real time `work` goes through `seconds` of signal: the best of
/// several runs, at least 0.1 s altogether.
double timesRealTime(double seconds, const std::function<void()>& work);

} // namespace zsp::host
