/* The sending side of a call with discontinuous transmission: the detector says whether a frame is
 * speech, the handler whether it is sent as speech, as a comfort-noise (SID) frame or not at all.
 *
 *   dtx_sender [FILE.wav]      16-bit mono PCM at 8 kHz; without a file, a talker in quiet noise */

#include "zspsc.h"

#include "examples/wav.h"

#include <math.h>
#include <stdio.h>
#include <string.h>

enum { kFrame = 160, kLookAhead = 40, kFrames = 500, kSpeechMode = 7, kDtxMode = 25 };

/* One second of talk, in syllables of a few hundred ms, and three of quiet background. */
static int16_t sample(int n)
{
    static uint32_t noise = 1;
    const double t = n / 8000.0, inCycle = fmod(t, 4.0);
    double value;
    noise = noise * 1664525u + 1013904223u;
    value = (double)(noise >> 16) / 65536.0 * 8.0 - 4.0;
    if (inCycle < 1.0)
        value += 6000.0 * fabs(sin(2.0 * 3.14159265358979 * 2.0 * t)) *
                 (sin(2.0 * 3.14159265358979 * 180.0 * t) +
                  0.5 * sin(2.0 * 3.14159265358979 * 1260.0 * t));
    return (int16_t)lrint(value);
}

/* The reset of TS 26.094 option 1. */
static void reset(ZspVad1State* vad)
{
    int i;
    memset(vad, 0, sizeof *vad);
    for (i = 0; i < 9; ++i)
        vad->old_level[i] = vad->ave_level[i] = vad->bckr_est[i] = 150;
    vad->corr_hp_fast = 13106;
}

int main(int count, char** arguments)
{
    int samples = kFrames * kFrame;
    int16_t* recording = count > 1 ? readWav(arguments[1], 8000, &samples) : NULL;
    const int frames = samples / kFrame;
    ZspVad1State vad;
    int16_t input[kLookAhead + kFrame] = {0};
    int16_t hangover = 7, elapsed = 32767;
    int speech = 0, sid = 0, silent = 0, sinceSid = 0, frame, i;

    reset(&vad);
    for (frame = 0; frame < frames; ++frame) {
        int16_t flag = 0, mode = kSpeechMode, newSid = 0;
        /* The detector's filter bank runs 40 samples ahead of the frame whose power it takes. */
        memmove(input, input + kFrame, kLookAhead * sizeof *input);
        for (i = 0; i < kFrame; ++i)
            input[kLookAhead + i] =
                recording ? recording[frame * kFrame + i] : sample(frame * kFrame + i);

        /* A codec passes its open-loop pitch analysis on: the tone word, the correlation, and a bit
         * of the record's pitch word. Without one, no tone and no pitch. */
        vad.pitch = (int16_t)(vad.pitch >> 1);
        if (zspsVAD1_GSMAMR_16s(input, &vad, &flag, 0, 0) != zspStsNoErr) return 1;
        if (zspsEncDTXHandler_GSMAMR_16s(&hangover, &elapsed, &mode, &newSid, flag) != zspStsNoErr)
            return 1;

        if (mode != kDtxMode) {
            ++speech;
            sinceSid = 0;
        } else if (sinceSid++ % 8 == 0) { /* the first, then every eighth, TS 26.093 */
            ++sid;
        } else {
            ++silent;
        }
    }
    free(recording);
    printf("%d frames: %d sent as speech, %d as comfort noise, %d not sent\n", frames, speech, sid,
           silent);
    return count > 1 || (speech > 0 && silent > frames / 4) ? 0 : 1;
}
