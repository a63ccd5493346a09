// Drives the built zsp over good and bad input, in a directory of its own per test.

#include "zspsc.h"

#include "tests/support/samples.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace zsp::test {

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::int16_t>;

struct Outcome {
    int status = 0;
    std::string text; // standard output and error
};

Outcome shell(const std::string& command)
{
    Outcome outcome;
    FILE* pipe = popen(("exec 2>&1; " + command).c_str(), "r");
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
        outcome.text += static_cast<char>(c);
    const int status = pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return outcome;
}

void append(Bytes& bytes, std::uint32_t value, int count)
{
    for (int i = 0; i < count; ++i)
        bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}

Bytes littleEndian(const Words& words)
{
    Bytes bytes;
    for (const std::int16_t word : words)
        append(bytes, static_cast<std::uint16_t>(word), 2);
    return bytes;
}

/// A WAV file of 16-bit samples. `promised` is what its header says about the bytes of samples.
Bytes wavFile(const Words& samples, std::uint32_t rate, std::uint32_t channels,
              std::uint32_t promised)
{
    Bytes file = {'R', 'I', 'F', 'F'};
    append(file, 36 + promised, 4);
    for (const char c : std::string("WAVEfmt "))
        file.push_back(static_cast<std::uint8_t>(c));
    append(file, 16, 4);
    append(file, 1, 2);
    append(file, channels, 2);
    append(file, rate, 4);
    append(file, rate * channels * 2, 4);
    append(file, channels * 2, 2);
    append(file, 16, 2);
    for (const char c : std::string("data"))
        file.push_back(static_cast<std::uint8_t>(c));
    append(file, promised, 4);
    const Bytes data = littleEndian(samples);
    file.insert(file.end(), data.begin(), data.end());
    return file;
}

Bytes wavFile(const Words& samples, std::uint32_t rate = 8000, std::uint32_t channels = 1)
{
    return wavFile(samples, rate, channels, static_cast<std::uint32_t>(2 * samples.size()));
}

struct Rate {
    int kbit, code, bits;
};
constexpr std::array<Rate, 4> kRates = {{{16, 17, 2}, {24, 22, 3}, {32, 23, 4}, {40, 24, 5}}};

Bytes libraryCodes(const Words& samples, const Rate& rate)
{
    Words uniform;
    for (const std::int16_t x : samples)
        uniform.push_back(static_cast<std::int16_t>(x >> 2));
    Bytes state(88), codes(samples.size());
    EXPECT_EQ(zspsEncodeInit_G726_16s8u(state.data(), rate.code), zspStsNoErr);
    EXPECT_EQ(zspsEncode_G726_16s8u(state.data(), uniform.data(), codes.data(),
                                    static_cast<std::int32_t>(codes.size())),
              zspStsNoErr);
    return codes;
}

Words libraryOutput(const Bytes& codes, const Rate& rate, int law)
{
    Bytes state(92);
    Words out(codes.size());
    EXPECT_EQ(zspsDecodeInit_G726_8u16s(state.data(), rate.code, law), zspStsNoErr);
    EXPECT_EQ(zspsDecode_G726_8u16s(state.data(), codes.data(), out.data(),
                                    static_cast<std::int32_t>(codes.size())),
              zspStsNoErr);
    return out;
}

/// Bit by bit: code word after code word, bits upwards or downwards, into bytes the same way.
Bytes packed(const Bytes& codes, int bits, bool lowFirst)
{
    Bytes bytes((codes.size() * static_cast<std::size_t>(bits) + 7) / 8);
    std::size_t position = 0;
    for (const std::uint8_t code : codes)
        for (int i = 0; i < bits; ++i, ++position) {
            const int from = lowFirst ? i : bits - 1 - i;
            const auto at = static_cast<int>(position % 8);
            if (code >> from & 1)
                bytes[position / 8] |= static_cast<std::uint8_t>(1 << (lowFirst ? at : 7 - at));
        }
    return bytes;
}

