/* A sender that stops in silence although its codec cannot: voice activity decides, comfort noise
 * of RFC 3389 stands in for the pauses.
 *
 *   silence_sender [FILE.wav]      16-bit mono PCM at 8 kHz; without a file, a talker in quiet
 * noise */

#include "zspvoice.h"

#include "examples/wav.h"

#include <math.h>
#include <stdio.h>
#include <stdlib.h>

enum { kFrame = 160, kSeconds = 8, kOrder = 8 };

/* One second of talk, in syllables of a few hundred ms, and three of quiet background. */
static int16_t sample(int n)
{
    static uint32_t noise = 1;
    const double t = n / 8000.0;
    double value;
    noise = noise * 1664525u + 1013904223u;
    value = (double)(noise >> 16) / 65536.0 * 16.0 - 8.0;
    if (fmod(t, 4.0) < 1.0)
        value += 6000.0 * fabs(sin(2.0 * 3.14159265358979 * 2.0 * t)) *
                 (sin(2.0 * 3.14159265358979 * 180.0 * t) +
                  0.5 * sin(2.0 * 3.14159265358979 * 1260.0 * t));
    return (int16_t)lrint(value);
}

int main(int count, char** arguments)
{
    int samples = kSeconds * 8000;
    int16_t* speech = count > 1 ? readWav(arguments[1], 8000, &samples) : NULL;
    const ZspvCodec* codec = zspvCodecByName("PCMU", 8000);
    ZspvActivityConfig config = {.structSize = sizeof config};
    ZspvActivity* activity = NULL;
    ZspvComfortNoise* noise = NULL;
    ZspvEncoder* encoder = NULL;
    long octets = 0, frames = samples / kFrame, spoken = 0, descriptors = 0;

    config.detector = zspvDetectorAmr2;
    config.sampleRate = 8000;
    config.hangoverMs = 100;
    if (zspvActivityCreate(&config, &activity) != zspStsNoErr ||
        zspvComfortNoiseCreate(8000, &noise) != zspStsNoErr ||
        zspvEncoderCreate(codec, NULL, &encoder) != zspStsNoErr)
        return 1;

    for (long i = 0; i < frames; ++i) {
        ZspvActivityInfo info = {.structSize = sizeof info};
        int16_t frame[kFrame];
        uint8_t payload[kFrame];
        int32_t length = 0;
        for (int n = 0; n < kFrame; ++n)
            frame[n] = speech ? speech[i * kFrame + n] : sample((int)i * kFrame + n);

        zspvActivityProcess(activity, frame, kFrame, &info);
        if (info.active) {
            zspvEncode(encoder, frame, kFrame, payload, sizeof payload, &length, NULL);
            ++spoken;
        } else {
            zspvComfortNoiseAnalyse(noise, frame, kFrame);
            if (info.kind == zspvFrameSidFirst || info.kind == zspvFrameSidUpdate) {
                zspvComfortNoiseWrite(noise, kOrder, payload, sizeof payload, &length);
                ++descriptors;
            }
        }
        octets += length;
    }
    printf("%ld frames: %ld of speech, %ld descriptors, %ld octets of %ld\n", frames, spoken,
           descriptors, octets, frames * kFrame);

    zspvActivityDestroy(activity);
    zspvComfortNoiseDestroy(noise);
    zspvEncoderDestroy(encoder);
    free(speech);
    return spoken > 0 && spoken < frames && descriptors > 0 ? 0 : 1;
}
