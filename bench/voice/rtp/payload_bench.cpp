// One packet of 20 ms taken apart and put together again, and the text of its format parameters.

#include "bench/support/versions.hpp"
#include "zspvoice.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace {

void packet(benchmark::State& state, const char* name)
{
    const ZspvCodec* codec = zspvCodecByName(name, 0);
    const std::int32_t length = codec->maxFrameBytes * 2;
    std::vector<std::uint8_t> payload(static_cast<std::size_t>(length), 0xD5), bytes(payload);
    ZspvFrame frames[8];
    ZspvPacketInfo info{};
    info.structSize = sizeof info;
    std::int32_t count = 0;
    zsp::bench::loop(state, std::int64_t{1}, [&] {
        payload[0] ^= 1;
        zspvUnpack(codec, nullptr, payload.data(), length, bytes.data(), length, frames, 8, &count,
                   nullptr);
        zspvPack(codec, nullptr, bytes.data(), frames, count, zspvFrameSpeech, ZSPV_NO_REQUEST,
                 payload.data(), length, &info);
    });
}

void fmtp(benchmark::State& state, const char* name, const char* text)
{
    ZspvParams params{};
    params.structSize = sizeof params;
    zsp::bench::loop(state, std::int64_t{1}, [&] {
        benchmark::DoNotOptimize(text);
        zspvFmtpParse(name, text, &params);
    });
}

} // namespace

BENCHMARK_CAPTURE(packet, PCMU, "PCMU");
BENCHMARK_CAPTURE(packet, G722, "G722");
BENCHMARK_CAPTURE(packet, G726_32, "G726-32");
BENCHMARK_CAPTURE(fmtp, AMR, "AMR", "mode-set=0,2,4,7; mode-change-period=2; octet-align=1");
