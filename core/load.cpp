// The load routine: asks the companion library for the processor features once, at process attach.
//
// The flag is a record for somebody who inspects the process with a debugger. The library itself
// never reads it, which is why it is volatile. Loading succeeds whatever the mask says.

#include "zspcore.h"

#include <cstdint>

namespace {

constexpr std::uint64_t kAvxFamily = ZSP_CPU_AVX | ZSP_CPU_AVX2;

volatile bool avxFamilyEnabled = false;

void onProcessAttach() noexcept
{
    avxFamilyEnabled = (zspGetEnabledCpuFeatures() & kAvxFamily) == kAvxFamily;
}

} // namespace

#ifdef _WIN32

#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID)
{
    if (reason == DLL_PROCESS_ATTACH) onProcessAttach();
    return TRUE;
}

#else

namespace {

__attribute__((constructor)) void load() noexcept
{
    onProcessAttach();
}

} // namespace

extern "C" {
/// What the stubs name, so that a static link keeps this file.
extern const char zspLoadAnchor;
const char zspLoadAnchor = 0;
}

#endif