/// Noise that swells, so that codes of all sizes occur.
Words someSignal(std::size_t count)
{
    Samples samples(7);
    Words signal(count);
    for (std::size_t i = 0; i < count; ++i)
        signal[i] = static_cast<std::int16_t>(samples.uniform(-30000, 30000) *
                                              static_cast<std::int64_t>(i % 4000) / 4000);
    return signal;
}

class Host : public testing::Test {
  protected:
    void SetUp() override
    {
        std::string name = (fs::temp_directory_path() / "zsp-host-test-XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        directory_ = name;
    }
    void TearDown() override { fs::remove_all(directory_); }

    [[nodiscard]] std::string path(const std::string& name) const { return directory_ / name; }

    void put(const std::string& name, const Bytes& bytes) const
    {
        std::ofstream(path(name), std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
    }

    [[nodiscard]] Bytes get(const std::string& name) const
    {
        std::ifstream file(path(name), std::ios::binary);
        EXPECT_TRUE(file) << name;
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /// Runs zsp in the test's directory; `arguments` may pipe and redirect.
    [[nodiscard]] Outcome zsp(const std::string& arguments) const
    {
        return shell("cd " + directory_.string() + " && " ZSP_PROGRAM " " + arguments);
    }

    [[nodiscard]] std::vector<std::string> files() const
    {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(directory_))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }

    fs::path directory_;
};

TEST_F(Host, G726FilesHoldWhatTheLibraryComputes)
{
    const Words signal = someSignal(20003); // not a whole number of blocks or packed groups
    put("in.wav", wavFile(signal));
    for (const Rate& rate : kRates) {
        const Bytes codes = libraryCodes(signal, rate);
        const std::string options = " -r " + std::to_string(rate.kbit) + " -p ";
        const std::pair<const char*, Bytes> packings[] = {
            {"none", codes},
            {"rfc3551", packed(codes, rate.bits, true)},
            {"aal2", packed(codes, rate.bits, false)}};
        for (const auto& [packing, bytes] : packings) {
            SCOPED_TRACE(options + packing);
            EXPECT_EQ(zsp("g726 encode" + options + packing + " in.wav codes").text, "");
            EXPECT_EQ(get("codes"), bytes);
            EXPECT_EQ(zsp("g726 decode" + options + packing + " codes out.raw").text, "");
            Words wanted = libraryOutput(codes, rate, 2);
            for (std::int16_t& x : wanted)
                x = static_cast<std::int16_t>(x * 4);
            Bytes got = get("out.raw");
            // At 16 kbit/s the filling of the last byte cannot be told from code words.
            if (rate.kbit == 16) {
                EXPECT_LE(got.size(), 2 * signal.size() + 6);
                got.resize(2 * signal.size());
            }
            EXPECT_EQ(got, littleEndian(wanted));
        }
    }
}

TEST_F(Host, G726LawsInEveryContainer)
{
    const Rate& rate = kRates[2];
    const Bytes codes = libraryCodes(someSignal(9000), rate);
    put("codes", codes);
    const std::pair<const char*, int> laws[] = {{"mu", 0}, {"a", 1}};
    for (const auto& [law, lawCode] : laws) {
        Bytes wanted;
        for (const std::int16_t word : libraryOutput(codes, rate, lawCode))
            wanted.push_back(static_cast<std::uint8_t>(word));
        const std::string decode = std::string("g726 decode -p none -l ") + law + " codes ";
        ASSERT_EQ(zsp(decode + "out.raw").text, "");
        EXPECT_EQ(get("out.raw"), wanted);
        // Whatever the container, encoding it again gives the same code words.
        for (const char* name : {"out.wav", "out.au"}) {
            SCOPED_TRACE(std::string(law) + " " + name);
            ASSERT_EQ(zsp(decode + name).text, "");
            const Bytes file = get(name);
            EXPECT_NE(std::search(file.begin(), file.end(), wanted.begin(), wanted.end()),
                      file.end());
            const std::string encode = std::string("g726 encode -p none -l ") + law;
            ASSERT_EQ(zsp(encode + " " + name + " again").text, "");
            ASSERT_EQ(zsp(encode + " out.raw again.raw").text, "");
            EXPECT_EQ(get("again"), get("again.raw"));
            const Outcome wrong = zsp("g726 encode -l linear " + std::string(name) + " no");
            EXPECT_EQ(wrong.status, 1);
            EXPECT_NE(wrong.text.find("law samples, not 16-bit linear"), std::string::npos);
        }
    }
}

TEST_F(Host, G726ThroughPipes)
{
    const Words signal = someSignal(30000);
    put("in.wav", wavFile(signal));
    ASSERT_EQ(zsp("g726 encode in.wav codes && " ZSP_PROGRAM " g726 decode codes out.au").text, "");
    ASSERT_EQ(zsp("g726 encode - - <in.wav | cat >codes.piped").text, "");
    EXPECT_EQ(get("codes.piped"), get("codes"));
    ASSERT_EQ(zsp("g726 decode - - <codes | cat >out.piped").text, "");
    const Bytes piped = get("out.piped"), whole = get("out.au");
    ASSERT_EQ(piped.size(), whole.size());
    EXPECT_TRUE(std::equal(piped.begin() + 24, piped.end(), whole.begin() + 24));
    // A pipe's AU header leaves the length open, and is understood again.
    ASSERT_EQ(zsp("g726 encode - again <out.piped").text, "");
    ASSERT_EQ(zsp("g726 encode out.au again.file").text, "");
    EXPECT_EQ(get("again"), get("again.file"));
}

/// Encoder and decoder of the library, whole signal in one call.
Bytes libraryG722(Words samples, int mode, Words& decoded)
{
    Bytes state(144);
    std::array<std::int16_t, 24> delayLine{};
    const auto length = static_cast<std::int32_t>(samples.size());
    zspsSBADPCMEncodeInit_G722_16s(state.data());
    zspsQMFEncode_G722_16s(samples.data(), samples.data(), length, delayLine.data());
    zspsSBADPCMEncode_G722_16s(samples.data(), samples.data(), length, state.data());
    Bytes bytes;
    for (std::size_t i = 0; i < samples.size(); i += 2)
        bytes.push_back(
            static_cast<std::uint8_t>((samples[i + 1] * 64 + samples[i]) & (mode == 1   ? 0xff
                                                                            : mode == 2 ? 0xfe
                                                                                        : 0xfc)));
    decoded.clear();
    for (const std::uint8_t byte : bytes) {
        decoded.push_back(byte & 63);
        decoded.push_back(byte >> 6);
    }
    delayLine = {};
    zspsSBADPCMDecodeInit_G722_16s(state.data());
    zspsSBADPCMDecode_G722_16s(decoded.data(), decoded.data(), length,
                               static_cast<std::int16_t>(mode), state.data());
    zspsQMFDecode_G722_16s(decoded.data(), decoded.data(), length, delayLine.data());
    return bytes;
}

TEST_F(Host, G722FilesHoldWhatTheLibraryComputes)
{
    Words signal = someSignal(40001); // not whole: the last byte is filled with a zero sample
    put("in.wav", wavFile(signal, 16000));
    signal.push_back(0);
    for (const int mode : {1, 2, 3}) {
        const std::string options = " -m " + std::to_string(mode);
        Words decoded;
        const Bytes bytes = libraryG722(signal, mode, decoded);
        ASSERT_EQ(zsp("g722 encode" + options + " in.wav speech.g722").text, "");
        EXPECT_EQ(get("speech.g722"), bytes) << options;
        ASSERT_EQ(zsp("g722 decode" + options + " - - <speech.g722 >out.au").text, "");
        ASSERT_EQ(zsp("g722 decode" + options + " speech.g722 out.raw").text, "");
        EXPECT_EQ(get("out.raw"), littleEndian(decoded)) << options;
        ASSERT_EQ(zsp("g722 encode" + options + " - again <out.au").text, "");
        EXPECT_EQ(get("again").size(), bytes.size());
    }
}

TEST_F(Host, AlcLevelsAsTheLibraryDoes)
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
    EXPECT_EQ(zsp("alc in.wav out.raw --max-gain 6 --target 20 --peak 3 --report r.html").text, "");
    EXPECT_EQ(get("out.raw"), littleEndian(wanted));
    EXPECT_GT(get("r.html").size(), 10000u);
    put("stereo.wav", wavFile(signal, 8000, 2));
    EXPECT_EQ(zsp("alc stereo.wav no.wav").status, 1);
    EXPECT_EQ(zsp("alc in.wav no.wav --max-gain -1").status, 2);
    EXPECT_FALSE(fs::exists(path("no.wav")));
}

TEST_F(Host, AecRemovesTheEchoInTime)
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
        EXPECT_EQ(zsp(call + "-o out.raw --suppressor on --report r.html").text, "");
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
        EXPECT_EQ(zsp(call + "-o again.raw --suppressor on").status, 0);
        EXPECT_EQ(get("again.raw"), out);
        EXPECT_EQ(zsp(call + "-o alone.raw").status, 0);
        EXPECT_EQ(zsp(call + "-o other.raw --suppressor off --alc off").status, 0);
        EXPECT_EQ(get("other.raw"), get("alone.raw"));
        EXPECT_NE(get("other.raw"), out);
        EXPECT_EQ(zsp(call + "-o levelled.raw --alc on").status, 0);
        EXPECT_NE(get("levelled.raw"), get("alone.raw"));
    }
    put("far.wav", wavFile(Words(8000), 8000)); // the microphone's is at 16 kHz now
    EXPECT_EQ(zsp("aec --far far.wav --mic mic.wav -o no.wav").status, 1);
    put("far.wav", wavFile(Words(8000), 44100));
    EXPECT_EQ(zsp("aec --far far.wav --mic far.wav -o no.wav").status, 1);
    EXPECT_EQ(zsp("aec --far mic.wav --mic mic.wav -o no.wav --tail 7").status, 2);
    EXPECT_FALSE(fs::exists(path("no.wav")));
}

