/* LADSPA plug-in: an echo canceller of one channel with two inputs, the microphone and what goes to
 * the loudspeaker, for FFmpeg, PipeWire and every other host that loads LADSPA. It runs at 8 and
 * 16 kHz; a host at another rate is refused.
 *
 * The canceller works on blocks of 10 ms, by which its output is late, besides its own delay. The
 * plug-in tells the host the sum through its "latency" port, and beside it how much echo is gone.
 */

#include "plugins/ladspa/stream.h"

#include <stdlib.h>

enum Port {
    PORT_SUPPRESSOR,
    PORT_DELAY,
    PORT_LATENCY,
    PORT_ECHO_LOSS,
    PORT_MIC,
    PORT_FAR,
    PORT_OUTPUT,
    PORTS
};

enum { TAIL_MS = 128 };

typedef struct Plugin {
    LADSPA_Data* ports[PORTS];
    int suppressor, delayMs; /* as last given to the canceller */
    ZspvEcho* echo;
    Stream stream;
} Plugin;

static void cleanup(LADSPA_Handle handle)
{
    Plugin* p = handle;
    streamClose(&p->stream);
    zspvEchoDestroy(p->echo);
    free(p);
}

static LADSPA_Handle instantiate(const LADSPA_Descriptor* descriptor, unsigned long sampleRate)
{
    (void)descriptor;
    if (sampleRate != 8000 && sampleRate != 16000) return NULL;
    const ZspvEchoConfig config = {
        .structSize = sizeof config, .sampleRate = (int32_t)sampleRate, .tailMs = TAIL_MS};
    Plugin* p = calloc(1, sizeof *p);
    if (!p) return NULL;
    if (zspvEchoCreate(&config, &p->echo) != zspStsNoErr ||
        !streamOpen(&p->stream, 2, (int)sampleRate / 100)) {
        cleanup(p);
        return NULL;
    }
    return p;
}

static void activate(LADSPA_Handle handle)
{
    Plugin* p = handle;
    zspvEchoReset(p->echo);
    streamReset(&p->stream);
}

/* Hands changed controls on; a delay outside of its range keeps the last one. */
static void updateControls(Plugin* p)
{
    const int suppressor = *p->ports[PORT_SUPPRESSOR] > 0.0F ? zspvOn : zspvOff;
    const LADSPA_Data delay = *p->ports[PORT_DELAY];
    const int delayMs = delay >= 0.0F && delay <= 500.0F ? (int)delay : p->delayMs;
    if (suppressor != p->suppressor && zspvEchoSetSuppressor(p->echo, suppressor) == zspStsNoErr)
        p->suppressor = suppressor;
    if (delayMs != p->delayMs && zspvEchoSetDelay(p->echo, delayMs) == zspStsNoErr)
        p->delayMs = delayMs;
}

/* A step that failed has passed the microphone through, so its status is no concern here. */
static void cancel(void* plugin, int16_t blocks[][STREAM_LONGEST_BLOCK], int16_t* output)
{
    const Plugin* p = plugin;
    zspvEchoProcess(p->echo, blocks[1], blocks[0], output, p->stream.block);
}

static void run(LADSPA_Handle handle, unsigned long count)
{
    Plugin* p = handle;
    const LADSPA_Data* const inputs[] = {p->ports[PORT_MIC], p->ports[PORT_FAR]};
    ZspvEchoMetrics metrics = {.structSize = sizeof metrics};
    int32_t delay = 0;
    updateControls(p);
    streamRun(&p->stream, inputs, p->ports[PORT_OUTPUT], count, cancel, p);

    zspvEchoGetDelay(p->echo, &delay);
    zspvEchoGetMetrics(p->echo, &metrics);
    if (p->ports[PORT_LATENCY]) *p->ports[PORT_LATENCY] = (LADSPA_Data)(p->stream.block + delay);
    if (p->ports[PORT_ECHO_LOSS]) *p->ports[PORT_ECHO_LOSS] = metrics.echoLossDb;
}

static const LADSPA_PortDescriptor kDescriptors[PORTS] = {
    LADSPA_PORT_INPUT | LADSPA_PORT_CONTROL,  LADSPA_PORT_INPUT | LADSPA_PORT_CONTROL,
    LADSPA_PORT_OUTPUT | LADSPA_PORT_CONTROL, LADSPA_PORT_OUTPUT | LADSPA_PORT_CONTROL,
    LADSPA_PORT_INPUT | LADSPA_PORT_AUDIO,    LADSPA_PORT_INPUT | LADSPA_PORT_AUDIO,
    LADSPA_PORT_OUTPUT | LADSPA_PORT_AUDIO,
};

static const char* const kNames[PORTS] = {
    "Suppressor", "Far end leads by (ms)", "latency", "Echo loss (dB)",
    "Microphone", "Far end (loudspeaker)", "Output",
};

static const LADSPA_PortRangeHint kHints[PORTS] = {
    {LADSPA_HINT_TOGGLED | LADSPA_HINT_DEFAULT_0, 0, 1},
    {LADSPA_HINT_BOUNDED_BELOW | LADSPA_HINT_BOUNDED_ABOVE | LADSPA_HINT_DEFAULT_0, 0, 500},
    {0, 0, 0},
    {0, 0, 0},
    {0, 0, 0},
    {0, 0, 0},
    {0, 0, 0},
};

#define PLUGIN_ID 168
#define PLUGIN_LABEL "zspsc_aec"
#define PLUGIN_NAME "Echo canceller (microphone, far end)"
#include "plugins/ladspa/descriptor.h"
