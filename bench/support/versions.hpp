// What every benchmark of a kernel needs: its versions under one name, and a loop around a call.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace zsp::bench {

/// The arguments of each run, read back by state.range().
using Runs = std::vector<std::vector<std::int64_t>>;

/// Registers NAME/VERSION/ARGUMENTS for every version and every run, measured by
/// run(state, kernel). Returns true, so that a constant's initial value can do it.
template <typename Kernel, typename Run>
bool add(const std::string& name, Run run,
         std::initializer_list<std::pair<const char*, Kernel>> versions, const Runs& runs = {})
{
    for (const auto& [version, kernel] : versions) {
        auto* const benchmark =
            benchmark::RegisterBenchmark((name + "/" + version).c_str(), run, kernel);
        for (const auto& arguments : runs)
            benchmark->Args(arguments);
    }
    return true;
}

/// Measures call(), which works through so many items.
template <typename Call>
void loop(benchmark::State& state, std::int64_t items, Call call)
{
    for (auto _ : state) {
        call();
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * items);
}

template <typename Call>
void loop(benchmark::State& state, std::size_t items, Call call)
{
    loop(state, static_cast<std::int64_t>(items), call);
}

} // namespace zsp::bench
