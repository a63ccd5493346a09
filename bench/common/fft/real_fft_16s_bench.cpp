// The real FFT between words and longs: conversion, transform in single precision, rounding.

#include "bench/support/fft.hpp"
#include "common/fft/real_fft_16s.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::common;

using Memory = Fft<std::int32_t, Zsp32sc, realFft16sWorkSize>;
using Transform = void (*)(Memory&);

const bool registered[] = {
    add<Transform>(
        "realFft16s", runTransform<Memory>,
        {{"avx2", [](Memory& f) { realFftForward16s(*f.plan, f.time, f.bins, 2, f.work.data()); }}},
        {{5}, {6}, {8}}),
    add<Transform>(
        "realFftInverse16s", runTransform<Memory>,
        {{"avx2", [](Memory& f) { realFftInverse16s(*f.plan, f.bins, f.time, 2, f.work.data()); }}},
        {{5}, {6}, {8}}),
};

} // namespace
