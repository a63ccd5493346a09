/* A sub-band echo canceller in its plainest form: a normalised LMS filter per bin, the controller
 * that sets its steps and decides between it and its saved copy, and the filter bank around it.
 * zspvEchoProcess() of libzspvoice is a whole one; this is the skeleton to start from.
 *
 *   echo_canceller [FILE.wav]      the far end: 16-bit mono PCM at 8 kHz; without a file, noise */

#include "zspsc.h"

#include "examples/wav.h"

#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum {
    kRate = 8000,
    kOrder = 5, /* 32 points, 17 bins, with the built-in window */
    kHop = 24,
    kWindow = 128,
    kBins = 17,
    kTaps = 16, /* 48 ms */
    kFrames = 4 * kRate / kHop,
    kEchoDelay = 70 /* samples */
};

static void* need(void* memory)
{
    if (!memory) exit(1);
    return memory;
}

static void* newBank(int32_t stateSize, void* initBuf)
{
    void* state = need(malloc((size_t)stateSize));
    if (zspsSubbandProcessInit_32f(state, kOrder, kHop, kWindow, NULL, initBuf) != zspStsNoErr)
        exit(1);
    return state;
}

/* What a filter leaves of the microphone's bin y. */
static Zsp32fc error(Zsp32fc y, Zsp32fc* const* taps, Zsp32fc* const* history, int bin)
{
    int t;
    for (t = 0; t < kTaps; ++t) {
        const Zsp32fc w = taps[t][bin], x = history[t][bin];
        y.re -= w.re * x.re - w.im * x.im;
        y.im -= w.re * x.im + w.im * x.re;
    }
    return y;
}

/* The far end talks, here in noise. */
static int16_t* talk(int* count)
{
    uint32_t noise = 1;
    int16_t* samples = (int16_t*)need(calloc(kFrames * kHop, sizeof *samples));
    for (int i = 0; i < kFrames * kHop; ++i) {
        noise = noise * 1664525u + 1013904223u;
        samples[i] = (int16_t)((int)(noise >> 17) - 16384);
    }
    *count = kFrames * kHop;
    return samples;
}

int main(int argumentCount, char** arguments)
{
    int count = 0;
    int16_t* far = argumentCount > 1 ? readWav(arguments[1], kRate, &count) : talk(&count);
    const int frames = count / kHop;
    static Zsp32fc past[kTaps][kBins], adaptiveTaps[kTaps][kBins], fixedTaps[kTaps][kBins];
    Zsp32fc *history[kTaps], *adaptive[kTaps], *fixed[kTaps]; /* by delay, the newest first */
    int32_t stateSize, initSize, workSize, controllerSize;
    double echoPower = 0.0, residualPower = 0.0;
    int frame, bin, t, i;

    zspsSubbandProcessGetSize_32f(kOrder, kWindow, &stateSize, &initSize, &workSize);
    void* init = need(malloc((size_t)initSize + 1));
    void* work = need(malloc((size_t)workSize));
    void* farBank = newBank(stateSize, init);
    void* micBank = newBank(stateSize, init);
    void* outBank = newBank(stateSize, init);
    void* echoBank = newBank(stateSize, init); /* only to measure against */
    zspsSubbandControllerGetSize_EC_32f(kBins, kHop, kTaps, kRate, &controllerSize);
    void* controller = need(malloc((size_t)controllerSize));
    zspsSubbandControllerInit_EC_32f(controller, kBins, kHop, kTaps, kRate);
    for (t = 0; t < kTaps; ++t) {
        history[t] = past[t];
        adaptive[t] = adaptiveTaps[t];
        fixed[t] = fixedTaps[t];
    }

    for (frame = 0; frame < frames; ++frame) {
        float newest[kHop], mic[kHop], out[kHop], untouched[kHop], factor = 0.0F;
        Zsp32fc y[kBins], adaptErr[kBins], fixedErr[kBins];
        Zsp32fc* oldest = history[kTaps - 1];
        double step[kBins];

        /* The microphone hears the far end later, softer, twice. */
        for (i = 0; i < kHop; ++i) {
            const int n = frame * kHop + i;
            newest[i] = (float)far[n];
            mic[i] = n < 2 * kEchoDelay ? 0.0F
                                        : 0.4F * (float)far[n - kEchoDelay] -
                                              0.2F * (float)far[n - 2 * kEchoDelay];
        }

        memmove(history + 1, history, (kTaps - 1) * sizeof *history);
        history[0] = oldest;
        zspsSubbandAnalysis_32f32fc(newest, history[0], farBank, work);
        zspsSubbandAnalysis_32f32fc(mic, y, micBank, work);
        for (bin = 0; bin < kBins; ++bin) {
            adaptErr[bin] = error(y[bin], adaptive, history, bin);
            fixedErr[bin] = error(y[bin], fixed, history, bin);
        }
        zspsSubbandControllerUpdate_EC_32f(adaptErr, fixedErr, (const Zsp32fc* const*)history, y,
                                           step, controller);
        for (bin = 0; bin < kBins; ++bin)
            for (t = 0; t < kTaps; ++t) { /* w += step * error * conj(x) */
                const Zsp32fc e = adaptErr[bin], x = history[t][bin];
                adaptive[t][bin].re += (float)step[bin] * (e.re * x.re + e.im * x.im);
                adaptive[t][bin].im += (float)step[bin] * (e.im * x.re - e.re * x.im);
            }
        zspsSubbandController_EC_32f(adaptErr, fixedErr, adaptive, fixed, &factor, controller);
        zspsSubbandSynthesis_32fc32f(fixedErr, out, outBank, work);
        zspsSubbandSynthesis_32fc32f(y, untouched, echoBank, work);

        for (i = 0; i < kHop && frame >= frames / 2; ++i) {
            echoPower += untouched[i] * untouched[i];
            residualPower += out[i] * out[i];
        }
    }
    free(init);
    free(work);
    free(farBank);
    free(micBank);
    free(outBank);
    free(echoBank);
    free(controller);
    free(far);
    printf("echo return loss enhancement in the second half: %.1f dB\n",
           10.0 * log10(echoPower / residualPower));
    return argumentCount > 1 || echoPower > 100.0 * residualPower ? 0 : 1;
}
