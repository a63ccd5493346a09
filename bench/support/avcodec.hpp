// Coders of libavcodec, peers in measurements.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
}

namespace zsp::bench {

/// A mono coder of 16-bit samples with its frame and packet. `setUp` may change the context before
/// the coder is opened.
class Avcodec {
  public:
    template <typename SetUp>
    Avcodec(const AVCodec* codec, int sampleRate, SetUp setUp)
        : context(avcodec_alloc_context3(codec))
    {
        context->sample_rate = sampleRate;
        context->sample_fmt = AV_SAMPLE_FMT_S16;
        av_channel_layout_default(&context->ch_layout, 1);
        setUp(*context);
        if (avcodec_open2(context, codec, nullptr) != 0) std::abort();
    }
    ~Avcodec()
    {
        av_packet_free(&packet);
        av_frame_free(&frame);
        avcodec_free_context(&context);
    }
    Avcodec(const Avcodec&) = delete;
    Avcodec& operator=(const Avcodec&) = delete;

    /// Memory for frames of so many samples, for an encoder.
    void allocateFrame(int samples)
    {
        context->frame_size = samples;
        frame->nb_samples = samples;
        frame->format = AV_SAMPLE_FMT_S16;
        frame->sample_rate = context->sample_rate;
        av_channel_layout_default(&frame->ch_layout, 1);
        if (av_frame_get_buffer(frame, 0) != 0) std::abort();
    }

    /// Memory for packets of so many bytes, for a decoder.
    void allocatePacket(int bytes)
    {
        if (av_new_packet(packet, bytes) != 0) std::abort();
    }

    /// Octets of what a block gives; 0 while the encoder waits for more, negative when it failed.
    int encode(std::span<const std::int16_t> block)
    {
        std::ranges::copy(block, reinterpret_cast<std::int16_t*>(frame->data[0]));
        const int sent = avcodec_send_frame(context, frame);
        if (sent != 0) return sent;
        const int received = avcodec_receive_packet(context, packet);
        if (received == AVERROR(EAGAIN)) return 0;
        return received != 0 ? received : packet->size;
    }

    /// Whether the decoder makes so many samples of a packet.
    bool decode(std::span<const std::uint8_t> bytes, std::size_t samples)
    {
        std::ranges::copy(bytes, packet->data);
        return avcodec_send_packet(context, packet) == 0 &&
               avcodec_receive_frame(context, frame) == 0 &&
               frame->nb_samples == static_cast<int>(samples);
    }

    AVCodecContext* context;
    AVFrame* frame = av_frame_alloc();
    AVPacket* packet = av_packet_alloc();
};

} // namespace zsp::bench
