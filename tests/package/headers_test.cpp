// The public headers as an older C++ reads them, in either order and twice.

#include "zspvoice.h"

#include "zspsc.h"
#include "zspvoice.h"

#include "zspcore.h"

int main()
{
    return zspvGetVersion() > 0 && zspscGetLibVersion() != 0 ? 0 : 1;
}
