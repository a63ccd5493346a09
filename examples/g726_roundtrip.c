/* Codes two seconds of a swept tone with G.726 at 32 kbit/s, decodes it and tells how much noise
 * that added. */

#include "zspsc.h"

#include <math.h>
#include <stdio.h>
#include <stdlib.h>

enum { kSampleRate = 8000, kSamples = 2 * kSampleRate, kBlock = 160 };

int main(void)
{
    static int16_t speech[kSamples], decoded[kSamples];
    static uint8_t codes[kSamples];
    double phase = 0.0, signal = 0.0, noise = 0.0, ratio;
    int32_t encoderSize, decoderSize;
    void *encoder, *decoder;
    int i;

    for (i = 0; i < kSamples; ++i) { /* 200 to 3200 Hz; 14 bits are what the coder takes */
        phase += 2.0 * 3.14159265358979 * (200.0 + 3000.0 * i / kSamples) / kSampleRate;
        speech[i] = (int16_t)lrint(4000.0 * sin(phase));
    }

    zspsEncodeGetStateSize_G726_16s8u(&encoderSize);
    zspsDecodeGetStateSize_G726_8u16s(&decoderSize);
    encoder = malloc((size_t)encoderSize);
    decoder = malloc((size_t)decoderSize);
    if (!encoder || !decoder) return 1;
    zspsEncodeInit_G726_16s8u(encoder, zspG726Rate32);
    zspsDecodeInit_G726_8u16s(decoder, zspG726Rate32, zspG726LawLinear);

    for (i = 0; i < kSamples; i += kBlock) { /* 20 ms at a time, as a call would */
        if (zspsEncode_G726_16s8u(encoder, speech + i, codes + i, kBlock) != zspStsNoErr) return 1;
        if (zspsDecode_G726_8u16s(decoder, codes + i, decoded + i, kBlock) != zspStsNoErr) return 1;
    }
    free(encoder);
    free(decoder);

    for (i = 0; i < kSamples; ++i) {
        signal += (double)speech[i] * speech[i];
        noise += (double)(speech[i] - decoded[i]) * (speech[i] - decoded[i]);
    }
    ratio = 10.0 * log10(signal / noise);
    printf("%d samples as %d code words of 4 bits; signal-to-noise ratio %.1f dB\n", kSamples,
           kSamples, ratio);
    return ratio > 20.0 ? 0 : 1;
}
