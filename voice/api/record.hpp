// Public records that begin with their size: read from a caller who may have compiled an older or a
// newer version, and written back to one.
#pragma once

#include "zspvoice/params.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace zsp::voice {

/// More than any record will ever have.
inline constexpr std::int32_t kLargestRecord = 4096;

/// Bytes that the first version of a record had.
template <typename T>
inline constexpr std::size_t kFirstVersion = sizeof(T);
template <>
inline constexpr std::size_t kFirstVersion<ZspvParams> = offsetof(ZspvParams, noHighPass);

/// Whether a record has the size of its first version at least, or of a later one.
template <typename T>
bool plausible(const T& record) noexcept
{
    return record.structSize >= static_cast<std::int32_t>(kFirstVersion<T>) &&
           record.structSize <= kLargestRecord;
}

/// A caller's plausible record as this library knows it: fields that the caller's version lacks are
/// 0, and those that only the caller's version has are left out.
template <typename T>
T readRecord(const T& record) noexcept
{
    static_assert(std::is_trivially_copyable_v<T>);
    T own{};
    std::memcpy(&own, &record, std::min(sizeof(T), static_cast<std::size_t>(record.structSize)));
    own.structSize = sizeof(T);
    return own;
}

/// Writes as many fields as the caller's plausible record has; its structSize stays.
template <typename T>
void writeRecord(T& record, T own) noexcept
{
    static_assert(std::is_trivially_copyable_v<T>);
    own.structSize = record.structSize;
    std::memcpy(&record, &own, std::min(sizeof(T), static_cast<std::size_t>(record.structSize)));
}

} // namespace zsp::voice
