// The dispatch table: one pointer per export in writable data, filled by the linker and never
// written afterwards. stubs.S jumps through it.

#include "core/entries.hpp"
#include "core/leaving.hpp"

extern "C" {
#define ZSP_EXPORT(name)                                                                           \
    constinit decltype(&::name) zspSlot_##name = &zsp::Leaving<&zsp::entry::name>::call;
#define ZSP_EXPORT_AS(name, shared)                                                                \
    constinit decltype(&::name) zspSlot_##name = &zsp::Leaving<&zsp::entry::shared>::call;
#include "core/exports.inc"
}
