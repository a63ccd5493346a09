// 16-bit mono WAV files of the project's data folder.
#pragma once

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace zsp::bench {

/// The samples; empty when there is no such file. The data chunk is the last one.
inline std::vector<std::int16_t> readWav(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    const std::size_t chunk = bytes.find("data", 12);
    if (chunk == std::string::npos || chunk + 8 > bytes.size()) return {};
    std::vector<std::int16_t> samples((bytes.size() - chunk - 8) / sizeof(std::int16_t));
    if (!samples.empty())
        std::memcpy(samples.data(), &bytes[chunk + 8], samples.size() * sizeof(std::int16_t));
    return samples;
}

} // namespace zsp::bench
