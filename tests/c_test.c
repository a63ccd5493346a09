/* A C99 program with nothing but the public header and the shared library. */

#include "zspsc.h"

#include <string.h>

int main(void)
{
    const int16_t a[2] = {16384, -32768};
    const int16_t b[2] = {16384, -32768};
    int16_t product[2] = {0, 0};
    if (zspsMul_NR_16s_Sfs(a, b, product, 2, 15) != zspStsNoErr) return 1;
    if (product[0] != 8192 || product[1] != 32767) return 2;
    if (sizeof(ZspStatus) != 4 || sizeof(Zsp32fc) != 8 || sizeof(Zsp32sc) != 8) return 3;
    return strcmp(zspscGetLibVersion()->versionText, "8.1.1 (r42291)") != 0;
}
