// The level control of G.169.

#include "alc/alc_g169.hpp"
#include "alc/alc_g169_rule.hpp"
#include "core/state.hpp"
#include "tests/fuzz/describe.hpp"

#include <cmath>

namespace zsp::fuzz {

namespace {

/// A gain or a level in decibels: any that is not negative, though very large ones overflow.
Argument decibels()
{
    return real(0, 60).with([](Argument& a) { a.high = HUGE_VAL; });
}

std::vector<Family> describe()
{
    return {
        {.name = "alc-size", .exports = {sizeOf<124>(ZSP_DESCRIBED(zspsALCGetStateSize_G169_16s))}},
        {.name = "alc",
         .exports = {{ZSP_DESCRIBED(zspsALC_G169_16s),
                      {in(arg(2)), out(arg(2)).orIn({0}), length().multipleOf(8), state()},
                      {nulls(),
                       when([](const Call& c) { return c.number(2) < 8 || c.number(2) % 8 != 0; },
                            zspStsRangeErr)},
                      [](const Word* src, Word* dst, Long len, ZspAlcState_G169* state) {
                          InPlace<alc::State> s(state);
                          for (Long i = 0; i < len; i += 8) {
                              alc::update(*s, alc::measureScalar(alc::InBlock{src + i, 8}));
                              alc::amplifyScalar(alc::InBlock{src + i, 8}, s->gain,
                                                 alc::OutBlock{dst + i, 8});
                          }
                      }},
                     {ZSP_DESCRIBED(zspsALCInit_G169_16s),
                      {state()},
                      {nulls()},
                      [](ZspAlcState_G169* state) { placeRecord(state, alc::initialState()); }},
                     {ZSP_DESCRIBED(zspsALCSetGain_G169_16s),
                      {decibels(), state()},
                      {nulls(), outside(0, zspStsRangeErr)}},
                     {ZSP_DESCRIBED(zspsALCSetLevel_G169_16s),
                      {decibels(), decibels(), state()},
                      {nulls(), outside(0, zspStsRangeErr), outside(1, zspStsRangeErr)}}},
         .draw = noSetUp,
         .bytes = sizeof(ZspAlcState_G169),
         .init = [](const SetUp&,
                    void* state) { zspsALCInit_G169_16s(static_cast<ZspAlcState_G169*>(state)); }},
    };
}

const Described kDescribed(describe);

} // namespace

} // namespace zsp::fuzz
