/* A C99 program with nothing but the public header and the shared library. */

#include "zspsc.h"

#include "tests/package/abi/places.h"

#include <string.h>

static const struct Place kPlaces[] = {
#include "tests/package/abi/records.inc"
};

/* The header's version is that of the library beside it. */
static int otherVersion(const ZspLibraryVersion* v)
{
    return v->major != ZSPSC_VERSION_MAJOR || v->minor != ZSPSC_VERSION_MINOR ||
           v->update != ZSPSC_VERSION_PATCH || strcmp(v->versionText, "8.1.1 (r42291)") != 0;
}

int main(void)
{
    const int16_t a[2] = {16384, -32768};
    const int16_t b[2] = {16384, -32768};
    int16_t product[2] = {0, 0};
    if (zspsMul_NR_16s_Sfs(a, b, product, 2, 15) != zspStsNoErr) return 1;
    if (product[0] != 8192 || product[1] != 32767) return 2;
    if (sizeof(ZspStatus) != 4 || changedPlaces(kPlaces, sizeof kPlaces / sizeof kPlaces[0]))
        return 3;
    return otherVersion(zspscGetLibVersion()) ? 4 : 0;
}
