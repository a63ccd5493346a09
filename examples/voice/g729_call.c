/* One direction of a call in G.729 Annex A that stops sending in pauses: packets of two frames, a
 * silence descriptor as the last of them where speech ends (RFC 3551, 4.5.6), a network that loses
 * one packet of 20, and a receiver that tells a pause from a loss by the sequence number.
 *
 *   g729_call [FILE.wav]      16-bit mono PCM at 8 kHz; without a file, something that talks */

#include "zspvoice.h"

#include "examples/wav.h"

#include <math.h>

enum { kFrame = 80, kFramesInPacket = 2, kMostOctets = 20, kLostOf100 = 5, kSeconds = 16 };

/* What an RTP packet tells; a real one has more in its header. */
struct RtpPacket {
    uint16_t sequence;
    uint32_t timestamp;
    int32_t length;
    uint8_t payload[kMostOctets];
};

struct Sender {
    ZspvEncoder* encoder;
    uint16_t sequence;  /* of the next packet */
    uint32_t timestamp; /* of the first frame that waits */
    ZspvFrame frames[kFramesInPacket];
    uint8_t bytes[kMostOctets];
    int32_t waiting;    /* frames */
    ZspvFrameKind last; /* of the frame before those */
};

struct Receiver {
    ZspvDecoder* decoder;
    uint16_t sequence;  /* of the packet to come */
    uint32_t timestamp; /* of the frame to come */
    int32_t concealed, pauses;
    int16_t *heard, *end;
};

static void need(ZspStatus status, const char* what)
{
    if (status == zspStsNoErr) return;
    fprintf(stderr, "%s: %s\n", what, zspvStatusText(status));
    exit(1);
}

/* Codes 10 ms. Returns 1 if that makes a packet: when it is full or a silence descriptor ends it.
 * Where nothing is to be sent, the timestamp alone goes on. */
static int send(struct Sender* sender, const int16_t* samples, struct RtpPacket* packet)
{
    ZspvPacketInfo info = {.structSize = sizeof info};
    const int32_t used = sender->waiting > 0 ? sender->frames[0].length : 0;
    ZspvFrame* frame = &sender->frames[sender->waiting++];
    frame->offset = used;
    need(zspvEncode(sender->encoder, samples, kFrame, sender->bytes + used, kMostOctets - used,
                    &frame->length, &frame->kind),
         "encode");
    if (frame->kind == zspvFrameSpeech && sender->waiting < kFramesInPacket) return 0;

    need(zspvPack(zspvEncoderGetCodec(sender->encoder), NULL, sender->bytes, sender->frames,
                  sender->waiting, sender->last, ZSPV_NO_REQUEST, packet->payload, kMostOctets,
                  &info),
         "pack");
    packet->timestamp = sender->timestamp;
    packet->length = info.length;
    sender->timestamp += (uint32_t)info.ticks;
    sender->last = frame->kind;
    sender->waiting = 0;
    if (info.length == 0) return 0;
    packet->sequence = sender->sequence++;
    return 1;
}

static void hear(struct Receiver* receiver, ZspvFrameKind kind, const uint8_t* bytes,
                 int32_t length)
{
    int32_t written = 0;
    receiver->timestamp += kFrame;
    if (receiver->heard == receiver->end) return;
    need(zspvDecode(receiver->decoder, kind, bytes, length, receiver->heard, kFrame, &written),
         "decode");
    receiver->heard += written;
    receiver->concealed += kind == zspvFrameLost;
    receiver->pauses += kind == zspvFrameNoData;
}

/* The frames up to a time for which nothing came: as many as the packets that are missing can have
 * held are concealed, the others were never sent. */
static void fill(struct Receiver* receiver, uint32_t until, int32_t missingPackets)
{
    int32_t lost = missingPackets * kFramesInPacket;
    for (; (int32_t)(until - receiver->timestamp) > 0; --lost)
        hear(receiver, lost > 0 ? zspvFrameLost : zspvFrameNoData, NULL, 0);
}

