// Stands in for the host's main.cpp, whose main() the fuzzer's takes the place of.

#include "tests/fuzz/targets/host.hpp"

namespace zsp::host {

bool processorSuffices()
{
    return true;
}

void requireProcessor()
{
}

} // namespace zsp::host
