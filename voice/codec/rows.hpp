// Declares every descriptor of the table; the folders define them.
#pragma once

#include "voice/codec/codec.hpp"

namespace zsp::voice {

#define ZSPV_CODEC(name) extern const Codec name;
#include "voice/codec/codecs.inc"

} // namespace zsp::voice
