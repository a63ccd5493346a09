/* LADSPA plug-in: automatic level control of one channel, for SoX, FFmpeg, PipeWire and every other
 * host that loads LADSPA.
 *
 * The level control works on blocks of eight 16-bit samples, by which the output is late. The
 * plug-in tells the host so through its "latency" port. */

#include "plugins/ladspa/stream.h"

#include <zspsc.h>

#include <stdlib.h>

enum { BLOCK = 8 };

enum Port { PORT_MAX_GAIN, PORT_TARGET, PORT_PEAK, PORT_LATENCY, PORT_INPUT, PORT_OUTPUT, PORTS };

typedef struct Plugin {
    LADSPA_Data* ports[PORTS];
    LADSPA_Data maxGain, target, peak; /* as last given to the level control */
    ZspAlcState_G169 state;
    Stream stream;
} Plugin;

static LADSPA_Handle instantiate(const LADSPA_Descriptor* descriptor, unsigned long sampleRate)
{
    (void)descriptor;
    (void)sampleRate;
    Plugin* p = calloc(1, sizeof *p);
    if (p && !streamOpen(&p->stream, 1, BLOCK)) {
        free(p);
        return NULL;
    }
    return p;
}

static void activate(LADSPA_Handle handle)
{
    Plugin* p = handle;
    zspsALCInit_G169_16s(&p->state);
    p->maxGain = p->target = p->peak = -1; /* set by the first run */
    streamReset(&p->stream);
}

/* Hands changed controls on; values outside of the range keep the last ones. */
static void updateControls(Plugin* p)
{
    const LADSPA_Data maxGain = *p->ports[PORT_MAX_GAIN];
    const LADSPA_Data target = *p->ports[PORT_TARGET];
    const LADSPA_Data peak = *p->ports[PORT_PEAK];
    if (maxGain != p->maxGain && zspsALCSetGain_G169_16s(maxGain, &p->state) == zspStsNoErr)
        p->maxGain = maxGain;
    if ((target != p->target || peak != p->peak) &&
        zspsALCSetLevel_G169_16s(-target, -peak, &p->state) == zspStsNoErr) {
        p->target = target;
        p->peak = peak;
    }
}

static void level(void* plugin, int16_t blocks[][STREAM_LONGEST_BLOCK], int16_t* output)
{
    zspsALC_G169_16s(blocks[0], output, BLOCK, &((Plugin*)plugin)->state);
}

static void run(LADSPA_Handle handle, unsigned long count)
{
    Plugin* p = handle;
    const LADSPA_Data* input = p->ports[PORT_INPUT];
    updateControls(p);
    streamRun(&p->stream, &input, p->ports[PORT_OUTPUT], count, level, p);
    if (p->ports[PORT_LATENCY]) *p->ports[PORT_LATENCY] = BLOCK;
}

static void cleanup(LADSPA_Handle handle)
{
    streamClose(&((Plugin*)handle)->stream);
    free(handle);
}

static const LADSPA_PortDescriptor kDescriptors[PORTS] = {
    LADSPA_PORT_INPUT | LADSPA_PORT_CONTROL, LADSPA_PORT_INPUT | LADSPA_PORT_CONTROL,
    LADSPA_PORT_INPUT | LADSPA_PORT_CONTROL, LADSPA_PORT_OUTPUT | LADSPA_PORT_CONTROL,
    LADSPA_PORT_INPUT | LADSPA_PORT_AUDIO,   LADSPA_PORT_OUTPUT | LADSPA_PORT_AUDIO,
};

static const char* const kNames[PORTS] = {
    "Maximum gain (dB)", "Target level (dBFS)", "Peak limit (dBFS)", "latency", "Input", "Output",
};

/* The defaults that LADSPA can express lie near those of the level control. */
static const LADSPA_PortRangeHint kHints[PORTS] = {
    {LADSPA_HINT_BOUNDED_BELOW | LADSPA_HINT_BOUNDED_ABOVE | LADSPA_HINT_DEFAULT_MIDDLE, 0, 24},
    {LADSPA_HINT_BOUNDED_BELOW | LADSPA_HINT_BOUNDED_ABOVE | LADSPA_HINT_DEFAULT_MIDDLE, -52, 0},
    {LADSPA_HINT_BOUNDED_BELOW | LADSPA_HINT_BOUNDED_ABOVE | LADSPA_HINT_DEFAULT_MAXIMUM, -40, 0},
    {0, 0, 0},
    {0, 0, 0},
    {0, 0, 0},
};

#define PLUGIN_ID 169
#define PLUGIN_LABEL "zspsc_alc"
#define PLUGIN_NAME "Automatic level control (ITU-T G.169)"
#include "plugins/ladspa/descriptor.h"
