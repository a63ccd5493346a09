/* A host chooses its own block length, and our blocks have a fixed one: one or two inputs go
 * through re-blockers, and the output lags behind them by one block. */
#ifndef STREAM_H
#define STREAM_H

#include <ladspa.h>
#include <zspvoice.h>

#include <math.h>
#include <string.h>

enum { STREAM_MOST_INPUTS = 2, STREAM_LONGEST_BLOCK = 160 };

/* Turns one block of each input into one block of output. */
typedef void (*StreamWork)(void* plugin, int16_t blocks[][STREAM_LONGEST_BLOCK], int16_t* output);

typedef struct Stream {
    int inputs, block;
    ZspvReblock* held[STREAM_MOST_INPUTS];
    int16_t output[STREAM_LONGEST_BLOCK]; /* of the last whole block */
} Stream;

static void streamClose(Stream* s)
{
    for (int k = 0; k < s->inputs; ++k)
        zspvReblockDestroy(s->held[k]);
}

/* Memory for a stream; 0 if there is none. */
static int streamOpen(Stream* s, int inputs, int block)
{
    memset(s, 0, sizeof *s);
    s->block = block;
    for (; s->inputs < inputs; ++s->inputs)
        if (zspvReblockCreate(block, block, &s->held[s->inputs]) != zspStsNoErr) {
            streamClose(s);
            return 0;
        }
    return 1;
}

static void streamReset(Stream* s)
{
    for (int k = 0; k < s->inputs; ++k)
        zspvReblockReset(s->held[k]);
    memset(s->output, 0, sizeof s->output);
}

static int16_t streamSample(LADSPA_Data value)
{
    const float scaled = value * 32768.0F;
    if (!(scaled > -32768.0F)) return -32768; /* NaN as well */
    return (int16_t)lrintf(fminf(scaled, 32767.0F));
}

/* Any number of samples. The output may lie where an input lies. */
static void streamRun(Stream* s, const LADSPA_Data* const* inputs, LADSPA_Data* output,
                      unsigned long count, StreamWork work, void* plugin)
{
    int16_t blocks[STREAM_MOST_INPUTS][STREAM_LONGEST_BLOCK];
    for (unsigned long done = 0, part; done < count; done += part) {
        int32_t held = 0, pulled = 0;
        zspvReblockGetHeld(s->held[0], &held);
        part = (unsigned long)(s->block - held);
        if (part > count - done) part = count - done;
        for (int k = 0; k < s->inputs; ++k) {
            for (unsigned long i = 0; i < part; ++i)
                blocks[k][i] = streamSample(inputs[k][done + i]);
            zspvReblockPush(s->held[k], blocks[k], (int32_t)part);
            zspvReblockPull(s->held[k], blocks[k], STREAM_LONGEST_BLOCK, &pulled);
        }
        for (unsigned long i = 0; i < part; ++i)
            output[done + i] = (LADSPA_Data)s->output[(unsigned long)held + i] / 32768.0F;
        if (pulled) work(plugin, blocks, s->output);
    }
}

#endif
