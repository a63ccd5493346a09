#include "bundled.hpp"

extern "C" {
extern const std::uint8_t zsp_speech_8k[], zsp_speech_8k_end[];
}

namespace zsp::host {

Audio bundledSpeech8k()
{
    AudioReader reader("bundled speech", std::span(zsp_speech_8k, zsp_speech_8k_end));
    return readAsStored(reader);
}

} // namespace zsp::host
