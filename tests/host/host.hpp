// Drives the built zsp over files in a directory of the test's own.
#pragma once

#include "tests/support/samples.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <sys/wait.h>
#include <vector>

namespace zsp::test {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::int16_t>;

struct Outcome {
    int status = 0;
    std::string text; // standard output and error
};

inline Outcome shell(const std::string& command)
{
    Outcome outcome;
    FILE* pipe = popen(("exec 2>&1; " + command).c_str(), "r");
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
        outcome.text += static_cast<char>(c);
    const int status = pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return outcome;
}

inline void append(Bytes& bytes, std::uint32_t value, int count)
{
    for (int i = 0; i < count; ++i)
        bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}

inline void append(Bytes& bytes, const std::string& text)
{
    bytes.insert(bytes.end(), text.begin(), text.end());
}

inline Bytes littleEndian(const Words& words)
{
    Bytes bytes;
    for (const std::int16_t word : words)
        append(bytes, static_cast<std::uint16_t>(word), 2);
    return bytes;
}

inline Words wordsOf(const Bytes& bytes, std::size_t offset = 0)
{
    Words words;
    for (std::size_t i = offset; i + 1 < bytes.size(); i += 2)
        words.push_back(static_cast<std::int16_t>(bytes[i] | bytes[i + 1] << 8));
    return words;
}

/// What a WAV header says.
struct WavKind {
    std::uint32_t rate = 8000, channels = 1;
    std::uint32_t tag = 1, bits = 16;
    std::uint32_t riffSize = 0, dataSize = 0; // where they are not to fit
    bool sizesGiven = false;
};

inline Bytes wavOf(const Bytes& data, const WavKind& kind)
{
    const auto size = static_cast<std::uint32_t>(data.size());
    const std::uint32_t frame = kind.channels * kind.bits / 8;
    Bytes file;
    append(file, "RIFF");
    append(file, kind.sizesGiven ? kind.riffSize : 36 + size, 4);
    append(file, "WAVEfmt ");
    append(file, 16, 4);
    append(file, kind.tag, 2);
    append(file, kind.channels, 2);
    append(file, kind.rate, 4);
    append(file, kind.rate * frame, 4);
    append(file, frame, 2);
    append(file, kind.bits, 2);
    append(file, "data");
    append(file, kind.sizesGiven ? kind.dataSize : size, 4);
    file.insert(file.end(), data.begin(), data.end());
    return file;
}

inline Bytes wavFile(const Words& samples, std::uint32_t rate = 8000, std::uint32_t channels = 1)
{
    return wavOf(littleEndian(samples), {.rate = rate, .channels = channels});
}

/// A header that promises other sizes than there are.
inline Bytes wavPromising(const Words& samples, std::uint32_t dataSize)
{
    return wavOf(littleEndian(samples),
                 {.riffSize = 36 + dataSize, .dataSize = dataSize, .sizesGiven = true});
}

/// Noise that swells, so that codes of all sizes occur.
inline Words someSignal(std::size_t count)
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

    [[nodiscard]] std::string text(const std::string& name) const
    {
        const Bytes bytes = get(name);
        return {bytes.begin(), bytes.end()};
    }

    /// A command line in the test's directory, where `zsp` is the built one.
    [[nodiscard]] Outcome run(const std::string& commands) const
    {
        return shell("cd " + directory_.string() + "; zsp() { " ZSP_PROGRAM " \"$@\"; }; " +
                     commands);
    }

    /// zsp with these arguments, which may pipe and redirect.
    [[nodiscard]] Outcome zsp(const std::string& arguments) const
    {
        return run("zsp " + arguments);
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

} // namespace zsp::test
