// The implementations behind the exports: one function per export, in zsp::entry, with the
// signature that the public header declares.
#pragma once

#include "zspsc.h"

namespace zsp::entry {

#define ZSP_EXPORT(name) decltype(::name) name;
#define ZSP_EXPORT_AS(name, shared) static_assert(sizeof(&::name) != 0);
#include "core/exports.inc"

} // namespace zsp::entry
