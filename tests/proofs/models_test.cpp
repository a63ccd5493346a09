// The models of instructions that proofs stand on, against the processor.

// As C has them, where words become int and back.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wsign-conversion"
#include "proofs/models.h"
#pragma GCC diagnostic pop

#include "tests/support/samples.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <immintrin.h>
#include <limits>

namespace {

using namespace zsp::test;

template <typename Vector>
Vector anyVector(Samples& samples)
{
    Vector x;
    for (auto& lane : x.v)
        lane = static_cast<std::remove_reference_t<decltype(lane)>>(
            samples.below(4) ? samples.integer<std::int32_t>()
                             : samples.below(2) * samples.integer<std::int16_t>());
    return x;
}

template <typename Vector>
__m256i in(const Vector& x)
{
    return std::bit_cast<__m256i>(x);
}

/// Models of two vectors beside what the processor does.
template <typename A, typename B, typename Model, typename Instruction>
void compare(const char* name, Model model, Instruction instruction)
{
    Samples samples(61);
    for (int round = 0; round < 20000; ++round) {
        A a = anyVector<A>(samples);
        const B b = anyVector<B>(samples);
        if (round % 16 == 0) // all words -32768, the corner of every product
            for (auto& lane : a.v)
                lane = static_cast<std::remove_reference_t<decltype(lane)>>(0x80008000u);
        const auto got = model(a, round % 16 == 0 ? std::bit_cast<B>(a) : b);
        const auto want =
            std::bit_cast<decltype(got)>(instruction(in(a), round % 16 == 0 ? in(a) : in(b)));
        for (std::size_t i = 0; i < std::size(got.v); ++i)
            ASSERT_EQ(got.v[i], want.v[i]) << name << ", round " << round << ", lane " << i;
    }
}

#define COMPARE(a, b, model, instruction)                                                          \
    compare<a, b>(                                                                                 \
        #model, [](a x, b y) { return model(x, y); },                                              \
        [](__m256i x, __m256i y) { return instruction(x, y); })

TEST(ProofModels, EqualTheProcessor)
{
    COMPARE(v16ofu16, v16ofu16, x86_avx2_pmadd_wd, _mm256_madd_epi16);
    COMPARE(v8ofu32, v8ofu32, x86_avx2_packssdw, _mm256_packs_epi32);
    COMPARE(v16ofu16, v16ofu16, x86_avx2_pmulh_w, _mm256_mulhi_epi16);
    COMPARE(v16ofu16, v16ofu16, x86_avx2_pmul_hr_sw, _mm256_mulhrs_epi16);
    COMPARE(v32ofu8, v32ofu8, x86_avx2_pshuf_b, _mm256_shuffle_epi8);
    COMPARE(v16ofu16, v16ofu16, x86_avx2_packsswb, _mm256_packs_epi16);
    COMPARE(v16ofu16, v16ofu16, x86_avx2_packuswb, _mm256_packus_epi16);
}

// The upper half of the counts' register is not looked at.
TEST(ProofModels, ShiftsByACount)
{
    Samples samples(62);
    for (int round = 0; round < 20000; ++round) {
        const auto a = anyVector<v8ofu32>(samples);
        auto count = anyVector<v4ofu32>(samples);
        if (round % 8) count.v[1] = 0;
        if (round % 4) count.v[0] = static_cast<u32>(samples.below(40));
        const auto got = x86_avx2_psra_d(a, count);
        const auto want =
            std::bit_cast<v8ofu32>(_mm256_sra_epi32(in(a), std::bit_cast<__m128i>(count)));
        for (std::size_t i = 0; i < 8; ++i)
            ASSERT_EQ(got.v[i], want.v[i]) << "count " << count.v[0];
    }
}

TEST(ProofModels, NarrowPackAndMask)
{
    Samples samples(63);
    for (int round = 0; round < 20000; ++round) {
        const auto a = anyVector<v4ofu32>(samples), b = anyVector<v4ofu32>(samples);
        const auto got = x86_sse2_packssdw_128(a, b);
        const auto want = std::bit_cast<v8ofu16>(
            _mm_packs_epi32(std::bit_cast<__m128i>(a), std::bit_cast<__m128i>(b)));
        for (std::size_t i = 0; i < 8; ++i)
            ASSERT_EQ(got.v[i], want.v[i]);
        const auto octets = anyVector<v32ofu8>(samples);
        ASSERT_EQ(x86_avx2_pmovmskb(octets),
                  static_cast<u32>(_mm256_movemask_epi8(std::bit_cast<__m256i>(octets))));
    }
}

/// The corners and their neighbours.
template <typename T>
std::vector<T> corners()
{
    std::vector<T> all;
    for (const std::int64_t x :
         {std::int64_t{std::numeric_limits<T>::min()}, std::int64_t{0},
          std::int64_t{std::numeric_limits<T>::max()}, std::int64_t{1} << 14})
        for (const int d : {-2, -1, 0, 1, 2})
            all.push_back(
                static_cast<T>(static_cast<std::uint64_t>(x) + static_cast<std::uint64_t>(d)));
    return all;
}

// What says whether an operation overflows, against the compiler's own.
TEST(ProofModels, OverflowIsSeen)
{
    for (const i32 a : corners<i32>())
        for (const i32 b : corners<i32>()) {
            const auto x = static_cast<u32>(a), y = static_cast<u32>(b);
            i32 result;
            EXPECT_EQ(over_sadd_32(x, y) != 0, __builtin_add_overflow(a, b, &result));
            EXPECT_EQ(sum_sadd_32(x, y), static_cast<u32>(result));
            EXPECT_EQ(over_ssub_32(x, y) != 0, __builtin_sub_overflow(a, b, &result));
            EXPECT_EQ(sum_ssub_32(x, y), static_cast<u32>(result));
            EXPECT_EQ(over_smul_32(x, y) != 0, __builtin_mul_overflow(a, b, &result));
            EXPECT_EQ(sum_smul_32(x, y), static_cast<u32>(result));
            i64 twice;
            const bool seen = over_smul_64(static_cast<u64>(i64{a}), static_cast<u64>(i64{b} * 2));
            EXPECT_TRUE(seen || !__builtin_mul_overflow(i64{a}, i64{b} * 2, &twice));
            const bool saturates = __builtin_add_overflow(a, b, &result);
            EXPECT_EQ(sadd_sat_32(x, y),
                      saturates ? (a < 0 ? 0x80000000u : 0x7fffffffu) : static_cast<u32>(result));
        }
    for (const i64 a : corners<i64>())
        for (const i64 b : corners<i64>()) {
            i64 result;
            const auto x = static_cast<u64>(a), y = static_cast<u64>(b);
            EXPECT_EQ(over_sadd_64(x, y) != 0, __builtin_add_overflow(a, b, &result));
            EXPECT_EQ(over_ssub_64(x, y) != 0, __builtin_sub_overflow(a, b, &result));
            for (int places = 0; places < 63; ++places)
                EXPECT_EQ(over_sshl_64(x, static_cast<u64>(places)) != 0,
                          __builtin_mul_overflow(a, i64{1} << places, &result))
                    << a << " << " << places;
        }
}

} // namespace
