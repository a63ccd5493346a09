// The 33 bytes of a stored frame of GSM full rate.
#pragma once

#include "codecs/gsmfr/gsmfr_tables.hpp"
#include "core/spans.hpp"

#include <cstdint>
#include <span>

namespace zsp::gsmfr {

using Parameters = std::span<std::int16_t, kParameters>;
using InParameters = std::span<const std::int16_t, kParameters>;
using Bytes = std::span<std::uint8_t, kFrameBytes>;
using InBytes = std::span<const std::uint8_t, kFrameBytes>;

/// Whether all parameters fit their bits.
bool parametersInRange(InParameters parameters) noexcept;

/// Whether the frame begins with the signature.
bool hasSignature(InBytes bytes) noexcept;

void packFrame(InParameters parameters, Bytes bytes) noexcept;
void unpackFrame(InBytes bytes, Parameters parameters) noexcept;

} // namespace zsp::gsmfr
