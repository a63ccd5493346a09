// Fill and copy of areas in the cache and beyond it, beside what they replace.

#include "bench/support/versions.hpp"
#include "core/bulk.hpp"

#include <cstring>
#include <span>
#include <vector>

namespace {

using namespace zsp::bench;
using Bytes = std::vector<std::byte>;
using Fill = void (*)(std::span<std::byte>);
using Copy = void (*)(std::span<const std::byte>, std::span<std::byte>);

void fill(benchmark::State& state, Fill kernel)
{
    Bytes bytes(static_cast<std::size_t>(state.range(0)));
    loop(state, bytes.size(), [&] { kernel(bytes); });
}

void copy(benchmark::State& state, Copy kernel)
{
    const Bytes from(static_cast<std::size_t>(state.range(0)), std::byte{1});
    Bytes to(from.size());
    loop(state, to.size(), [&] { kernel(from, to); });
}

const Runs kSizes = {{4096}, {64 << 20}};

const bool registered[] = {
    add<Fill>("zeroFill", fill,
              {{"avx2", zsp::zeroFill},
               {"memset", [](std::span<std::byte> b) { std::memset(b.data(), 0, b.size()); }}},
              kSizes),
    add<Copy>("copy", copy,
              {{"avx2", zsp::copy},
               {"memcpy",
                [](std::span<const std::byte> from, std::span<std::byte> to) {
                    std::memcpy(to.data(), from.data(), to.size());
                }}},
              kSizes),
};

} // namespace
