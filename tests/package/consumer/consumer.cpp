// Uses the installed library from C++.

#include <zspsc.h>

#include <array>
#include <cstdint>
#include <cstdio>

int main()
{
    const std::array<std::int16_t, 1> a{-3}, b{5};
    std::array<std::int16_t, 1> product{};
    const ZspStatus status = zspsMul_NR_16s_Sfs(a.data(), b.data(), product.data(), 1, 1);
    std::printf("%s: %d, %d\n", zspscGetLibVersion()->name, static_cast<int>(status), product[0]);
    return status != zspStsNoErr || product[0] != -7;
}
