/* An echo canceller whose loudspeaker and microphone run on threads of their own, as sound cards
 * have them: one gives the far end in, the other cancels, without a lock between them.
 *
 *   echo_two_threads [FILE.wav]      16-bit mono PCM at 16 kHz; without a file, noise
 *
 * The microphone hears the far end 30 ms later and 6 dB weaker, and nothing else. */

#include "zspvoice.h"

#include "examples/wav.h"

#include <math.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>

enum { kBlock = 160, kEchoDelay = 480 };

typedef struct Call {
    ZspvEcho* echo;
    int16_t* far;
    int blocks;
    pthread_barrier_t tick; /* a block has gone out, a block has come in */
} Call;

static void* renderThread(void* argument)
{
    Call* call = (Call*)argument;
    for (int i = 0; i < call->blocks; ++i) {
        zspvEchoRender(call->echo, call->far + i * kBlock, kBlock);
        pthread_barrier_wait(&call->tick);
        pthread_barrier_wait(&call->tick);
    }
    return NULL;
}

static double decibels(double part, double whole)
{
    return 10.0 * log10((part + 1.0) / (whole + 1.0));
}

int main(int count, char** arguments)
{
    int samples = 10 * 16000;
    Call call = {0};
    ZspvEchoConfig config = {.structSize = sizeof config};
    ZspvEchoMetrics metrics = {.structSize = sizeof metrics};
    pthread_t renderer;
    double echoPower = 0, leftPower = 0;
    uint32_t noise = 1;

    call.far = count > 1 ? readWav(arguments[1], 16000, &samples)
                         : (int16_t*)calloc((size_t)samples, sizeof *call.far);
    for (int i = 0; count < 2 && i < samples; ++i) {
        noise = noise * 1664525u + 1013904223u;
        call.far[i] = (int16_t)((int)(noise >> 16) % 8000 - 4000);
    }
    call.blocks = samples / kBlock;

    config.sampleRate = 16000;
    config.tailMs = 64;
    config.suppressor = zspvOn;
    if (zspvEchoCreate(&config, &call.echo) != zspStsNoErr) return 1;
    pthread_barrier_init(&call.tick, NULL, 2);
    pthread_create(&renderer, NULL, renderThread, &call);

    for (int i = 0; i < call.blocks; ++i) {
        int16_t mic[kBlock], out[kBlock];
        pthread_barrier_wait(&call.tick);
        for (int n = 0; n < kBlock; ++n) {
            const int at = i * kBlock + n - kEchoDelay;
            mic[n] = (int16_t)(at < 0 ? 0 : call.far[at] / 2);
        }
        zspvEchoCapture(call.echo, mic, out, kBlock);
        pthread_barrier_wait(&call.tick);
        for (int n = 0; i > call.blocks / 2 && n < kBlock; ++n) {
            echoPower += (double)mic[n] * mic[n];
            leftPower += (double)out[n] * out[n];
        }
    }
    pthread_join(renderer, NULL);
    pthread_barrier_destroy(&call.tick);

    zspvEchoGetMetrics(call.echo, &metrics);
    printf("echo %.1f dB lower in the second half, path of %.1f ms, %s\n",
           decibels(echoPower, leftPower), (double)metrics.pathDelayMs,
           metrics.converged ? "converged" : "not converged");
    zspvEchoDestroy(call.echo);
    free(call.far);
    return decibels(echoPower, leftPower) > 20.0 ? 0 : 1;
}
