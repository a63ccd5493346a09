// Speech through a codec and a network that loses packets, with three ways to fill what is
// missing: the decoder's concealment, the last packet again, silence.
#pragma once

#include "signals/loss.hpp"
#include "zspvoice.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace zsp::test {

enum class Filling { concealment, repetition, silence };

struct LossyCall {
    const ZspvCodec* codec;
    std::size_t packetSamples;
    std::size_t packetBytes;
    std::vector<std::uint8_t> coded; ///< whole packets
    std::vector<std::int16_t> clean; ///< as decoded without loss

    LossyCall(const ZspvCodec* c, std::span<const std::int16_t> speech)
        : codec(c),
          packetSamples(static_cast<std::size_t>(c->sampleRate / 1000 * c->defaultPacketMs)),
          packetBytes(static_cast<std::size_t>(c->maxFrameBytes) * packetSamples /
                      static_cast<std::size_t>(c->frameSamples)),
          coded(packets(speech) * packetBytes)
    {
        ZspvEncoder* encoder = nullptr;
        zspvEncoderCreate(codec, nullptr, &encoder);
        for (std::size_t i = 0; i < packets(speech); ++i) {
            std::int32_t length = 0;
            zspvEncode(encoder, &speech[i * packetSamples],
                       static_cast<std::int32_t>(packetSamples), &coded[i * packetBytes],
                       static_cast<std::int32_t>(packetBytes), &length, nullptr);
        }
        zspvEncoderDestroy(encoder);
        clean = decode(std::vector<bool>(packets(speech)), Filling::silence);
    }

    std::size_t packets(std::span<const std::int16_t> speech) const
    {
        return speech.size() / packetSamples;
    }

    /// What is heard.
    std::vector<std::int16_t> decode(const std::vector<bool>& lost, Filling filling) const
    {
        ZspvDecoder* decoder = nullptr;
        zspvDecoderCreate(codec, nullptr, &decoder);
        std::vector<std::int16_t> heard(lost.size() * packetSamples);
        for (std::size_t i = 0; i < lost.size(); ++i) {
            std::int16_t* place = &heard[i * packetSamples];
            std::int32_t count = 0;
            if (!lost[i])
                zspvDecode(decoder, zspvFrameSpeech, &coded[i * packetBytes],
                           static_cast<std::int32_t>(packetBytes), place,
                           static_cast<std::int32_t>(packetSamples), &count);
            else if (filling == Filling::concealment)
                for (std::size_t done = 0; done < packetSamples;
                     done += static_cast<std::size_t>(count))
                    zspvConceal(decoder, place + done, codec->frameSamples, &count);
            else if (filling == Filling::repetition)
                std::copy(place - packetSamples, place, place);
        }
        zspvDecoderDestroy(decoder);
        return heard;
    }

    /// Means over several calls with the same share of lost packets.
    signals::Damage damage(double share, Filling filling, int calls) const
    {
        signals::Damage mean{};
        for (int call = 0; call < calls; ++call) {
            const auto lost = signals::lostPackets(clean.size() / packetSamples, share,
                                                   static_cast<std::uint32_t>(call + 1));
            const auto one = signals::damage(clean, decode(lost, filling), lost, packetSamples);
            mean.segmentalSnrDb += one.segmentalSnrDb / calls;
            mean.spectralDistanceDb += one.spectralDistanceDb / calls;
        }
        return mean;
    }
};

} // namespace zsp::test
