// Coders of libavcodec, peers in measurements.
#pragma once

#include <cstdlib>

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

    AVCodecContext* context;
    AVFrame* frame = av_frame_alloc();
    AVPacket* packet = av_packet_alloc();
};

} // namespace zsp::bench
