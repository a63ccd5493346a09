// The two ways from a caller's state buffer to a record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace zsp {

/// A record that lies where the caller put it, at any address: read on construction, written back
/// on destruction.
template <typename T>
class InPlace {
    static_assert(std::is_trivially_copyable_v<T>);

  public:
    explicit InPlace(void* buffer) noexcept : buffer_(buffer)
    {
        std::memcpy(&record_, buffer, sizeof(T));
    }
    ~InPlace() { std::memcpy(buffer_, &record_, sizeof(T)); }

    InPlace(const InPlace&) = delete;
    InPlace& operator=(const InPlace&) = delete;

    T* operator->() noexcept { return &record_; }
    T& operator*() noexcept { return record_; }

  private:
    void* buffer_;
    T record_;
};

/// A copy of a record that is only read, from any address.
template <typename T>
T readRecord(const void* buffer) noexcept
{
    static_assert(std::is_trivially_copyable_v<T>);
    T record;
    std::memcpy(&record, buffer, sizeof(T));
    return record;
}

/// Writes a fresh record to where the caller wants it, at any address.
template <typename T>
void placeRecord(void* buffer, const T& record) noexcept
{
    static_assert(std::is_trivially_copyable_v<T>);
    std::memcpy(buffer, &record, sizeof(T));
}

/// The slack that a family reports when its record starts at a 16-byte boundary.
inline constexpr std::int32_t kStateSlack = 16;

/// The first multiple of `boundary`, a power of two, at or after an address.
inline void* alignUp(void* address, std::size_t boundary) noexcept
{
    const auto bits = reinterpret_cast<std::uintptr_t>(address);
    return static_cast<std::byte*>(address) + ((boundary - bits) & (boundary - 1));
}

/// The record at the first 16-byte boundary of the caller's buffer.
template <typename T>
T* alignedState(void* buffer) noexcept
{
    static_assert(alignof(T) <= 16 && std::is_trivially_copyable_v<T>);
    return static_cast<T*>(alignUp(buffer, 16));
}

} // namespace zsp
