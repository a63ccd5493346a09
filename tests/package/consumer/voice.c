/* Uses the installed voice library from C: the blocks of a payload of 20 ms. */

#include <zspvoice.h>

#include <stdio.h>

int main(void)
{
    const ZspvCodec* codec = zspvCodecByName("pcmu", 8000);
    const uint8_t payload[160] = {0};
    ZspvPayloadInfo info = {.structSize = sizeof info};
    const ZspStatus status = zspvInspect(codec, NULL, payload, sizeof payload, &info);
    printf("zspvoice %d: %d, %d samples\n", (int)zspvGetVersion(), (int)status, (int)info.samples);
    return status != zspStsNoErr || info.samples != 160;
}
