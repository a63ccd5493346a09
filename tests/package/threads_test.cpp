// Calls on different states run at the same time: threads get what a single thread gets. The thread
// sanitizer sees here that the library shares nothing.

#include "tests/support/samples.hpp"
#include "zspsc.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>
#include <vector>

namespace {

std::vector<std::uint8_t> encode(const std::vector<std::int16_t>& samples)
{
    std::array<std::byte, 88> state{};
    std::vector<std::uint8_t> codes(samples.size());
    zspsEncodeInit_G726_16s8u(state.data(), zspG726Rate32);
    zspsEncode_G726_16s8u(state.data(), samples.data(), codes.data(),
                          static_cast<std::int32_t>(samples.size()));
    return codes;
}

TEST(Threads, StatesAreIndependent)
{
    const std::vector<std::int16_t> samples = zsp::test::Samples(5).words(20'000);
    const std::vector<std::uint8_t> wanted = encode(samples);
    std::array<std::vector<std::uint8_t>, 4> results;
    std::vector<std::thread> threads;
    for (auto& result : results)
        threads.emplace_back([&result, &samples] { result = encode(samples); });
    for (auto& thread : threads)
        thread.join();
    for (const auto& result : results)
        EXPECT_EQ(result, wanted);
}

} // namespace
