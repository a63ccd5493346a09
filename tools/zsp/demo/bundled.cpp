// Finds the recordings inside the program.

#include "tools/zsp/demo/bundled.hpp"

extern "C" {
extern const std::uint8_t zsp_speech_8k[], zsp_speech_8k_end[];
extern const std::uint8_t zsp_speech_16k[], zsp_speech_16k_end[];
}

namespace zsp::host {

namespace {

Audio read(const std::uint8_t* begin, const std::uint8_t* end)
{
    AudioReader reader("bundled speech", std::span(begin, end));
    return readMono(reader);
}

} // namespace

Audio bundledSpeech8k()
{
    return read(zsp_speech_8k, zsp_speech_8k_end);
}

Audio bundledSpeech16k()
{
    return read(zsp_speech_16k, zsp_speech_16k_end);
}

} // namespace zsp::host
