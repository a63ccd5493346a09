// Echo cancellation: filter bank, controller, tone detector.

#include "ec/subband_filter.hpp"
#include "tests/fuzz/describe.hpp"

#include <algorithm>
#include <cmath>

namespace zsp::fuzz {

namespace {

template <typename Sample>
struct Bank;
template <>
struct Bank<float> {
    static constexpr auto getSize = zspsSubbandProcessGetSize_32f;
    static constexpr auto init = zspsSubbandProcessInit_32f;
};
template <>
struct Bank<Word> {
    static constexpr auto getSize = zspsSubbandProcessGetSize_16s;
    static constexpr auto init = zspsSubbandProcessInit_16s;
};

/// Set-up of a filter bank.
enum BankSetUp { kOrder, kFrameSize, kWindowLen, kBins, kStateBytes, kWorkBytes, kBuiltIn };

template <typename Sample>
SetUp drawBank(Choices& choices)
{
    Long order = 1 + choices.below(8);
    Long frameSize = 1 + choices.below(1 << order);
    Long windowLen = (1 + choices.below(5)) << order;
    const int builtIn = choices.below(4);
    if (builtIn == 1) order = 5, frameSize = 24, windowLen = 128;
    if (builtIn == 2) order = 6, frameSize = 44, windowLen = 256;
    Long stateSize = 0, initSize = 0, workSize = 0;
    Bank<Sample>::getSize(order, windowLen, &stateSize, &initSize, &workSize);
    return {order,
            frameSize,
            windowLen,
            (1 << order) / 2 + 1,
            stateSize,
            workSize,
            builtIn == 1 || builtIn == 2};
}

template <typename Sample>
void initBank(const SetUp& s, void* state)
{
    std::vector<Sample> window(size(s[kWindowLen]));
    for (std::size_t i = 0; i < window.size(); ++i)
        window[i] = static_cast<Sample>((std::is_same_v<Sample, float> ? 1.0 : 8192.0) *
                                        static_cast<double>(std::min(i + 1, window.size() - i)) /
                                        static_cast<double>(window.size()));
    Bank<Sample>::init(state, static_cast<Long>(s[kOrder]), static_cast<Long>(s[kFrameSize]),
                       static_cast<Long>(s[kWindowLen]), s[kBuiltIn] ? nullptr : window.data(),
                       nullptr);
}

template <typename Sample>
Family bank(std::string name, Description d)
{
    return {.name = std::move(name),
            .exports = {std::move(d)},
            .draw = drawBank<Sample>,
            .bytes = setUp(kStateBytes),
            .init = initBank<Sample>,
            .holdsPointers = true};
}

/// Up to windows whose sizes fit 32 bits with certainty.
std::vector<Argument> sizeArguments()
{
    const Argument windowLen = length(100000).with([](Argument& a) { a.spoiltTo = 1 << 22; });
    return {number(1, 20).upTo(12), windowLen, out(1), out(1), out(1)};
}

std::vector<Check> bankSizeChecks()
{
    const auto bad = [](const Call& c) { return c.number(0) < 1 || c.number(1) < 1; };
    const auto worse = [](const Call& c) {
        return c.number(0) > 26 || c.number(1) % (1 << c.number(0)) != 0;
    };
    return {when(bad, zspStsBadArgErr), nulls(), when(worse, zspStsBadArgErr)};
}

template <typename Sample>
std::int64_t freshBankBytes(const Call& c)
{
    Long stateSize = 0, initSize = 0, workSize = 0;
    Bank<Sample>::getSize(static_cast<Long>(c.number(1)), static_cast<Long>(c.number(3)),
                          &stateSize, &initSize, &workSize);
    return stateSize;
}

template <typename Sample>
std::vector<Argument> bankInitArguments()
{
    return {scratch({freshBankBytes<Sample>}),
            number(1, 26).upTo(8),
            number(1, kMax).upTo(64),
            length(512),
            in(arg(3)).optional(),
            scratch(0).optional()};
}

std::vector<Check> bankInitChecks()
{
    const auto bad = [](const Call& c) {
        return c.number(1) < 1 || c.number(3) < 1 || c.number(2) < 1 ||
               (c.number(1) <= 30 && c.number(2) > (std::int64_t{1} << c.number(1)));
    };
    const auto isNoWhole = [](const Call& c) {
        return c.number(3) % (std::int64_t{1} << std::min<std::int64_t>(c.number(1), 62)) != 0;
    };
    const auto hasNoWindow = [](const Call& c) {
        const bool isBuiltIn = (c.number(1) == 5 && c.number(2) == 24 && c.number(3) == 128) ||
                               (c.number(1) == 6 && c.number(2) == 44 && c.number(3) == 256);
        return !c.data<void>(4) && !isBuiltIn;
    };
    return {when(bad, zspStsBadArgErr), nulls({0}), when(isNoWhole, zspStsBadArgErr),
            whenWritten(hasNoWindow, zspStsBadArgErr),
            when([](const Call& c) { return c.number(1) > 26; }, zspStsInternalErr)};
}

std::vector<Family> describe()
{
    const auto controllerChecks = [](std::size_t first) {
        return std::vector<Check>{when(
                                      [first](const Call& c) {
                                          return c.number(first) < 1 || c.number(first + 1) < 1 ||
                                                 c.number(first + 2) < 1 ||
                                                 16 * c.number(first) + 112 > 0x7fff'ffff;
                                      },
                                      zspStsBadArgErr),
                                  outside(first + 3, zspStsRangeErr), nulls()};
    };
    const Argument rate = oneOf({8000, 16000});
    enum { kBands, kTaps };
    const auto bands = setUp(kBands), taps = setUp(kTaps);
    return {
        {.name = "ec-set-up",
         .exports =
             {{ZSP_DESCRIBED(zspsSubbandProcessGetSize_32f), sizeArguments(), bankSizeChecks()},
              {ZSP_DESCRIBED(zspsSubbandProcessGetSize_16s), sizeArguments(), bankSizeChecks()},
              {ZSP_DESCRIBED(zspsSubbandProcessInit_32f), bankInitArguments<float>(),
               bankInitChecks()},
              {ZSP_DESCRIBED(zspsSubbandProcessInit_16s), bankInitArguments<Word>(),
               bankInitChecks()},
              {ZSP_DESCRIBED(zspsSubbandControllerGetSize_EC_32f),
               {length(), length(), length(), rate, out(1)},
               controllerChecks(0),
               [](Long numBands, Long, Long, Long, Long* bytes) { *bytes = 16 * numBands + 112; }},
              {ZSP_DESCRIBED(zspsSubbandControllerInit_EC_32f),
               {scratch({[](const Call& c) { return 16 * c.number(1) + 112; }}), length(), length(),
                length(), rate},
               controllerChecks(1)},
              {ZSP_DESCRIBED(zspsToneDetectGetStateSize_EC_32f),
               {rate, out(1)},
               {nulls(), outside(0, zspStsRangeErr)},
               [](Long, Long* bytes) { *bytes = 80; }},
              {ZSP_DESCRIBED(zspsToneDetectInit_EC_32f),
               {scratch(80), rate},
               {nulls(), outside(1, zspStsRangeErr)}}}},
        bank<float>("ec-analysis-32f", {ZSP_DESCRIBED(zspsSubbandAnalysis_32f32fc),
                                        {in(setUp(kFrameSize)), out(setUp(kBins)), state(),
                                         scratch(setUp(kWorkBytes))},
                                        {nulls()}}),
        bank<float>("ec-synthesis-32f", {ZSP_DESCRIBED(zspsSubbandSynthesis_32fc32f),
                                         {in(setUp(kBins)), out(setUp(kFrameSize)), state(),
                                          scratch(setUp(kWorkBytes))},
                                         {nulls()}}),
        bank<Word>("ec-analysis-16s", {ZSP_DESCRIBED(zspsSubbandAnalysis_16s32sc_Sfs),
                                       {in(setUp(kFrameSize)), out(setUp(kBins)), state(),
                                        number(-20, 20), scratch(setUp(kWorkBytes))},
                                       {nulls()}}),
        bank<Word>("ec-synthesis-16s", {ZSP_DESCRIBED(zspsSubbandSynthesis_32sc16s_Sfs),
                                        {in(setUp(kBins)), out(setUp(kFrameSize)), state(),
                                         number(-20, 20), scratch(setUp(kWorkBytes))},
                                        {nulls()}}),
        {.name = "ec-controller",
         .exports =
             {{ZSP_DESCRIBED(zspsSubbandControllerReset_EC_32f), {state()}, {nulls()}},
              {ZSP_DESCRIBED(zspsSubbandAPControllerUpdate_EC_32f),
               {in(taps, bands), in(bands).optional(), out(bands), real(0, 1), state()},
               {nulls(), outside(3, zspStsRangeErr)}},
              {ZSP_DESCRIBED(zspsSubbandControllerUpdate_EC_32f),
               {in(bands), in(bands), in(taps, bands), in(bands).optional(), out(bands), state()},
               {nulls()}},
              {ZSP_DESCRIBED(zspsSubbandController_EC_32f),
               {in(bands), in(bands), inOut(taps, bands), inOut(taps, bands), out(1), state()},
               {nulls()}}},
         .draw =
             [](Choices& choices) {
                 return SetUp{1 + choices.below(140), 1 + choices.below(8), 1 + choices.below(200),
                              choices.below(2) ? 8000 : 16000};
             },
         .bytes = {[](const Call& c) { return 16 * c.setUp(kBands) + 112; }},
         .init =
             [](const SetUp& s, void* state) {
                 zspsSubbandControllerInit_EC_32f(state, static_cast<Long>(s[0]),
                                                  static_cast<Long>(s[2]), static_cast<Long>(s[1]),
                                                  static_cast<Long>(s[3]));
             },
         .holdsPointers = true},
        {.name = "ec-filters",
         .exports =
             {{ZSP_DESCRIBED(zspsSubbandFilter_EC_32fc),
               {in(arg(9)), in(arg(10), arg(9)), in(arg(10), arg(9)), in(arg(10), arg(9)),
                in(arg(10), arg(9)), out(arg(9)), out(arg(9)), out(arg(9)), out(arg(9)),
                length(100), number(1, 4097).upTo(8)},
               {nulls(), outside(9, zspStsSizeErr), outside(10, zspStsFIRLenErr)},
               [](const Zsp32fc* src, const Zsp32fc* const* history,
                  const Zsp32fc* const* adaptCoefs, const Zsp32fc* const* fixedCoefs,
                  const float* const* variance, Zsp32fc* adaptErr, Zsp32fc* fixedErr,
                  float* inputPower, float* residualPower, Long numBands, Long numTaps) {
                   ec::filterScalar({{history, size(numTaps)}, adaptCoefs, fixedCoefs, variance},
                                    {src, size(numBands)},
                                    {adaptErr, fixedErr, inputPower, residualPower}, 0);
               }},
              {ZSP_DESCRIBED(zspsSubbandAdapt_EC_32fc),
               {in(arg(6)), in(arg(6)), in(arg(6)), in(arg(7), arg(6)), inOut(arg(7), arg(6)),
                inOut(arg(7), arg(6)), length(100), number(1, 4097).upTo(8), real(0, 1),
                real(0, 1e6).with([](Argument& a) { a.high = HUGE_VAL; })},
               {nulls(), outside(6, zspStsSizeErr), outside(7, zspStsFIRLenErr),
                outside(8, zspStsRangeErr), outside(9, zspStsRangeErr)},
               [](const Zsp32fc* adaptErr, const float* gain, const float* forget,
                  const Zsp32fc* const* history, Zsp32fc* const* adaptCoefs, float* const* variance,
                  Long numBands, Long numTaps, float learnt, float coefFloor) {
                   ec::adaptScalar({{adaptErr, size(numBands)}, gain, forget, learnt, coefFloor},
                                   {{history, size(numTaps)}, adaptCoefs, variance}, 0);
               }}}},
        {.name = "ec-tone-detector",
         .exports = {{ZSP_DESCRIBED(zspsToneDetect_EC_32f),
                      {in(arg(1)), length(), out(1), state()},
                      {nulls(), outside(1, zspStsBadArgErr)},
                      [](const float* src, Long len, Long* result, void* state) { // its parts
                          Long first = 0, second = 0;
                          if (len > 1) zspsToneDetect_EC_32f(src, len / 2, &first, state);
                          zspsToneDetect_EC_32f(src + len / 2, len - len / 2, &second, state);
                          *result = first | second;
                      }}},
         .draw = [](Choices& choices) { return SetUp{choices.below(2) ? 8000 : 16000}; },
         .bytes = 80,
         .init = [](const SetUp& s,
                    void* state) { zspsToneDetectInit_EC_32f(state, static_cast<Long>(s[0])); },
         .alignment = 16},
    };
}

const Described kDescribed(describe);

} // namespace

} // namespace zsp::fuzz
