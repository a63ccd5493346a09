/* Uses the installed library from C: prints its version and a rounded product. */

#include <zspsc.h>

#include <stdio.h>

int main(void)
{
    const int16_t a[1] = {-3}, b[1] = {5};
    int16_t product[1] = {0};
    const ZspStatus status = zspsMul_NR_16s_Sfs(a, b, product, 1, 1);
    printf("%s %s: %d, %d\n", zspscGetLibVersion()->name, zspscGetLibVersion()->versionText,
           (int)status, product[0]);
    return status != zspStsNoErr || product[0] != -7;
}
