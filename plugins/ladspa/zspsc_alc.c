/* LADSPA plug-in: automatic level control of one channel, for SoX, FFmpeg, PipeWire and every other
 * host that loads LADSPA.
 *
 * The level control works on blocks of eight 16-bit samples while the host chooses its own block
 * length: samples pass through a block of eight, which delays them by eight. The plug-in tells the
 * host so through its "latency" port. */

#include <ladspa.h>
#include <zspsc.h>

#include <math.h>
#include <stdlib.h>
#include <string.h>

enum { BLOCK = 8 };

enum Port { PORT_MAX_GAIN, PORT_TARGET, PORT_PEAK, PORT_LATENCY, PORT_INPUT, PORT_OUTPUT, PORTS };

typedef struct Plugin {
    LADSPA_Data* ports[PORTS];
    LADSPA_Data maxGain, target, peak; /* as last given to the level control */
    ZspAlcState_G169 state;
    int16_t collected[BLOCK]; /* input that waits for a whole block */
    int16_t levelled[BLOCK];  /* output of the last whole block */
    unsigned filled;
} Plugin;

static LADSPA_Handle instantiate(const LADSPA_Descriptor* descriptor, unsigned long sampleRate)
{
    (void)descriptor;
    (void)sampleRate;
    return calloc(1, sizeof(Plugin));
}

static void connectPort(LADSPA_Handle handle, unsigned long port, LADSPA_Data* location)
{
    ((Plugin*)handle)->ports[port] = location;
}

static void activate(LADSPA_Handle handle)
{
    Plugin* p = handle;
    zspsALCInit_G169_16s(&p->state);
    p->maxGain = p->target = p->peak = -1; /* set by the first run */
    memset(p->collected, 0, sizeof p->collected);
    memset(p->levelled, 0, sizeof p->levelled);
    p->filled = 0;
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

static int16_t toSample(LADSPA_Data value)
{
    const float scaled = value * 32768.0F;
    if (!(scaled > -32768.0F)) return -32768; /* NaN as well */
    return (int16_t)lrintf(fminf(scaled, 32767.0F));
}

static void run(LADSPA_Handle handle, unsigned long count)
{
    Plugin* p = handle;
    const LADSPA_Data* input = p->ports[PORT_INPUT];
    LADSPA_Data* output = p->ports[PORT_OUTPUT];
    updateControls(p);
    for (unsigned long i = 0; i < count; ++i) {
        p->collected[p->filled] = toSample(input[i]); /* before the write: both may be one buffer */
        output[i] = (LADSPA_Data)p->levelled[p->filled] / 32768.0F;
        if (++p->filled == BLOCK) {
            zspsALC_G169_16s(p->collected, p->levelled, BLOCK, &p->state);
            p->filled = 0;
        }
    }
    if (p->ports[PORT_LATENCY]) *p->ports[PORT_LATENCY] = BLOCK;
}

static void cleanup(LADSPA_Handle handle)
{
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

static const LADSPA_Descriptor kPlugin = {
    .UniqueID = 169, /* in the range that LADSPA leaves for plug-ins in development */
    .Label = "zspsc_alc",
    .Properties = LADSPA_PROPERTY_HARD_RT_CAPABLE,
    .Name = "Automatic level control (ITU-T G.169)",
    .Maker = "The zspsc authors",
    .Copyright = "MIT",
    .PortCount = PORTS,
    .PortDescriptors = kDescriptors,
    .PortNames = kNames,
    .PortRangeHints = kHints,
    .instantiate = instantiate,
    .connect_port = connectPort,
    .activate = activate,
    .run = run,
    .cleanup = cleanup,
};

__attribute__((visibility("default"))) const LADSPA_Descriptor*
ladspa_descriptor(unsigned long index)
{
    return index == 0 ? &kPlugin : NULL;
}
