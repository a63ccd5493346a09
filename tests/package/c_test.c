/* A C99 program with nothing but the public header and the shared library. */

#include "zspsc.h"

#include <stddef.h>
#include <stdio.h>
#include <string.h>

/* Sizes and offsets as promised; the number of those that are not. */
static int changedRecords(void)
{
    static const struct {
        const char* what;
        size_t got, promised;
    } places[] = {
#define RECORD(record, size) {#record, sizeof(record), size},
#define FIELD(record, field, offset) {#record "." #field, offsetof(record, field), offset},
#include "tests/package/abi/records.inc"
    };
    int changed = 0;
    for (size_t i = 0; i < sizeof places / sizeof places[0]; ++i) {
        if (places[i].got == places[i].promised) continue;
        printf("%s: %zu instead of %zu\n", places[i].what, places[i].got, places[i].promised);
        ++changed;
    }
    return changed;
}

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
    if (sizeof(ZspStatus) != 4 || changedRecords() != 0) return 3;
    return otherVersion(zspscGetLibVersion()) ? 4 : 0;
}