TEST_F(Host, VadFindsTheBurstAtEveryRate)
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

TEST_F(Host, FailuresAreToldAndLeaveNothingBehind)
{
    const Words signal = someSignal(20000);
    put("good.wav", wavFile(signal));
    put("empty", {});
    put("short.wav", wavFile(signal, 8000, 1, 50000));
    put("odd.wav", wavFile(signal, 8000, 1, 39999));
    put("none.wav", wavFile({}));
    put("rate.wav", wavFile(signal, 16000));
    put("stereo.wav", wavFile(signal, 8000, 2));
    put("odd.raw", Bytes(4001, 1));
    put("noise", Bytes(3000, 0x5a));
    Bytes head = wavFile(signal);
    head.resize(30);
    put("head.wav", head);
    Bytes garbled = wavFile(signal);
    std::fill(garbled.begin() + 12, garbled.begin() + 40, std::uint8_t{0xff});
    put("garbled.wav", garbled);
    put("kept", {1, 2, 3});
    fs::create_directory(path("directory"));
    const std::vector<std::string> before = files();

    struct Row {
        const char* arguments;
        int status;
        const char* message;
    };
    const Row rows[] = {
        {"g726 encode missing.wav out", 1, "missing.wav: No such file or directory"},
        {"g726 encode directory out", 1, "directory: Is a directory"},
        {"g726 encode empty out", 1, "empty: is empty"},
        {"g726 encode none.wav out", 1, "none.wav: holds no samples"},
        {"g726 encode short.wav out", 1, "the header promises 50000 bytes"},
        {"g726 encode short.wav kept", 1, "short.wav: truncated"},
        {"g726 encode - out <short.wav", 1, "truncated"},
        {"g726 encode - kept <short.wav", 1, "truncated"},
        {"cat short.wav | " ZSP_PROGRAM " g726 encode - kept", 1, "truncated"},
        {"g726 encode odd.wav out", 1, "not a whole number of frames"},
        {"g726 encode odd.raw out", 1, "odd number of bytes"},
        {"g726 encode -f raw - out <odd.raw", 1, "odd number of bytes"},
        {"cat odd.raw | " ZSP_PROGRAM " g726 encode -f raw - out", 1, "odd number of bytes"},
        {"g726 encode head.wav out", 1, "head.wav: "},
        {"g726 encode garbled.wav out", 1, "garbled.wav: "},
        {"g726 encode noise out", 1, "noise: "},
        {"g726 encode -f au good.wav out", 1, "good.wav: is not an AU file"},
        {"g726 encode rate.wav out", 1, "sampled at 16000 Hz"},
        {"g726 encode stereo.wav out", 1, "has 2 channels"},
        {"g726 encode good.wav nowhere/out", 1, "nowhere/out: No such file or directory"},
        {"g726 encode good.wav directory", 1, "directory: Is a directory"},
        {"g726 encode good.wav /dev/full", 1, "/dev/full: No space left on device"},
        {"g726 encode good.wav - >/dev/full", 1, "No space left on device"},
        {"g726 decode good.wav -f au /dev/full", 1, "/dev/full: No space left on device"},
        {"g726 decode empty out.wav", 1, "empty: is empty"},
        {"g726 decode - out.wav </dev/null", 1, "is empty"},
        {"g726 decode -p none noise out.wav", 1, "byte 0 is 0x5a, no code word of 4 bits"},
        {"g726 decode noise /dev/full", 1, "/dev/full: No space left on device"},
        {"g726 decode -f wav noise /dev/null", 2, "cannot be completed on a pipe"},
        {"g726 encode -r 33 good.wav out", 2, "33"},
        {"g726 encode -p zip good.wav out", 2, "zip"},
        {"g726 encode good.wav", 2, "output"},
        {"g726", 2, "subcommand"},
        {"", 2, "subcommand"},
        {"sing", 2, "no command named sing"},
        {"g722 encode good.wav out", 1, "sampled at 8000 Hz; G.722 codes 16000 Hz"},
        {"g722 encode -m 4 rate.wav out", 2, "4"},
        {"g722 encode short.wav out", 1, "truncated"},
        {"g722 encode rate.wav /dev/full", 1, "/dev/full: No space left on device"},
        {"g722 decode empty out.wav", 1, "empty: is empty"},
        {"g722 decode noise nowhere/out.wav", 1, "nowhere/out.wav: No such file"},
        {"vad short.wav --csv out", 1, "truncated"},
        {"vad good.wav --csv nowhere/out >/dev/null", 1, "nowhere/out: No such file"},
        {"alc empty out.wav", 1, "empty: is empty"},
        {"demo missing.wav -o out", 1, "missing.wav: No such file"},
        {"demo -o kept", 1, "kept: "},
        {"info >/dev/full", 1, "No space left on device"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.arguments);
        const std::string arguments = row.arguments;
        const Outcome outcome = arguments.starts_with("cat ")
                                    ? shell("cd " + directory_.string() + " && " + arguments)
                                    : zsp(arguments);
        EXPECT_EQ(outcome.status, row.status) << outcome.text;
        EXPECT_NE(outcome.text.find(row.message), std::string::npos) << outcome.text;
        EXPECT_TRUE(outcome.text.starts_with("zsp: ")) << outcome.text;
        EXPECT_EQ(files(), before);
        EXPECT_EQ(get("kept"), Bytes({1, 2, 3}));
    }
}

