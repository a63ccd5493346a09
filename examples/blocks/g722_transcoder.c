/* A gateway between a wide-band and a narrow-band call: takes a G.722 stream at 64 kbit/s, decodes
 * it, halves the sampling rate with the lower sub-band that the decoder has anyway, levels it, and
 * codes it again with G.726 at 32 kbit/s.
 *
 *   g722_transcoder [FILE.wav]      what the wide-band side says: 16-bit mono PCM at 16 kHz */

#include "zspsc.h"

#include "examples/wav.h"

#include <math.h>
#include <stdio.h>
#include <stdlib.h>

enum {
    kWideRate = 16000,
    kFrame = kWideRate / 50, /* 20 ms: 320 wide-band samples, 160 pairs, 160 narrow-band samples */
    kPairs = kFrame / 2,
    kFrames = 100
};

static void* newState(ZspStatus (*getSize)(int32_t*))
{
    int32_t size = 0;
    if (getSize(&size) != zspStsNoErr) return NULL;
    return malloc((size_t)size);
}

/* A tone of 1 kHz, growing from silence. */
static int16_t* tone(int* count)
{
    int16_t* samples = (int16_t*)calloc(kFrames * kFrame, sizeof *samples);
    if (!samples) exit(1);
    for (int n = 0; n < kFrames * kFrame; ++n) {
        const double level = 2000.0 * n / (kFrames * kFrame);
        samples[n] = (int16_t)lrint(level * sin(2.0 * 3.14159265358979 * 1000.0 * n / kWideRate));
    }
    *count = kFrames * kFrame;
    return samples;
}

/* What arrives from the network: a frame coded with G.722. */
static void receive(void* encoder, int16_t* delayLine, const int16_t* samples, int16_t* codes)
{
    int16_t bands[kFrame];
    zspsQMFEncode_G722_16s(samples, bands, kFrame, delayLine);
    zspsSBADPCMEncode_G722_16s(bands, codes, kFrame, encoder);
}

int main(int argumentCount, char** arguments)
{
    int samples = 0;
    int16_t* said = argumentCount > 1 ? readWav(arguments[1], kWideRate, &samples) : tone(&samples);
    const int frames = samples / kFrame;
    int16_t sendDelay[24] = {0}; /* of the transmit filter; zeroed by the caller before a call */
    void* remote = newState(zspsSBADPCMEncodeStateSize_G722_16s);
    void* decoder = newState(zspsSBADPCMDecodeStateSize_G722_16s);
    void* encoder = newState(zspsEncodeGetStateSize_G726_16s8u);
    ZspAlcState_G169 leveller;
    double before = 0.0, after = 0.0;
    int frame, i;

    if (!remote || !decoder || !encoder) return 1;
    zspsSBADPCMEncodeInit_G722_16s(remote);
    zspsSBADPCMDecodeInit_G722_16s(decoder);
    zspsEncodeInit_G726_16s8u(encoder, zspG726Rate32);
    zspsALCInit_G169_16s(&leveller);

    for (frame = 0; frame < frames; ++frame) {
        int16_t codes[kFrame], bands[kFrame], narrow[kPairs], levelled[kPairs];
        uint8_t sent[kPairs];
        receive(remote, sendDelay, said + frame * kFrame, codes);

        if (zspsSBADPCMDecode_G722_16s(codes, bands, kFrame, 1, decoder) != zspStsNoErr) return 1;
        for (i = 0; i < kPairs; ++i) /* the lower band is the narrow-band signal, at 8 kHz */
            narrow[i] = bands[2 * i];
        if (zspsALC_G169_16s(narrow, levelled, kPairs, &leveller) != zspStsNoErr) return 1;
        for (i = 0; i < kPairs; ++i) { /* G.726 takes 14 bits */
            before += (double)narrow[i] * narrow[i];
            after += (double)levelled[i] * levelled[i];
            levelled[i] = (int16_t)(levelled[i] >> 2);
        }
        if (zspsEncode_G726_16s8u(encoder, levelled, sent, kPairs) != zspStsNoErr) return 1;
    }
    free(remote);
    free(decoder);
    free(encoder);
    free(said);

    printf("%d frames from 64 to 32 kbit/s; levelled by %+.1f dB on average\n", frames,
           10.0 * log10(after / before));
    return argumentCount > 1 || after > before ? 0 : 1;
}
