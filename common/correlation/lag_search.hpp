// Searches for the lag of the largest correlation.
#pragma once

#include "core/spans.hpp"

namespace zsp::common {

/// The order in which a search visits the offsets; of equal maxima the first visited stays.
enum class Scan { up, down };

template <typename T>
struct Maximum {
    T corr;             // 0 when no correlation is positive
    std::size_t offset; // the scan's first offset when no correlation is positive
};

/// The definition: the largest positive sum over i of a[i] * b[offset + i] over all offsets from 0
/// to b.size() - a.size(), each sum modulo 2^32.
Maximum<std::int32_t> lagMaxScalar(In16 a, In16 b, Scan scan) noexcept;

/// Equal to lagMaxScalar in every result.
Maximum<std::int32_t> lagMaxAvx2(In16 a, In16 b, Scan scan) noexcept;

/// The same in single precision: each sum starts at 0 and adds the rounded products in the order of
/// i. A sum that is not a number is never a maximum.
Maximum<float> lagMaxScalar(InF a, InF b, Scan scan) noexcept;

/// Equal to lagMaxScalar in every result.
Maximum<float> lagMaxAvx2(InF a, InF b, Scan scan) noexcept;

} // namespace zsp::common