static void receive(struct Receiver* receiver, const struct RtpPacket* packet)
{
    ZspvFrame frames[kFramesInPacket];
    uint8_t bytes[kMostOctets];
    int32_t count = 0;
    /* A packet that is not what it claims to be is as good as lost. */
    if (zspvUnpack(zspvDecoderGetCodec(receiver->decoder), NULL, packet->payload, packet->length,
                   bytes, kMostOctets, frames, kFramesInPacket, &count, NULL) != zspStsNoErr)
        return;
    fill(receiver, packet->timestamp, (uint16_t)(packet->sequence - receiver->sequence));
    receiver->sequence = (uint16_t)(packet->sequence + 1);
    for (int32_t i = 0; i < count; ++i)
        hear(receiver, frames[i].kind, bytes + frames[i].offset, frames[i].length);
}

/* Two seconds of syllables, two of a quiet room, and so on. */
static int16_t* talk(int* count)
{
    int16_t* samples = (int16_t*)calloc(kSeconds * 8000, sizeof *samples);
    uint32_t dice = 1;
    double phase = 0.0;
    if (!samples) exit(1);
    *count = kSeconds * 8000;
    for (int i = 0; i < *count; ++i) {
        const double t = i / 8000.0;
        double value = 0.0;
        dice = dice * 1664525u + 1013904223u;
        phase += 6.28318530717959 * (130.0 + 25.0 * sin(4.0 * t)) / 8000.0;
        for (int h = 1; h <= 20 && fmod(t, 4.0) < 2.0; ++h)
            value += sin(h * phase) / (1.0 + 0.2 * (h - 4) * (h - 4));
        samples[i] = (int16_t)lrint(2500.0 * value * fabs(sin(9.4 * t)) + (dice >> 28) - 7.5);
    }
    return samples;
}

static double decibels(const int16_t* samples, int count)
{
    double sum = 1e-9;
    for (int i = 0; i < count; ++i)
        sum += (double)samples[i] * samples[i];
    return 10.0 * log10(sum / count / (32768.0 * 32768.0));
}

int main(int argumentCount, char** arguments)
{
    const ZspvCodec* codec = zspvCodecByName("G729", 8000);
    const ZspvParams params = {.structSize = sizeof params, .dtx = 1, .annexA = 1};
    struct Sender sender = {.timestamp = 1000, .sequence = 65530};
    struct Receiver receiver = {.timestamp = 1000, .sequence = 65530};
    uint32_t dice = 1;
    int count = 0, packets = 0, octets = 0, lost = 0;
    int16_t* speech = argumentCount > 1 ? readWav(arguments[1], 8000, &count) : talk(&count);
    const int frames = count / kFrame, length = frames * kFrame;
    int16_t* heard = (int16_t*)calloc((size_t)length + 1, sizeof *heard);
    if (!heard || frames == 0) return 1;
    receiver.heard = heard;
    receiver.end = heard + length;
    need(zspvEncoderCreate(codec, &params, &sender.encoder), "encoder");
    need(zspvDecoderCreate(codec, &params, &receiver.decoder), "decoder");

    for (int i = 0; i < frames; ++i) {
        struct RtpPacket packet;
        if (!send(&sender, speech + i * kFrame, &packet)) continue;
        ++packets;
        octets += packet.length;
        dice = dice * 1664525u + 1013904223u;
        if ((dice >> 16) % 100 < kLostOf100)
            ++lost;
        else
            receive(&receiver, &packet);
    }
    fill(&receiver, 1000 + (uint32_t)length, (uint16_t)(sender.sequence - receiver.sequence));
    zspvEncoderDestroy(sender.encoder);
    zspvDecoderDestroy(receiver.decoder);

    const double wanted = decibels(speech, length), level = decibels(heard, length);
    const double rate = octets * 8.0 * 8000.0 / length;
    printf("%d frames: %d packets, %d of them lost; %d octets, %.0f bit/s on average\n", frames,
           packets, lost, octets, rate);
    printf("%d frames concealed, %d in pauses not sent; sent %.1f dBFS, heard %.1f dBFS\n",
           receiver.concealed, receiver.pauses, wanted, level);
    free(speech);
    free(heard);
    return lost > 0 && receiver.concealed >= lost && receiver.pauses > 0 && rate < 8000.0 &&
                   fabs(level - wanted) < 3.0
               ? 0
               : 1;
}
