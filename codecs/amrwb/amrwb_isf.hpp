// Immittance spectral frequencies of AMR-WB: conversion to pairs and back, and the quantiser of
// comfort noise.
#pragma once

#include "codecs/amrwb/amrwb_isf_tables.hpp"
#include "core/spans.hpp"

#include <array>
#include <cstdint>
#include <span>

namespace zsp::amrwb {

/// The definition: interpolation in the cosine table. `isp` may be `isf`; neither is empty.
void isfToIspScalar(In16 isf, Out16 isp) noexcept;

/// Equal to isfToIspScalar in every result.
void isfToIspAvx2(In16 isf, Out16 isp) noexcept;

/// The definition: a walk through the cosine table. `isf` may be `isp`; neither is empty.
void ispToIsfScalar(In16 isp, Out16 isf) noexcept;

/// Equal to ispToIsfScalar in every result.
void ispToIsfAvx2(In16 isp, Out16 isf) noexcept;

using InIsf = std::span<const std::int16_t, kIsfOrder>;
using OutIsf = std::span<std::int16_t, kIsfOrder>;

inline constexpr std::size_t kNoiseBooks = 5;
using NoiseIndices = std::array<std::int16_t, kNoiseBooks>;

/// The definition: per codebook the first codevector of least squared error.
NoiseIndices quantiseNoiseScalar(InIsf isf) noexcept;

/// Equal to quantiseNoiseScalar in every result.
NoiseIndices quantiseNoiseAvx2(InIsf isf) noexcept;

/// The ISFs that five indices stand for; bits above a codebook's size are ignored.
void decodeNoise(const NoiseIndices& indices, OutIsf isf) noexcept;

} // namespace zsp::amrwb
