// Objects in memory of the caller's. A handle is the address of that memory, whatever it is; the
// object starts at the first 16-byte boundary behind it, found anew in every call. So an object may
// be copied bytewise to an address with the same remainder modulo 16.
#pragma once

#include "zspvoice.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <type_traits>

namespace zsp::voice {

inline constexpr std::size_t kBoundary = 16;

/// What an object of so many bytes needs at any address.
constexpr std::int32_t placedSize(std::size_t bytes) noexcept
{
    return static_cast<std::int32_t>(bytes + kBoundary - 1);
}

/// Bytes rounded up to the boundary, for what stands behind them.
constexpr std::size_t padded(std::size_t bytes) noexcept
{
    return (bytes + kBoundary - 1) / kBoundary * kBoundary;
}

/// The object of a handle.
template <typename T, typename Handle>
auto* placed(Handle* handle) noexcept
{
    static_assert(alignof(T) <= kBoundary && std::is_trivially_copyable_v<T>);
    using Byte = std::conditional_t<std::is_const_v<Handle>, const std::byte, std::byte>;
    using Object = std::conditional_t<std::is_const_v<Handle>, const T, T>;
    const auto address = reinterpret_cast<std::uintptr_t>(handle);
    auto* bytes = reinterpret_cast<Byte*>(handle) + (-address & (kBoundary - 1));
    return reinterpret_cast<Object*>(bytes);
}

/// What follows an object of type T: a coder's state, or samples.
template <typename T>
std::byte* behind(T* object) noexcept
{
    return reinterpret_cast<std::byte*>(object) + padded(sizeof(T));
}

template <typename T>
const std::byte* behind(const T* object) noexcept
{
    return reinterpret_cast<const std::byte*>(object) + padded(sizeof(T));
}

/// zspvXCreate(): `init(memory, size, &handle)` in memory of malloc().
template <typename Handle, typename Init>
ZspStatus createObject(std::int32_t size, Init init, Handle** handle) noexcept
{
    void* memory = std::malloc(static_cast<std::size_t>(size));
    if (!memory) return zspStsMemAllocErr;

    const ZspStatus status = init(memory, size, handle);
    if (status != zspStsNoErr) std::free(memory);
    return status;
}

} // namespace zsp::voice
