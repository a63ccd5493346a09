// The demo's G.729: Annex A, without and with pauses, and with frames lost on the way.

#include "tools/zsp/demo/demo.hpp"

#include "signals/loss.hpp"
#include "signals/measure.hpp"
#include "tools/zsp/codec/coder.hpp"
#include "tools/zsp/io/text.hpp"

#include <algorithm>
#include <cstdio>

namespace zsp::host {

namespace {

/// A way of sending, and its outcome.
struct Way {
    const char *name, *file;
    bool dtx;
    double lostShare;
};

struct Sent {
    double kbit = 0; // per second, of what was sent
    double lost = 0; // share of the frames that were sent
    std::vector<std::int16_t> decoded;
};

/// Decodes frames that stand behind their lengths, and loses some of those that are not empty.
Sent received(const CodecSetting& setting, std::span<const std::uint8_t> bytes, double lostShare,
              const Audio& speech)
{
    const std::vector<bool> lost = signals::lostPackets(bytes.size(), lostShare, 1);
    Sent sent;
    std::size_t octets = 0, frames = 0, losses = 0;
    SpeechDecoder decoder(setting);
    for (std::size_t at = 0, length = 0; at < bytes.size(); at += 1 + length) {
        length = bytes[at];
        octets += length;
        if (length == 0) {
            decoder.conceal(zspvFrameNoData, sent.decoded);
        } else if (lost[frames++]) {
            decoder.conceal(zspvFrameLost, sent.decoded);
            ++losses;
        } else {
            decoder.decodeFrame(bytes.subspan(at + 1, length), sent.decoded);
        }
    }
    const auto delay = static_cast<std::ptrdiff_t>(setting.codec->lookAhead);
    sent.decoded.erase(sent.decoded.begin(), sent.decoded.begin() + delay);
    sent.decoded.resize(speech.samples.size());
    sent.kbit = static_cast<double>(octets) * 8e-3 / speech.seconds();
    sent.lost = static_cast<double>(losses) / static_cast<double>(std::max<std::size_t>(frames, 1));
    return sent;
}

/// Mean over the segments of 32 ms with speech.
double spectralDistance(std::span<const std::int16_t> wanted, std::span<const std::int16_t> heard)
{
    constexpr std::size_t kSegment = 256;
    constexpr double kSilentDbfs = -55.0;
    double sum = 0;
    std::size_t segments = 0;
    for (std::size_t at = 0; at + kSegment <= wanted.size(); at += kSegment) {
        const auto reference = wanted.subspan(at, kSegment);
        if (signals::levelDbfs(reference) < kSilentDbfs) continue;
        sum += signals::spectralDistanceDb(reference, heard.subspan(at, kSegment));
        ++segments;
    }
    return sum / static_cast<double>(std::max<std::size_t>(segments, 1));
}

} // namespace

void demoG729(const Audio& speech, const std::string& directory, Report& report)
{
    constexpr Way kWays[] = {
        {"all frames", "g729a.wav", false, 0.0},
        {"silence compression", "g729a-dtx.wav", true, 0.0},
        {"the same, 5 % of the frames lost", "g729a-dtx-lost.wav", true, 0.05}};
    std::printf("\nG.729 Annex A\n");
    std::printf("  kbit/s sent   spectral distance dB   lost %%   encode x real time\n");
    report.section("G.729 Annex A, 8 kbit/s and less",
                   "Telephone speech in frames of 10 ms. In pauses only descriptors of 15 bits are "
                   "sent, when the background changes. A lost frame goes on with the filter, pitch "
                   "and falling gains of the one before it.");
    std::vector<std::vector<std::string>> rows = {
        {"Sent", "Bit rate", "Spectral distance", "Frames lost", "Encoding"}};
    std::vector<Report::Player> players;
    for (const Way& way : kWays) {
        CodecSetting setting = withRate(codecsNamed("g729a"), 0);
        setting.annexA = true;
        setting.dtx = way.dtx;
        setting.contained = true;
        std::vector<std::uint8_t> bytes;
        const double speed =
            timesRealTime(speech.seconds(), [&] { bytes = encodedWhole(setting, speech.samples); });
        const Sent sent = received(setting, bytes, way.lostShare, speech);
        const double distance = spectralDistance(speech.samples, sent.decoded);
        std::printf("  %11.2f %22.2f %8.1f %20.0f\n", sent.kbit, distance, 100 * sent.lost, speed);
        rows.push_back({way.name, format("%.2f kbit/s", sent.kbit), format("%.2f dB", distance),
                        format("%.1f %%", 100 * sent.lost), format("%.0f × real time", speed)});
        writeWav(directory + "/" + way.file, sent.decoded, speech.rate);
        players.push_back({way.file, std::string("Decoded, ") + way.name});
    }
    report.table(rows, "Bit rate: of the frames that were sent. Spectral distance: root mean "
                       "square difference of the levels in dB, mean over the 32 ms segments above "
                       "-55 dBFS.");
    report.players(players);
}

} // namespace zsp::host
