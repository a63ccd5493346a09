// Where the recordings lie.

#include "bench/support/speech.hpp"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <ios>
#include <string>

namespace zsp::bench {

std::vector<std::int16_t> speech(const char* name)
{
    const std::string path = std::string(ZSPSC_VECTOR_DIR "/") + name;
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    std::vector<std::int16_t> samples(file ? static_cast<std::size_t>(file.tellg()) / 2 : 0);
    file.seekg(0);
    file.read(reinterpret_cast<char*>(samples.data()),
              static_cast<std::streamsize>(samples.size() * 2));
    if (!file || samples.empty()) {
        std::fprintf(stderr, "cannot read %s\n", path.c_str());
        std::exit(EXIT_FAILURE);
    }
    return samples;
}

std::vector<std::int16_t> fullScaleSpeech()
{
    auto samples = speech();
    for (auto& x : samples)
        x = static_cast<std::int16_t>(x * 4);
    return samples;
}

} // namespace zsp::bench
