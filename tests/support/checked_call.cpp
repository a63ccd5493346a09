// Calls that look at the processor afterwards.

#include "tests/support/checked_call.hpp"

#include <array>
#include <cpuid.h>
#include <cstddef>
#include <cstdint>

namespace {

constexpr std::size_t kRegisters = 8;
constexpr std::array<const char*, kRegisters> kNames = {"rbx", "rbp", "r12", "r13",
                                                        "r14", "r15", "rdi", "rsi"};
#ifdef _WIN32
constexpr std::size_t kPreserved = 8;
constexpr std::size_t kFirstPreservedVector = 6;
#else
constexpr std::size_t kPreserved = 6;
constexpr std::size_t kFirstPreservedVector = 16;
#endif

struct CallRecord {
    void* target;
    void* returnAddress;
    std::array<std::uint64_t, kRegisters> given, saved, left;
    std::uint64_t rspBefore, rspAfter;
    std::uint64_t flags, rax, rdx;
    std::uint32_t mxcsrBefore, mxcsrAfter;
    std::uint32_t x87Before, asksInUse;
    std::uint64_t inUse;
    std::array<std::uint32_t, 8> x87After; // control, status, tags, ...
    std::array<std::array<std::uint64_t, 4>, 16> vectors;
    std::array<std::array<std::uint64_t, 2>, 16> savedVectors;
};
static_assert(offsetof(CallRecord, left) == 144 && offsetof(CallRecord, flags) == 224 &&
              offsetof(CallRecord, inUse) == 264 && offsetof(CallRecord, x87After) == 272 &&
              offsetof(CallRecord, vectors) == 304 && sizeof(CallRecord) == 1072);

} // namespace

extern "C" {
extern CallRecord zspCall;
void zspCheckedCall();
int zspUpperInUse();
}

namespace zsp::test {

bool seesZeroUpperHalves()
{
    unsigned a = 0, b = 0, c = 0, d = 0;
    if (!__get_cpuid(1, &a, &b, &c, &d) || !(c & bit_OSXSAVE)) return false;
    if (!__get_cpuid_count(13, 1, &a, &b, &c, &d) || !(a & 4)) return false;
    return zspUpperInUse() == 2; // not after vzeroupper, but after a write
}

void* checkedTarget(void* function)
{
    static const bool sees = seesZeroUpperHalves();
    zspCall.target = function;
    zspCall.asksInUse = sees;
    for (std::size_t i = 0; i < kRegisters; ++i)
        zspCall.given[i] = 0x5a5a'1234'8765'4321 + i;
    return reinterpret_cast<void*>(&zspCheckedCall);
}

std::string leftBehind()
{
    std::string what;
    const auto unless = [&what](bool good, const std::string& text) {
        if (!good) what += (what.empty() ? "" : ", ") + text;
    };
    const CallRecord& r = zspCall;
    for (std::size_t i = 0; i < kPreserved; ++i)
        unless(r.left[i] == r.given[i], std::string(kNames[i]) + " changed");
    for (std::size_t i = kFirstPreservedVector; i < 16; ++i)
        unless(r.vectors[i][0] == r.given[0] && r.vectors[i][1] == r.given[1],
               "xmm" + std::to_string(i) + " changed");
    unless(r.rspAfter == r.rspBefore, "stack pointer moved");
    for (std::size_t i = 0; i < 16; ++i)
        unless((r.vectors[i][2] | r.vectors[i][3]) == 0,
               "upper half of ymm" + std::to_string(i) + " dirty");
    unless(!r.asksInUse || !(r.inUse & 4), "upper halves in use");
    unless(((r.mxcsrBefore ^ r.mxcsrAfter) & 0xffc0) == 0, "MXCSR control bits changed");
    unless((r.x87Before & 0xffff) == (r.x87After[0] & 0xffff), "x87 control word changed");
    unless((r.x87After[2] & 0xffff) == 0xffff && (r.x87After[1] & 0x3800) == 0,
           "x87 stack not empty");
    unless(!(r.flags & 0x400), "direction flag set");
    return what;
}

} // namespace zsp::test
