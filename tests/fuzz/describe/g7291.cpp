// The high-pass filter of G.729.1.

#include "tests/fuzz/describe.hpp"

namespace zsp::fuzz {

namespace {

std::vector<Family> describe()
{
    return {{.name = "g7291",
             .exports = {sizeOf<24>(ZSP_DESCRIBED(zspsFilterHighpassGetStateSize_G7291_16s))}}};
}

const Described kDescribed(describe);

} // namespace

} // namespace zsp::fuzz
