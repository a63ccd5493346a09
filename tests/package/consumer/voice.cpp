// Uses the installed voice library from C++, with the blocks beside it.

#include <zspsc.h>
#include <zspvoice.h>

#include <cstdio>

int main()
{
    ZspvParams params{};
    params.structSize = sizeof params;
    const ZspStatus status = zspvFmtpParse("AMR", "octet-align=1", &params);
    std::printf("%s beside zspvoice %d: %d\n", zspscGetLibVersion()->name,
                static_cast<int>(zspvGetVersion()), params.octetAlign);
    return status != zspStsNoErr || params.octetAlign != 1;
}
