/* Codes a recording, or two seconds of a swept tone, with G.726 at 32 kbit/s, decodes it and tells
 * how much noise that added.
 *
 *   g726_roundtrip [FILE.wav]      16-bit mono PCM at 8 kHz */

#include "zspsc.h"

#include "examples/wav.h"

#include <math.h>
#include <stdio.h>
#include <stdlib.h>

enum { kSampleRate = 8000, kSamples = 2 * kSampleRate, kBlock = 160 };

static int16_t* sweep(int* count)
{
    int16_t* samples = (int16_t*)calloc(kSamples, sizeof *samples);
    double phase = 0.0;
    if (!samples) exit(1);
    for (int i = 0; i < kSamples; ++i) { /* 200 to 3200 Hz */
        phase += 2.0 * 3.14159265358979 * (200.0 + 3000.0 * i / kSamples) / kSampleRate;
        samples[i] = (int16_t)lrint(16000.0 * sin(phase));
    }
    *count = kSamples;
    return samples;
}

int main(int argumentCount, char** arguments)
{
    int samples = 0;
    int16_t* speech =
        argumentCount > 1 ? readWav(arguments[1], kSampleRate, &samples) : sweep(&samples);
    int16_t block[kBlock], decoded[kBlock];
    uint8_t codes[kBlock];
    double signal = 0.0, noise = 0.0, ratio;
    int32_t encoderSize, decoderSize;
    void *encoder, *decoder;
    int i;

    zspsEncodeGetStateSize_G726_16s8u(&encoderSize);
    zspsDecodeGetStateSize_G726_8u16s(&decoderSize);
    encoder = malloc((size_t)encoderSize);
    decoder = malloc((size_t)decoderSize);
    if (!encoder || !decoder) return 1;
    zspsEncodeInit_G726_16s8u(encoder, zspG726Rate32);
    zspsDecodeInit_G726_8u16s(decoder, zspG726Rate32, zspG726LawLinear);

    for (int at = 0; at + kBlock <= samples; at += kBlock) { /* 20 ms at a time, as a call would */
        for (i = 0; i < kBlock; ++i)
            block[i] = (int16_t)(speech[at + i] >> 2); /* 14 bits are what the coder takes */
        if (zspsEncode_G726_16s8u(encoder, block, codes, kBlock) != zspStsNoErr) return 1;
        if (zspsDecode_G726_8u16s(decoder, codes, decoded, kBlock) != zspStsNoErr) return 1;
        for (i = 0; i < kBlock; ++i) {
            signal += (double)block[i] * block[i];
            noise += (double)(block[i] - decoded[i]) * (block[i] - decoded[i]);
        }
    }
    free(encoder);
    free(decoder);
    free(speech);

    ratio = 10.0 * log10(signal / noise);
    printf("%d samples as code words of 4 bits; signal-to-noise ratio %.1f dB\n", samples, ratio);
    return argumentCount > 1 || ratio > 20.0 ? 0 : 1;
}
