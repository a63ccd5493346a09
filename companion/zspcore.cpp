// Processor features and cache size from CPUID, and aligned memory from the C library.

#include "zspcore.h"

#include <cpuid.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>

#ifdef _WIN32
#include <malloc.h>
#endif

namespace {

struct Registers {
    std::uint32_t eax = 0, ebx = 0, ecx = 0, edx = 0;
};

Registers cpuid(std::uint32_t leaf, std::uint32_t subleaf) noexcept
{
    Registers r;
    if (static_cast<std::uint32_t>(__get_cpuid_max(leaf & 0x8000'0000u, nullptr)) >= leaf)
        __cpuid_count(leaf, subleaf, r.eax, r.ebx, r.ecx, r.edx);
    return r;
}

/// Whether the operating system saves the SSE and AVX registers (XCR0 bits 1 and 2).
bool savesYmm(const Registers& leaf1) noexcept
{
    if (!(leaf1.ecx & bit_OSXSAVE)) return false;
    std::uint32_t low = 0, high = 0;
    __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return (low & 6u) == 6u;
}

/// The largest data or unified cache that a deterministic cache parameter leaf lists.
std::uint64_t largestCache(std::uint32_t leaf) noexcept
{
    std::uint64_t largest = 0;
    for (std::uint32_t index = 0; index < 16; ++index) {
        const Registers r = cpuid(leaf, index);
        const std::uint32_t type = r.eax & 31u; // 0 end, 1 data, 2 instructions, 3 unified
        if (type == 0) break;
        if (type == 2) continue;
        const std::uint64_t ways = (r.ebx >> 22) + 1u;
        const std::uint64_t partitions = ((r.ebx >> 12) & 0x3ffu) + 1u;
        const std::uint64_t lineSize = (r.ebx & 0xfffu) + 1u;
        largest = std::max(largest, ways * partitions * lineSize * (std::uint64_t{r.ecx} + 1u));
    }
    return largest;
}

} // namespace

std::uint64_t zspGetEnabledCpuFeatures(void)
{
    const Registers leaf1 = cpuid(1, 0);
    const Registers leaf7 = cpuid(7, 0);
    const bool ymm = savesYmm(leaf1);
    std::uint64_t mask = 0;
    const auto set = [&mask](std::uint64_t feature, bool present) {
        if (present) mask |= feature;
    };
    set(ZSP_CPU_SSE2, leaf1.edx & bit_SSE2);
    set(ZSP_CPU_SSSE3, leaf1.ecx & bit_SSSE3);
    set(ZSP_CPU_SSE41, leaf1.ecx & bit_SSE4_1);
    set(ZSP_CPU_SSE42, leaf1.ecx & bit_SSE4_2);
    set(ZSP_CPU_AVX, ymm && (leaf1.ecx & bit_AVX));
    set(ZSP_CPU_AVX2, ymm && (leaf7.ebx & bit_AVX2));
    set(ZSP_CPU_FMA, ymm && (leaf1.ecx & bit_FMA));
    set(ZSP_CPU_BMI2, leaf7.ebx & bit_BMI2);
    return mask;
}

void* zspMalloc(std::size_t bytes)
{
    constexpr std::size_t kAlignment = 64;
    if (bytes == 0 || bytes > std::numeric_limits<std::size_t>::max() - kAlignment) return nullptr;
#ifdef _WIN32
    return _aligned_malloc(bytes, kAlignment);
#else
    return std::aligned_alloc(kAlignment, (bytes + kAlignment - 1) / kAlignment * kAlignment);
#endif
}

void zspFree(void* block)
{
#ifdef _WIN32
    _aligned_free(block);
#else
    std::free(block);
#endif
}

std::int32_t zspGetMaxCacheSizeB(std::int32_t* size)
{
    if (!size) return -8;
    // Intel describes its caches in leaf 4, AMD in leaf 0x8000001d, in the same format.
    const std::uint64_t bytes = std::max(largestCache(4), largestCache(0x8000'001du));
    if (bytes == 0) return -1;
    *size = static_cast<std::int32_t>(
        std::min<std::uint64_t>(bytes, std::numeric_limits<std::int32_t>::max()));
    return 0;
}
