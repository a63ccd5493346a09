/* The switch that turns an echo canceller off for modems and fax machines: looks for the 2100 Hz
 * answer tone with phase reversals, and turns cancelling on again after 400 ms of silence.
 *
 *   tone_disabler [FILE.wav]      a line: 16-bit mono PCM at 8 kHz; without a file, a made-up one
 */

#include "zspsc.h"

#include "examples/wav.h"

#include <math.h>
#include <stdio.h>
#include <stdlib.h>

enum { kRate = 8000, kBlock = kRate / 100, kBlocks = 400 }; /* 10 ms, 4 s */

/* 0.2 s of silence, 1.8 s of answer tone that reverses its phase every 450 ms, silence. */
static float line(int n)
{
    const int start = kRate / 5, end = 2 * kRate, reversal = kRate * 45 / 100;
    if (n < start || n >= end) return 0.0F;
    return ((n - start) / reversal % 2 ? -1.0F : 1.0F) * 3000.0F *
           (float)sin(2.0 * 3.14159265358979 * 2100.0 * n / kRate);
}

int main(int argumentCount, char** arguments)
{
    int count = kBlocks * kBlock;
    int16_t* recording = argumentCount > 1 ? readWav(arguments[1], kRate, &count) : NULL;
    int32_t size = 0;
    void* detector;
    int block, disabledAt = -1, enabledAt = -1, quiet = 0, enabled = 1;

    if (zspsToneDetectGetStateSize_EC_32f(kRate, &size) != zspStsNoErr) return 1;
    detector = malloc((size_t)size);
    if (!detector || zspsToneDetectInit_EC_32f(detector, kRate) != zspStsNoErr) return 1;

    for (block = 0; block < count / kBlock; ++block) {
        float samples[kBlock], power = 0.0F;
        int32_t detected = 0;
        int i;
        for (i = 0; i < kBlock; ++i) {
            const int n = block * kBlock + i;
            samples[i] = recording ? (float)recording[n] : line(n);
            power += samples[i] * samples[i] / kBlock;
        }
        if (zspsToneDetect_EC_32f(samples, kBlock, &detected, detector) != zspStsNoErr) return 1;

        quiet = power < 180.0F * 180.0F ? quiet + 1 : 0; /* -45 dBFS */
        if (detected && enabled) {
            enabled = 0;
            disabledAt = block;
        } else if (!enabled && quiet >= 40) {
            enabled = 1;
            enabledAt = block;
            zspsToneDetectInit_EC_32f(detector, kRate);
        }
    }
    free(recording);
    free(detector);
    if (disabledAt < 0)
        printf("cancelling was never turned off\n");
    else if (enabledAt < 0)
        printf("cancelling off at %d ms and for the rest of the line\n", 10 * disabledAt);
    else
        printf("cancelling off at %d ms, on again at %d ms\n", 10 * disabledAt, 10 * enabledAt);
    if (argumentCount > 1) return 0;
    return disabledAt > 0 && enabledAt > disabledAt ? 0 : 1;
}
