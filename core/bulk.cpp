// Bulk fill and copy: ordinary stores up to 2 MiB and for what fits the cache; beyond that,
// streaming stores of whole 64-byte blocks between an ordinary head and tail.

#include "core/bulk.hpp"

#include "zspcore.h"

#include <cassert>
#include <cstdint>
#include <cstring>
#include <immintrin.h>

namespace zsp {

namespace {

constexpr std::size_t kBlock = 64;
constexpr std::size_t kOrdinaryMax = 2'097'152;

bool goesPastCache(std::size_t bytes) noexcept
{
    if (bytes <= kOrdinaryMax) return false;
    std::int32_t cache = 0;
    return zspGetMaxCacheSizeB(&cache) == 0 && cache > 0 && static_cast<std::size_t>(cache) < bytes;
}

/// Bytes from `p` to the next 64-byte boundary.
std::size_t headLength(const std::byte* p) noexcept
{
    return (kBlock - (reinterpret_cast<std::uintptr_t>(p) & (kBlock - 1))) & (kBlock - 1);
}

void streamBlock(std::byte* dst, __m256i low, __m256i high) noexcept
{
    _mm256_stream_si256(reinterpret_cast<__m256i*>(dst), low);
    _mm256_stream_si256(reinterpret_cast<__m256i*>(dst + 32), high);
}

} // namespace

void zeroFill(std::span<std::byte> dst) noexcept
{
    if (!goesPastCache(dst.size())) {
        if (!dst.empty()) std::memset(dst.data(), 0, dst.size());
        return;
    }
    std::size_t i = headLength(dst.data());
    std::memset(dst.data(), 0, i);
    for (; i + kBlock <= dst.size(); i += kBlock)
        streamBlock(dst.data() + i, _mm256_setzero_si256(), _mm256_setzero_si256());
    _mm_sfence(); // streaming stores are weakly ordered
    std::memset(dst.data() + i, 0, dst.size() - i);
}

void copy(std::span<const std::byte> src, std::span<std::byte> dst) noexcept
{
    assert(src.size() == dst.size());
    if (!goesPastCache(dst.size())) {
        if (!dst.empty()) std::memcpy(dst.data(), src.data(), dst.size());
        return;
    }
    std::size_t i = headLength(dst.data());
    std::memcpy(dst.data(), src.data(), i);
    for (; i + kBlock <= dst.size(); i += kBlock) {
        const auto* from = reinterpret_cast<const __m256i*>(src.data() + i);
        streamBlock(dst.data() + i, _mm256_loadu_si256(from), _mm256_loadu_si256(from + 1));
    }
    _mm_sfence();
    std::memcpy(dst.data() + i, src.data() + i, dst.size() - i);
}

} // namespace zsp
