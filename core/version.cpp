// The version record, in read-only data. Its numbers are the header's, its revision the build's.

#include "core/entries.hpp"

#define ZSP_TEXT_OF(number) #number
#define ZSP_TEXT(number) ZSP_TEXT_OF(number)

namespace zsp::entry {

namespace {

constexpr ZspLibraryVersion kVersion = {
    .major = ZSPSC_VERSION_MAJOR,
    .minor = ZSPSC_VERSION_MINOR,
    .update = ZSPSC_VERSION_PATCH,
    .revision = ZSPSC_REVISION,
    .cpuTag = {'l', '9', '\0', '\0'},
    .name = "zspSC AVX2 (l9)",
    .versionText = ZSP_TEXT(ZSPSC_VERSION_MAJOR) "." ZSP_TEXT(ZSPSC_VERSION_MINOR) "." ZSP_TEXT(
        ZSPSC_VERSION_PATCH) " (r" ZSP_TEXT(ZSPSC_REVISION) ")",
    .buildDate = "Apr 10 2014",
};

} // namespace

const ZspLibraryVersion* zspscGetLibVersion()
{
    return &kVersion;
}

} // namespace zsp::entry
