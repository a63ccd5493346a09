// What the functions of encoders and decoders promise about their arguments.

#include "tests/support/contract.hpp"
#include "zspvoice.h"

#include <gtest/gtest.h>

namespace {

using namespace zsp::test;

const ZspvCodec* g726()
{
    return zspvCodecByName("G726-24", 8000); // steps of 8 samples and 3 octets
}

const ZspvCodec* g722()
{
    return zspvCodecByName("G722", 8000);
}

const ZspvCodec kCopy = *zspvCodecByIndex(0);

ZspvParams paramsWith(std::int32_t ZspvParams::*field, std::int32_t value)
{
    ZspvParams params{};
    params.structSize = sizeof params;
    params.*field = value;
    return params;
}

Argument spoilt(std::int32_t ZspvParams::*field, std::int32_t value)
{
    return in(std::vector{paramsWith(field, value)});
}

Argument params()
{
    return spoilt(&ZspvParams::bitRate, 0).optional();
}

template <typename GetSize>
std::int32_t sizeBy(GetSize getSize, const ZspvCodec* codec)
{
    std::int32_t size = 0;
    EXPECT_EQ(getSize(codec, nullptr, &size), zspStsNoErr);
    return size;
}

Argument encoder(const ZspvCodec* codec)
{
    const std::int32_t size = sizeBy(zspvEncoderGetSize, codec);
    return state(static_cast<std::size_t>(size), [codec, size](void* memory) {
        ZspvEncoder* made = nullptr;
        EXPECT_EQ(zspvEncoderInit(memory, size, codec, nullptr, &made), zspStsNoErr);
        EXPECT_EQ(static_cast<void*>(made), memory);
    });
}

Argument decoder(const ZspvCodec* codec)
{
    const std::int32_t size = sizeBy(zspvDecoderGetSize, codec);
    return state(static_cast<std::size_t>(size), [codec, size](void* memory) {
        ZspvDecoder* made = nullptr;
        EXPECT_EQ(zspvDecoderInit(memory, size, codec, nullptr, &made), zspStsNoErr);
        EXPECT_EQ(static_cast<void*>(made), memory);
    });
}

/// The checks of codec and parameters, which are arguments c and c + 1: sizes, then values.
Contract withSizes(Contract contract, std::size_t c)
{
    return contract.row({{c + 1, spoilt(&ZspvParams::structSize, 0)}}, zspStsSizeErr)
        .row({{c + 1, spoilt(&ZspvParams::structSize, offsetof(ZspvParams, noHighPass) - 4)}},
             zspStsSizeErr)
        .row({{c + 1, spoilt(&ZspvParams::structSize, 4097)}}, zspStsSizeErr)
        .row({{c, pointer(&kCopy)}}, zspStsBadArgErr);
}

Contract withValues(Contract contract, std::size_t c)
{
    return contract.row({{c + 1, spoilt(&ZspvParams::bitRate, 63999)}}, zspStsRangeErr)
        .row({{c + 1, spoilt(&ZspvParams::dtx, 1)}}, zspStsRangeErr);
}

template <typename GetSize>
Contract sizeContract(std::string name, GetSize getSize)
{
    Contract contract(std::move(name), getSize, {pointer(g722()), params(), out<std::int32_t>(1)});
    return withValues(withSizes(contract, 0), 0);
}

template <typename Init, typename GetSize>
Contract initContract(std::string name, Init init, GetSize getSize)
{
    const std::int32_t size = sizeBy(getSize, g722());
    Contract contract(std::move(name), init,
                      {state(static_cast<std::size_t>(size)), number(size), pointer(g722()),
                       params(), out<void*>(1)});
    contract.row({{1, number(-1)}}, zspStsSizeErr);
    // How much a foreign record would need is not known.
    return withValues(withSizes(contract, 2).row({{1, number(size - 1)}}, zspStsSizeErr), 2);
}

const bool registered = addContracts({
    sizeContract(ZSP_NAMED(zspvEncoderGetSize)),
    sizeContract(ZSP_NAMED(zspvDecoderGetSize)),
    Contract(ZSP_NAMED(zspvEncoderReset), {encoder(g726())}),
    Contract(ZSP_NAMED(zspvDecoderReset), {decoder(g726())}),
    Contract(ZSP_NAMED(zspvEncode),
             {encoder(g726()), in<std::int16_t>(80), number(80), out<std::uint8_t>(30), number(30),
              out<std::int32_t>(1).reported(), out<ZspvFrameKind>(1).optional()})
        .row({{2, number(0)}}, zspStsSizeErr)
        .row({{2, number(-8)}}, zspStsSizeErr)
        .row({{2, number(79)}}, zspStsSizeErr)
        .row({{4, number(29)}}, zspStsSizeErr),
    Contract(ZSP_NAMED(zspvEncoderSetBitRate), {encoder(g722()), number(56000)})
        .row({{1, number(0)}}, zspStsRangeErr)
        .row({{1, number(40000)}}, zspStsRangeErr),
    Contract(ZSP_NAMED(zspvEncoderGetBitRate), {encoder(g722()), out<std::int32_t>(1)}),
    Contract(ZSP_NAMED(zspvEncoderSetDtx), {encoder(g722()), number(0)})
        .row({{1, number(1)}}, zspStsRangeErr),
    Contract(ZSP_NAMED(zspvEncoderGetDtx), {encoder(g722()), out<std::int32_t>(1)}),
    Contract(ZSP_NAMED(zspvEncoderGetActivity), {encoder(g722()), out<std::int32_t>(1)}),
    Contract(ZSP_NAMED(zspvDecode),
             {decoder(g726()), number(zspvFrameSpeech), in<std::uint8_t>(30), number(30),
              out<std::int16_t>(80), number(80), out<std::int32_t>(1).reported()})
        .row({{3, number(-3)}}, zspStsSizeErr)
        .row({{3, number(29)}}, zspStsSizeErr)
        .row({{5, number(79)}}, zspStsSizeErr)
        .row({{1, number(7)}}, zspStsCodecRangeErr)
        .row({{1, number(zspvFrameSidFirst)}}, zspStsCodecRangeErr)
        .row({{1, number(zspvFrameSidDamaged)}}, zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspvConceal),
             {decoder(g726()), out<std::int16_t>(80), number(80), out<std::int32_t>(1).reported()})
        .row({{2, number(79)}}, zspStsSizeErr),
    Contract(ZSP_NAMED(zspvDecoderSetBitRate), {decoder(g722()), number(48000)})
        .row({{1, number(32000)}}, zspStsRangeErr),
    Contract(ZSP_NAMED(zspvDecoderGetBitRate), {decoder(g722()), out<std::int32_t>(1)}),
});

