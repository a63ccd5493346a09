// The demo's calls: both directions of a call through everything that the library has for it, at
// one end a loudspeaker in a room, at the other a hybrid on a telephone line.
//
//   far end -> coder -> decoder -> level control -> loudspeaker or line --,
//                                        |                                | echo
//   far end <- decoder <- coder <- level control <- echo canceller <- microphone <- near end
//
// Both directions have a voice activity detector, and the canceller listens on both for the tone
// by which a modem asks it to step aside.

#include "tools/zsp/demo/demo.hpp"

#include "signals/measure.hpp"
#include "signals/room.hpp"
#include "tools/zsp/codec/coder.hpp"
#include "tools/zsp/io/text.hpp"
#include "tools/zsp/report/call_charts.hpp"
#include "tools/zsp/voice/level_control.hpp"
#include "tools/zsp/voice/send_path.hpp"
#include "tools/zsp/voice/vad_track.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>

namespace zsp::host {

namespace {

using Words = std::vector<std::int16_t>;

// The script of a call, in seconds. The echo path changes at half time.
constexpr double kLength = 24, kChange = 12;
constexpr CallCharts::Range kFarTalks[] = {{0, 21}};
constexpr CallCharts::Range kNearTalks[] = {{6, 9.5}, {16, 18}, {21, 24}};
constexpr double kModemAt = 24, kToneLength = 2.2, kModemLength = 4; // where there is a modem

/// One kind of call.
struct Scene {
    std::string title, text, name; // the last for files
    int rate, tailMs;
    bool modem;
    std::vector<float> path, pathAfter;
    double noiseDbfs;
    ZspvDetector detector;
};

Scene roomScene()
{
    constexpr int kRate = 16000;
    constexpr std::size_t kTaps = 128 * kRate / 1000;
    signals::Room room, moved;
    moved.microphone = {3.6, 2.7, 1.3};
    return {.title = "A hands-free call, 16 kHz, G.722",
            .text =
                "A loudspeaker and a microphone in a simulated room of 5 by 4 metres with 0.2 s "
                "of reverberation. After 12 s the microphone is put elsewhere.",
            .name = "room",
            .rate = kRate,
            .tailMs = 128,
            .modem = false,
            .path = signals::roomResponse(room, kRate, kTaps),
            .pathAfter = signals::roomResponse(moved, kRate, kTaps),
            .noiseDbfs = -75,
            .detector = zspvDetectorAmrWb};
}

Scene lineScene()
{
    constexpr int kRate = 8000;
    return {.title = "A telephone call behind a hybrid, 8 kHz, G.726",
            .text = "The line's hybrid returns the far end 10 dB weaker after some milliseconds. "
                    "After 12 s the call is put through to another line, and after 24 s a modem "
                    "answers: its tone with phase reversals makes the canceller step aside.",
            .name = "line",
            .rate = kRate,
            .tailMs = 64,
            .modem = true,
            .path = signals::hybridResponse(kRate, 15, 40, 10, 1),
            .pathAfter = signals::hybridResponse(kRate, 6, 25, 12, 2),
            .noiseDbfs = -75,
            .detector = zspvDetectorAmr1};
}

/// Speech at the given times, going round in the recording from `from` on.
Words script(const Audio& speech, std::span<const CallCharts::Range> times, double from,
             double length)
{
    const auto at = [&](double seconds) { return static_cast<std::size_t>(seconds * speech.rate); };
    Words words(at(length));
    std::size_t source = at(from);
    for (const auto& [start, end] : times)
        for (std::size_t n = at(start); n < at(end) && !speech.samples.empty(); ++n)
            words[n] = speech.samples[source++ % speech.samples.size()];
    return words;
}

/// Answer tone of 2100 Hz whose phase turns round every 450 ms, then keyed carrier.
void addModem(Words& words, int rate)
{
    const auto start = static_cast<std::size_t>(kModemAt * rate);
    signals::Noise noise(3);
    double sign = 1;
    for (std::size_t n = start; n < words.size(); ++n) {
        const auto since = static_cast<int>(n - start);
        const bool tone = since < static_cast<int>(kToneLength * rate);
        if (since % (tone ? rate * 9 / 20 : rate / 1000) == 0 && since > 0)
            sign = tone || noise.uniform() < 0.5 ? -sign : sign;
        const double phase = 2 * std::numbers::pi * (tone ? 2100 : 1800) * since / rate;
        words[n] = static_cast<std::int16_t>(4000 * sign * std::sin(phase));
    }
}

/// A direction's coder and decoder in one.
Words codedAndDecoded(const Words& samples, int rate)
{
    const CodecSetting setting = withRate(codecsNamed(rate == 8000 ? "g726" : "g722"), 0);
    return decodedInTime(setting, encodedWhole(setting, samples), samples.size());
}

/// Everything that came of a call.
struct Outcome {
    Words farSent, sent, received; // far end before its coder; near end before and after its own
    signals::Call call;
    SendPathRun run, suppressed; // without and with the suppressor
    VadTrack farVoice, nearVoice;
    double length = 0;
};

Outcome runCall(const Scene& scene, const Audio& speech)
{
    Outcome o;
    o.length = kLength + (scene.modem ? kModemLength : 0);
    o.farSent = script(speech, kFarTalks, 0, o.length);
    Words near = script(speech, kNearTalks, speech.seconds() / 2, o.length);
    if (scene.modem) addModem(near, scene.rate);

    Words played = codedAndDecoded(o.farSent, scene.rate);
    LevelControl farLevel;
    levelAll(farLevel, played, scene.rate);
    o.call = signals::simulateCall(played, near,
                                   {.path = scene.path,
                                    .pathAfter = scene.pathAfter,
                                    .changeAt = static_cast<std::size_t>(kChange * scene.rate),
                                    .noiseDbfs = scene.noiseDbfs});
    o.run = runSendPath(
        o.call.far, o.call.mic,
        {.echo = {.sampleRate = scene.rate, .tailMs = scene.tailMs, .suppressor = zspvOff},
         .levelControl = true},
        "call");
    o.suppressed = runSendPath(
        o.call.far, o.call.mic,
        {.echo = {.sampleRate = scene.rate, .tailMs = scene.tailMs, .suppressor = zspvOn}}, "call");
    o.sent = o.run.output;
    o.received = codedAndDecoded(o.sent, scene.rate);
    o.farVoice = trackVoice(scene.detector, {o.call.far, scene.rate});
    o.nearVoice = trackVoice(scene.detector, {o.sent, scene.rate});
    return o;
}

std::span<const std::int16_t> part(const Words& words, int rate, double from, double to)
{
    const auto first = static_cast<std::size_t>(from * rate);
    return std::span(words).subspan(first, static_cast<std::size_t>(to * rate) - first);
}

/// Figures of a call.
struct Figures {
    double settled = 0;       // echo loss before the near end first talks
    double suppressed = 0;    // the same with the suppressor on
    double recovered = 0;     // s after the change until it is 20 dB again
    double nearSnr = 0;       // segmental, while both talk
    double nearLevel = 0;     // what the canceller does to the near end's level
    double coderSnr = 0;      // segmental, what the far end gets
    double toneDetected = -1; // s after its start
};

Figures measure(const Scene& scene, const Outcome& o, const Words& left)
{
    const int rate = scene.rate;
    const auto loss = [&](double from, double to) {
        return signals::levelDbfs(part(o.call.echo, rate, from, to)) -
               signals::levelDbfs(part(left, rate, from, to));
    };
    Figures f;
    f.settled = loss(3, kNearTalks[0].start);
    const Words rest = signals::difference(o.suppressed.cancelled, o.call.near);
    f.suppressed = signals::levelDbfs(part(o.call.echo, rate, 3, kNearTalks[0].start)) -
                   signals::levelDbfs(part(rest, rate, 3, kNearTalks[0].start));
    while (f.recovered < 3 && loss(kChange + f.recovered, kChange + f.recovered + 0.2) < 20)
        f.recovered += 0.05;
    const auto [start, end] = kNearTalks[0];
    const auto near = part(o.call.near, rate, start, end);
    const auto cancelled = part(o.run.cancelled, rate, start, end);
    f.nearSnr = signals::segmentalSnrDb(near, cancelled, rate);
    f.nearLevel = signals::levelDbfs(cancelled) - signals::levelDbfs(near);
    f.coderSnr = signals::segmentalSnrDb(o.sent, o.received, rate);
    for (const SendPathTrace::Mark& mark : o.run.trace.marks)
        if (mark.text.starts_with("tone") && f.toneDetected < 0)
            f.toneDetected = mark.seconds - kModemAt;
    return f;
}

Chart voiceChart(const Outcome& o, const Axis& time)
{
    Chart chart(time, {"", 0, 2, false}, 60);
    chart.caption("Voice activity");
    const auto row = [&](const VadTrack& track, double bottom, int colour, const char* label) {
        chart.rowLabel(bottom + 0.5, label);
        for (const VadTrack::Segment& segment : track.segments())
            chart.bar(segment.start, segment.end, bottom + 0.18, bottom + 0.82, colour);
    };
    row(o.farVoice, 1, 2, "far end");
    row(o.nearVoice, 0, 3, "sent");
    return chart;
}

Chart coderChart(const Outcome& o, int rate, const Axis& time)
{
    Chart chart(time, {"dB", 0, 50}, 110);
    chart.caption("Signal-to-noise ratio of the coders");
    const auto line = [&](const Words& before, const Words& after, int colour, const char* name) {
        const std::vector<double> values =
            signals::snrOverTime(before, after, static_cast<std::size_t>(rate / 5));
        std::vector<Point> points;
        for (std::size_t i = 0; i < values.size(); ++i)
            points.push_back({(static_cast<double>(i) + 0.5) / 5, values[i]});
        chart.line(points, colour, name);
    };
    line(o.farSent, codedAndDecoded(o.farSent, rate), 2, "from the far end");
    line(o.sent, o.received, 3, "to the far end");
    return chart;
}

void tell(const Scene& scene, const Outcome& o, const std::string& directory, Report& report)
{
    const Words left = signals::difference(o.run.cancelled, o.call.near);
    const Figures f = measure(scene, o, left);
    std::printf("\n%s\n  echo loss enhancement %.1f dB (suppressor on: %.1f dB), 20 dB again %.2f "
                "s after the change, near "
                "end %s dB segmental SNR and %+.2f dB in double talk\n",
                scene.title.c_str(), f.settled, f.suppressed, f.recovered,
                ratioText(f.nearSnr, 1).c_str(), f.nearLevel);
    report.section(scene.title, scene.text);
    std::vector<Report::Tile> tiles = {
        {format("%.1f dB", f.settled), "echo loss enhancement, settled; suppressor off"},
        {format("%.1f dB", f.suppressed), "the same, suppressor on"},
        {format("%.2f s", f.recovered), "until 20 dB after the change"},
        {ratioText(f.nearSnr, 1) + " dB", "near end in double talk, segmental SNR"},
        {ratioText(f.coderSnr, 1) + " dB", "coder's segmental SNR"}};
    if (scene.modem) {
        std::printf("  modem's tone detected after %.2f s\n", f.toneDetected);
        tiles.push_back({format("%.2f s", f.toneDetected), "until the tone is detected"});
    }
    report.tiles(tiles);

    std::vector<Report::Player> players;
    const auto sound = [&](const char* file, const char* label, const Words& words) {
        players.push_back({"call-" + scene.name + "-" + file + ".wav", label});
        writeWav(directory + "/" + players.back().source, words, scene.rate);
    };
    sound("far", "Far end, as played", o.call.far);
    sound("mic", "Microphone or line", o.call.mic);
    sound("cancelled", "Echo cancelled, suppressor off", o.run.cancelled);
    sound("suppressed", "Echo cancelled, suppressor on", o.suppressed.cancelled);
    sound("received", "What the far end gets", o.received);
    report.players(players);

    CallCharts charts{.rate = scene.rate,
                      .far = {o.call.far, scene.rate},
                      .mic = {o.call.mic, scene.rate},
                      .out = {o.run.cancelled, scene.rate},
                      .trace = o.run.trace,
                      .echoLoss = echoLossOverTime(o.call.echo, left, scene.rate),
                      .echoLossNote = "Enhancement: the echo over what is left of it beside the "
                                      "near end, per 100 ms."};
    charts.events = {{kChange, "new path"}};
    charts.nearTalks.assign(std::begin(kNearTalks), std::end(kNearTalks));
    if (scene.modem) charts.nearTalks.push_back({kModemAt, o.length});
    charts.addTo(report);

    const Axis time{"time, s", 0, o.length}, above{"", 0, o.length, false};
    const std::vector<Chart> rest = {voiceChart(o, above), coderChart(o, scene.rate, time)};
    report.charts("Voice activity and coding", rest,
                  format("By the %s detector; coders per 200 ms, pauses left out.",
                         std::string(nameOf(scene.detector)).c_str()));
}

} // namespace

void demoCalls(const Audio& narrow, const Audio& wide, const std::string& directory, Report& report)
{
    const Scene scenes[] = {roomScene(), lineScene()};
    for (const Scene& scene : scenes)
        tell(scene, runCall(scene, scene.rate == narrow.rate ? narrow : wide), directory, report);
}

} // namespace zsp::host