TEST_F(Host, AnInterruptLeavesNothingBehind)
{
    const Bytes input = wavFile(someSignal(20000), 8000, 1, 0xffff'ffff); // of unknown length
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        std::array<int, 2> pipe{};
        ASSERT_EQ(::pipe(pipe.data()), 0);
        const pid_t child = fork();
        if (child == 0) {
            dup2(pipe[0], STDIN_FILENO);
            close(pipe[0]);
            close(pipe[1]);
            execl(ZSP_PROGRAM, "zsp", "g726", "encode", "-", path("out").c_str(), nullptr);
            _exit(127);
        }
        ASSERT_EQ(write(pipe[1], input.data(), input.size()), static_cast<ssize_t>(input.size()));
        // The pipe stays open: the encoder waits for more, its temporary file half written.
        for (int i = 0; i < 500 && files().empty(); ++i)
            usleep(10'000);
        EXPECT_EQ(files().size(), 1u);
        EXPECT_EQ(kill(child, signal), 0);
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal);
        EXPECT_EQ(files(), std::vector<std::string>{});
        close(pipe[0]);
        close(pipe[1]);
    }
}

TEST_F(Host, OutputReplacesWhatALinkNamesAndKeepsItsMode)
{
    put("in.wav", wavFile(someSignal(800)));
    put("target", {1});
    fs::permissions(path("target"), fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink("target", path("link"));
    ASSERT_EQ(zsp("g726 encode in.wav link").text, "");
    EXPECT_TRUE(fs::is_symlink(path("link")));
    EXPECT_EQ(get("target").size(), 400u);
    EXPECT_EQ(fs::status(path("target")).permissions(),
              fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(Host, InfoNamesEveryExport)
{
    const Outcome outcome = zsp("info --exports");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.text.find("8.1.1 (r42291)"), std::string::npos);
#define ZSP_EXPORT(name) EXPECT_NE(outcome.text.find(" " #name "\n"), std::string::npos) << #name;
#define ZSP_EXPORT_AS(name, shared) ZSP_EXPORT(name)
#include "core/exports.inc"
}

#ifdef ZSP_OLD_PROCESSOR
TEST_F(Host, SaysWhenTheProcessorIsNotEnough)
{
    put("in.wav", wavFile(someSignal(800)));
    const std::string preload = "LD_PRELOAD=" ZSP_OLD_PROCESSOR " " ZSP_PROGRAM " ";
    const Outcome info = shell(preload + "info");
    EXPECT_EQ(info.status, 0);
    EXPECT_NE(info.text.find("AVX2, FMA or BMI2 is missing"), std::string::npos);
    const Outcome encode = shell(preload + "g726 encode " + path("in.wav") + " " + path("out"));
    EXPECT_EQ(encode.status, 1);
    EXPECT_NE(encode.text.find("this processor lacks AVX2"), std::string::npos);
    EXPECT_EQ(files(), std::vector<std::string>{"in.wav"});
}
#endif

TEST_F(Host, DemoOnOwnSpeechInAnotherFormat)
{
    put("stereo.wav", wavFile(someSignal(64000), 16000, 2));
    const Outcome outcome = zsp("demo - -o new/dir <stereo.wav");
    EXPECT_EQ(outcome.status, 0) << outcome.text;
    for (const char* text :
         {"mixing 2 channels", "converting 16000 Hz to 8000 Hz", "2.0 s at 8 kHz"})
        EXPECT_NE(outcome.text.find(text), std::string::npos) << outcome.text;
    for (const char* name : {"new/dir/g726-16.wav", "new/dir/g726-40.wav"})
        EXPECT_EQ(get(name).size(), 44 + 2 * 16000u);
    for (const char* name : {"new/dir/g722-48.wav", "new/dir/g722-64.wav"})
        EXPECT_EQ(get(name).size(), 44 + 2 * 32000u);
    const Bytes report = get("new/dir/report.html");
    const std::string html(report.begin(), report.end());
    EXPECT_TRUE(html.starts_with("<!doctype html>"));
    EXPECT_EQ(html.find("://"), std::string::npos) << "the report needs no network";
    EXPECT_EQ(html.find(" nan"), std::string::npos);
    EXPECT_EQ(html.find(">nan"), std::string::npos);
    // A little silence: no figure makes sense, but nothing breaks.
    put("silence.wav", wavFile(Words(100)));
    const Outcome silence = zsp("demo silence.wav -o silence");
    EXPECT_EQ(silence.status, 0) << silence.text;
    EXPECT_EQ(silence.text.find("nan"), std::string::npos) << silence.text;
}

} // namespace

} // namespace zsp::test
