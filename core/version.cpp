// The version record, in read-only data.

#include "core/entries.hpp"

namespace zsp::entry {

namespace {

constexpr ZspLibraryVersion kVersion = {
    .major = 8,
    .minor = 1,
    .update = 1,
    .revision = 42291,
    .cpuTag = {'l', '9', '\0', '\0'},
    .name = "zspSC AVX2 (l9)",
    .versionText = "8.1.1 (r42291)",
    .buildDate = "Apr 10 2014",
};

} // namespace

const ZspLibraryVersion* zspscGetLibVersion()
{
    return &kVersion;
}

} // namespace zsp::entry
