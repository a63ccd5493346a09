// zsp alc: brings the speech of a file to a level.

#include "tools/zsp/commands/commands.hpp"

#include "signals/measure.hpp"
#include "tools/zsp/io/text.hpp"
#include "tools/zsp/report/level_charts.hpp"
#include "tools/zsp/report/report.hpp"
#include "tools/zsp/voice/level_control.hpp"

#include <cstdio>

namespace zsp::host {

void runAlc(const AlcOptions& options)
{
    AudioReader reader(options.input);
    Audio audio = readAsStored(reader);
    const Audio before = audio;
    LevelControl control;
    if (options.maxGainDb) control.setMaxGain(*options.maxGainDb);
    if (options.targetDb || options.peakDb)
        control.setLevels(options.targetDb.value_or(kDefaultTargetDb), options.peakDb.value_or(0));
    const LevelTrack track = levelAll(control, audio.samples, audio.rate);

    AudioWriter writer(options.output, Container::automatic, Encoding::linear, audio.rate);
    writer.write(audio.samples);
    writer.commit();
    if (options.report.empty()) return;
    Report report("Automatic level control", format("%s, %.1f s, through the G.169 level control.",
                                                    options.input.c_str(), audio.seconds()));
    report.charts("Input, gain, output", levelCharts(before, audio, track),
                  "Speech and noise levels are the control's own estimates, of root mean square "
                  "and of mean magnitude.");
    report.write(options.report);
}

} // namespace zsp::host
