// zsp alc, aec and vad: results, what they say, and the memory they take.

#include "tests/host/host.hpp"
#include "zspsc/alc_g169.h"

#include <cmath>
#include <sstream>
#include <sys/resource.h>
#include <unistd.h>

namespace zsp::test {

namespace {

using HostVoice = Host;

TEST_F(HostVoice, AlcLevelsAsTheLibraryDoes)
{
    const Words signal = someSignal(30001); // the last block is not whole
    put("in.wav", wavFile(signal));
    Words wanted = signal;
    wanted.resize(30008);
    ZspAlcState_G169 state;
    zspsALCInit_G169_16s(&state);
    zspsALCSetGain_G169_16s(6.0F, &state);
    zspsALCSetLevel_G169_16s(20.0F, 3.0F, &state);
    zspsALC_G169_16s(wanted.data(), wanted.data(), 30008, &state);
    wanted.resize(signal.size());
    const std::string options = " --max-gain 6 --target 20 --peak 3 --report r.html";
    const Outcome outcome = zsp("alc in.wav out.raw" + options);
    EXPECT_EQ(get("out.raw"), littleEndian(wanted));
    EXPECT_TRUE(outcome.text.starts_with("zsp alc: 3.8 s, speech at ")) << outcome.text;
    EXPECT_NE(outcome.text.find("(target -20.0); gain "), std::string::npos) << outcome.text;
    EXPECT_EQ(std::count(outcome.text.begin(), outcome.text.end(), '\n'), 1);
    // The same from a pipe, in the other order of files and options.
    ASSERT_EQ(
        run("cat in.wav | zsp alc -o - - " + options + " 2>/dev/null | tail -c +33 >be.raw").status,
        0);
    Bytes swapped = get("be.raw");
    for (std::size_t i = 0; i + 1 < swapped.size(); i += 2)
        std::swap(swapped[i], swapped[i + 1]);
    EXPECT_EQ(swapped, littleEndian(wanted));
}

TEST_F(HostVoice, AlcTakesOtherSignalsWithAWord)
{
    struct Row {
        std::uint32_t rate, channels, out;
        const char* word;
    };
    const Row rows[] = {{8000, 2, 8000, "mixing 2 channels"},
                        {16000, 1, 16000, "half of what they are at 8000 Hz"},
                        {44100, 2, 16000, "converting 44100 Hz to 16000 Hz"},
                        {6000, 1, 8000, "converting 6000 Hz to 8000 Hz"}};
    for (const Row& row : rows) {
        put("in.wav", wavFile(someSignal(row.rate * row.channels), row.rate, row.channels));
        const Outcome outcome = zsp("alc in.wav out.wav");
        EXPECT_EQ(outcome.status, 0);
        EXPECT_NE(outcome.text.find(row.word), std::string::npos) << outcome.text;
        const Bytes out = get("out.wav");
        EXPECT_EQ(out[24] | out[25] << 8, static_cast<int>(row.out));
        EXPECT_NEAR(static_cast<double>(out.size() - 44), 2.0 * row.out, 4);
    }
}

TEST_F(HostVoice, AecRemovesTheEchoInTime)
{
    for (const std::uint32_t rate : {8000u, 16000u}) {
        const std::size_t second = rate, echoDelay = 130;
        Words far = someSignal(4 * second), mic(4 * second + 77);
        std::fill(far.begin() + static_cast<std::ptrdiff_t>(3 * second), far.end(),
                  std::int16_t{0});
        for (std::size_t i = echoDelay; i < far.size(); ++i)
            mic[i] = static_cast<std::int16_t>(far[i - echoDelay] / 2);
        const Words near = someSignal(second / 2); // alone, when the echo is over
        std::copy(near.begin(), near.end(),
                  mic.begin() + static_cast<std::ptrdiff_t>(7 * second / 2));
        put("far.wav", wavFile(far, rate));
        put("mic.wav", wavFile(mic, rate));
        const std::string call = "aec --far far.wav --mic mic.wav --tail 64 ";
        const Outcome outcome = zsp(call + "-o out.raw --suppressor on --report r.html");
        EXPECT_EQ(outcome.status, 0);
        EXPECT_TRUE(outcome.text.starts_with("zsp aec: echo ")) << outcome.text;
        EXPECT_NE(outcome.text.find("suppressor on"), std::string::npos) << outcome.text;
        const Bytes out = get("out.raw");
        ASSERT_EQ(out.size(), 2 * mic.size());
        const auto sample = [&out](std::size_t i) {
            return static_cast<std::int16_t>(out[2 * i] | out[2 * i + 1] << 8);
        };
        double echo = 0, left = 0, wanted = 0, error = 0;
        for (std::size_t i = 2 * second; i < 3 * second; ++i) {
            echo += 1.0 * mic[i] * mic[i];
            left += 1.0 * sample(i) * sample(i);
        }
        for (std::size_t i = 7 * second / 2; i < 4 * second; ++i) {
            wanted += 1.0 * mic[i] * mic[i];
            error += std::pow(sample(i) - mic[i], 2);
        }
        EXPECT_LT(left, echo * 1e-3) << rate;
        EXPECT_LT(error, wanted * 1e-4) << "late or early at " << rate;
        EXPECT_GT(get("r.html").size(), 10000u);
        EXPECT_EQ(zsp("aec --tail 64 --suppressor=on far.wav mic.wav again.raw").status, 0);
        EXPECT_EQ(get("again.raw"), out);
        EXPECT_EQ(zsp(call + "-o alone.raw").status, 0);
        EXPECT_EQ(zsp(call + "-o other.raw --suppressor off --alc off").status, 0);
        EXPECT_EQ(get("other.raw"), get("alone.raw"));
        EXPECT_NE(get("other.raw"), out);
        EXPECT_EQ(zsp(call + "-o levelled.raw --alc on").status, 0);
        EXPECT_NE(get("levelled.raw"), get("alone.raw"));
    }
}

// What comes later than the tail reaches is not removed, and the figure must say so.
TEST_F(HostVoice, AecCountsTheEchoThatStays)
{
    const Words far = someSignal(24000);
    Words mic(far.size());
    std::copy(far.begin(), far.end() - 3200, mic.begin() + 3200);
    put("far.wav", wavFile(far, 8000));
    put("mic.wav", wavFile(mic, 8000));
    const Outcome outcome = zsp("aec far.wav mic.wav out.wav --tail 64");
    EXPECT_EQ(outcome.status, 0);
    const std::string before = "zsp aec: echo ";
    ASSERT_TRUE(outcome.text.starts_with(before)) << outcome.text;
    EXPECT_LT(std::stod(outcome.text.substr(before.size())), 1.5) << outcome.text;
}

TEST_F(HostVoice, AecTakesOtherSignalsWithAWord)
{
    put("mic.wav", wavFile(someSignal(44100 * 2), 44100, 2));
    put("far.wav", wavFile(someSignal(4000), 8000)); // and too short
    const Outcome outcome = zsp("aec far.wav mic.wav out.wav");
    EXPECT_EQ(outcome.status, 0);
    for (const char* word : {"mic.wav: mixing 2 channels", "mic.wav: converting 44100 Hz to 16000",
                             "far.wav: converting 8000 Hz to 16000"})
        EXPECT_NE(outcome.text.find(word), std::string::npos) << outcome.text;
    EXPECT_NEAR(static_cast<double>(get("out.wav").size() - 44), 2.0 * 16000, 4);
}

TEST_F(HostVoice, MemoryDoesNotGrowWithTheLengthOfTheFiles)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers keep freed memory for a while";
#endif
    constexpr std::uint32_t kMinute = 60 * 16000; // bytes at 8 kHz
    for (const std::uint32_t minutes : {1u, 15u}) {
        const std::string name = std::to_string(minutes) + ".wav";
        put(name, wavPromising({}, minutes * kMinute));
        fs::resize_file(path(name), 44 + minutes * kMinute); // silence
    }
    const auto peakKilobytes = [this](const char* minutes, const std::string& arguments) {
        const std::string command = "cd " + directory_.string() + "; n=" + minutes +
                                    "; exec " ZSP_PROGRAM " " + arguments + " >/dev/null 2>&1";
        const pid_t child = fork();
        if (child == 0) {
            execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
            _exit(127);
        }
        int status = -1;
        rusage usage{};
        EXPECT_EQ(wait4(child, &status, 0, &usage), child);
        EXPECT_EQ(status, 0) << command;
        return usage.ru_maxrss;
    };
    for (const char* arguments :
         {"aec --tail 32 --alc on --suppressor on $n.wav $n.wav out.wav --report r.html",
          "vad -d amrwb $n.wav out.csv --report r.html", "vad -d amr1 --dtx $n.wav"}) {
        const long brief = peakKilobytes("1", arguments), lengthy = peakKilobytes("15", arguments);
        EXPECT_LT(lengthy, brief + 4096) << arguments;
        EXPECT_LT(lengthy, 65536) << arguments;
    }
}

TEST_F(HostVoice, VadFindsTheBurstAtEveryRate)
{
    // Two seconds of faint noise, one of loud noise that rises and falls as syllables do, two
    // faint.
    Samples samples(11);
    for (const std::uint32_t rate : {8000u, 16000u, 44100u}) {
        Words signal(5 * rate);
        for (std::size_t i = 0; i < signal.size(); ++i) {
            const double seconds = static_cast<double>(i) / rate;
            const bool loud = seconds >= 2 && seconds < 3;
            const double swell = std::abs(std::sin(seconds * 12));
            signal[i] = static_cast<std::int16_t>(static_cast<double>(samples.uniform(-30, 30)) *
                                                  (loud ? 1 + 500 * swell : 1));
        }
        put("in.wav", wavFile(signal, rate));
        for (const std::string detector : {"amr1", "amr2", "amrwb"}) {
            const Outcome outcome = zsp("vad -d " + detector +
                                        " in.wav --dtx --csv out.csv --report r.html 2>/dev/null");
            SCOPED_TRACE(detector + " at " + std::to_string(rate) + " Hz:\n" + outcome.text);
            ASSERT_EQ(outcome.status, 0);
            // The segment that holds the burst; an early one is allowed while the noise is learnt.
            bool found = false;
            std::istringstream lines(outcome.text);
            for (std::string line; std::getline(lines, line);) {
                double start = 0, end = 0, length = 0;
                if (std::sscanf(line.c_str(), "%lf %lf %lf", &start, &end, &length) != 3) continue;
                EXPECT_TRUE(end <= 0.5 || start >= 1.9);
                found = found || (start < 2.1 && start > 1.9 && end > 2.9 && end < 3.6);
            }
            EXPECT_TRUE(found);
            EXPECT_NE(outcome.text.find("F..U.......U"), std::string::npos);
            const Bytes csv = get("out.csv");
            EXPECT_EQ(std::count(csv.begin(), csv.end(), '\n'), 251); // heading and 250 frames
            EXPECT_GT(get("r.html").size(), 10000u);
        }
    }
}

} // namespace

} // namespace zsp::test
