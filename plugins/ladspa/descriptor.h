/* What a host asks a plug-in for. Included at the end of a plug-in's source, which defines Plugin,
 * with its ports, the functions and tables named here, PLUGIN_ID, PLUGIN_LABEL and
 * PLUGIN_NAME. */
#ifndef DESCRIPTOR_H
#define DESCRIPTOR_H

static void connectPort(LADSPA_Handle handle, unsigned long port, LADSPA_Data* location)
{
    ((Plugin*)handle)->ports[port] = location;
}

static const LADSPA_Descriptor kPlugin = {
    .UniqueID = PLUGIN_ID, /* in the range that LADSPA leaves for plug-ins in development */
    .Label = PLUGIN_LABEL,
    .Properties = LADSPA_PROPERTY_HARD_RT_CAPABLE,
    .Name = PLUGIN_NAME,
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

#endif
