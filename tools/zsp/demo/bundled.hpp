// The speech that comes with the program: telephone prompts, described in data/README.md.
#pragma once

#include "tools/zsp/io/audio.hpp"

namespace zsp::host {

/// 24 s at 8 kHz.
Audio bundledSpeech8k();
/// 10 s at 16 kHz, other sentences.
Audio bundledSpeech16k();

} // namespace zsp::host
