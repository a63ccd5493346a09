/* A C99 program with nothing but the public header and the shared library of the voice layer. */

#include "zspvoice.h"

#include "tests/package/abi/places.h"

#include <string.h>

static const struct Place kPlaces[] = {
#include "tests/package/abi/voice_records.inc"
};

/* A packet of 20 ms, taken apart and put together again. */
static int packet(void)
{
    const ZspvCodec* codec = zspvCodecByName("G722", 8000);
    const ZspvParams params = {.structSize = sizeof params};
    ZspvPacketInfo info = {.structSize = sizeof info};
    ZspvFrame frames[2];
    uint8_t payload[160], bytes[160], again[160];
    int32_t count = 0;
    memset(payload, 0x5A, sizeof payload);
    if (zspvUnpack(codec, &params, payload, sizeof payload, bytes, sizeof bytes, frames, 2, &count,
                   NULL) != zspStsNoErr)
        return 0;
    if (zspvPack(codec, &params, bytes, frames, count, zspvFrameNoData, ZSPV_NO_REQUEST, again,
                 sizeof again, &info) != zspStsNoErr)
        return 0;
    return memcmp(payload, again, sizeof payload) == 0 && info.ticks == 160 && info.marker == 1;
}

int main(void)
{
    if (!packet()) return 1;
    if (sizeof(ZspvFrameKind) != 4 || sizeof(ZspvSwitch) != 4) return 2;
    if (changedPlaces(kPlaces, sizeof kPlaces / sizeof kPlaces[0])) return 3;
    return zspvGetVersion() !=
           ZSPVOICE_VERSION_MAJOR * 10000 + ZSPVOICE_VERSION_MINOR * 100 + ZSPVOICE_VERSION_PATCH;
}