// ZspvEncoder** and ZspvDecoder** are bound from one kind of argument.
const bool initRegistered = addContracts({
    initContract(ZSP_NAMED(zspvEncoderInit), zspvEncoderGetSize),
    initContract(ZSP_NAMED(zspvDecoderInit), zspvDecoderGetSize),
});

TEST(Coders, TellWhatTheyWouldNeed)
{
    ZspvEncoder* encoder = nullptr;
    ZspvDecoder* decoder = nullptr;
    ASSERT_EQ(zspvEncoderCreate(g726(), nullptr, &encoder), zspStsNoErr);
    ASSERT_EQ(zspvDecoderCreate(g726(), nullptr, &decoder), zspStsNoErr);
    std::int16_t samples[800] = {};
    std::uint8_t bytes[300] = {};
    std::int32_t needed = 0;
    EXPECT_EQ(zspvEncode(encoder, samples, 800, bytes, 299, &needed, nullptr), zspStsSizeErr);
    EXPECT_EQ(needed, 300);
    EXPECT_EQ(zspvDecode(decoder, zspvFrameSpeech, bytes, 300, samples, 799, &needed),
              zspStsSizeErr);
    EXPECT_EQ(needed, 800);
    EXPECT_EQ(zspvConceal(decoder, samples, 0, &needed), zspStsSizeErr);
    EXPECT_EQ(needed, 80);
    EXPECT_EQ(zspvDecode(decoder, zspvFrameSpeech, nullptr, 0, samples, 800, &needed),
              zspStsSizeErr);
    // More samples than can be counted.
    EXPECT_EQ(zspvDecode(decoder, zspvFrameSpeech, bytes, INT32_MAX / 3 * 3, samples, 800, &needed),
              zspStsSizeErr);
    zspvEncoderDestroy(encoder);
    zspvDecoderDestroy(decoder);
    zspvEncoderDestroy(nullptr);
    zspvDecoderDestroy(nullptr);
}

} // namespace
