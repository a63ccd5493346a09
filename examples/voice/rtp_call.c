/* One direction of a call with both of its ends: frames are coded, packed to RTP payloads, lost
 * here and there on the way, taken apart, decoded, and concealed where nothing came.
 *
 *   rtp_call [CODEC [FILE.wav]]      an RTP name, PCMU by default; 16-bit mono PCM at its rate */

#include "zspvoice.h"

#include "examples/wav.h"

#include <math.h>

enum { kPacketMs = 20, kSeconds = 5, kMostFrames = 8, kMostOctets = 1500, kLostOf100 = 5 };

/* What goes over the network; a real packet has an RTP header with it. */
struct RtpPacket {
    uint32_t timestamp;
    int32_t marker, length;
    uint8_t payload[kMostOctets];
};

struct Sender {
    ZspvEncoder* encoder;
    uint32_t timestamp;
    ZspvFrameKind last;
};

static void need(ZspStatus status, const char* what)
{
    if (status == zspStsNoErr) return;
    fprintf(stderr, "%s: %s\n", what, zspvStatusText(status));
    exit(1);
}

/* Codes 20 ms; the length is 0 if there is nothing to send. */
static void send(struct Sender* sender, const ZspvCodec* codec, const int16_t* samples,
                 struct RtpPacket* packet)
{
    const int32_t count = codec->sampleRate / 1000 * kPacketMs;
    ZspvPacketInfo info = {.structSize = sizeof info};
    ZspvFrame frames[kMostFrames] = {{0}};
    uint8_t bytes[kMostOctets];
    int32_t used = 0, frame = 0;
    for (int32_t at = 0; at < count; at += codec->frameSamples, ++frame) {
        ZspvFrame* f = &frames[frame];
        f->offset = used;
        f->samples = codec->frameSamples;
        need(zspvEncode(sender->encoder, samples + at, codec->frameSamples, bytes + used,
                        (int32_t)sizeof bytes - used, &f->length, &f->kind),
             "encode");
        used += f->length;
    }
    need(zspvPack(codec, NULL, bytes, frames, frame, sender->last, ZSPV_NO_REQUEST, packet->payload,
                  kMostOctets, &info),
         "pack");
    packet->timestamp = sender->timestamp;
    packet->marker = info.marker;
    packet->length = info.length;
    sender->timestamp += (uint32_t)info.ticks;
    sender->last = frames[frame - 1].kind;
}

/* Gives 20 ms out, whether a packet came or not. */
static void receive(ZspvDecoder* decoder, const struct RtpPacket* packet, int16_t* samples)
{
    const ZspvCodec* codec = zspvDecoderGetCodec(decoder);
    const int32_t wanted = codec->sampleRate / 1000 * kPacketMs;
    ZspvFrame frames[kMostFrames];
    uint8_t bytes[kMostOctets];
    int32_t given = 0, count = 0, written = 0;
    /* A packet that is not what it claims to be is as good as lost. */
    if (packet && zspvUnpack(codec, NULL, packet->payload, packet->length, bytes, sizeof bytes,
                             frames, kMostFrames, &count, NULL) != zspStsNoErr)
        count = 0;
    for (int32_t i = 0; i < count && given < wanted; ++i, given += written)
        need(zspvDecode(decoder, frames[i].kind, bytes + frames[i].offset, frames[i].length,
                        samples + given, wanted - given, &written),
             "decode");
    for (; given < wanted; given += written)
        need(zspvConceal(decoder, samples + given, wanted - given, &written), "conceal");
}

/* Something like a vowel, with a pitch that moves. */
static int16_t* sing(int rate, int* count)
{
    int16_t* samples = (int16_t*)calloc((size_t)(rate * kSeconds), sizeof *samples);
    double phase = 0.0;
    if (!samples) exit(1);
    for (int i = 0; i < rate * kSeconds; ++i) {
        double value = 0.0;
        phase += 2.0 * 3.14159265358979 * (120.0 + 20.0 * sin(9.0 * i / rate)) / rate;
        for (int h = 1; h <= 20; ++h)
            value += sin(h * phase) / (1.0 + 0.1 * (h - 5) * (h - 5));
        samples[i] = (int16_t)lrint(2500.0 * value);
    }
    *count = rate * kSeconds;
    return samples;
}

int main(int argumentCount, char** arguments)
{
    const char* name = argumentCount > 1 ? arguments[1] : "PCMU";
    const ZspvCodec* codec = zspvCodecByName(name, 0);
    struct Sender sender = {NULL, 1000, zspvFrameNoData};
    struct RtpPacket packet;
    ZspvDecoder* decoder = NULL;
    uint32_t dice = 1;
    int count = 0, packets = 0, lost = 0, octets = 0;
    double signal = 0.0, noise = 0.0;
    if (!codec) {
        fprintf(stderr, "%s: no codec of this name; there are", name);
        for (int32_t i = 0; i < zspvCodecCount(); ++i)
            fprintf(stderr, " %s", zspvCodecByIndex(i)->rtpName);
        fprintf(stderr, "\n");
        return 1;
    }
    int16_t* speech = argumentCount > 2 ? readWav(arguments[2], (unsigned)codec->sampleRate, &count)
                                        : sing(codec->sampleRate, &count);
    const int block = codec->sampleRate / 1000 * kPacketMs, blocks = count / block;
    int16_t* heard = (int16_t*)calloc((size_t)count + 1, sizeof *heard);
    if (!heard) return 1;
    need(zspvEncoderCreate(codec, NULL, &sender.encoder), "encoder");
    need(zspvDecoderCreate(codec, NULL, &decoder), "decoder");

    for (int i = 0; i < blocks; ++i) {
        send(&sender, codec, speech + i * block, &packet);
        dice = dice * 1664525u + 1013904223u;
        const int arrives = (dice >> 16) % 100 >= kLostOf100;
        receive(decoder, arrives ? &packet : NULL, heard + i * block);
        packets += packet.length > 0;
        lost += !arrives;
        octets += packet.length;
    }
    zspvEncoderDestroy(sender.encoder);
    zspvDecoderDestroy(decoder);

    for (int i = codec->filterDelay; i < blocks * block; ++i) {
        const double wanted = speech[i - codec->filterDelay];
        signal += wanted * wanted;
        noise += (heard[i] - wanted) * (heard[i] - wanted);
    }
    const double ratio = 10.0 * log10(signal / (noise + 1e-9));
    printf(
        "%s: %d packets of %d octets, %d of them lost; %u ticks; signal-to-noise ratio %.1f dB\n",
        codec->rtpName, packets, packets ? octets / packets : 0, lost,
        (unsigned)(sender.timestamp - 1000), ratio);
    free(speech);
    free(heard);
    return argumentCount > 1 || ratio > 10.0 ? 0 : 1;
}
