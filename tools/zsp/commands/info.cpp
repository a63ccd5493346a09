// zsp info: which library this is and what the processor can do.

#include "tools/zsp/commands/commands.hpp"

#include "zspcore.h"
#include "zspsc.h"

#include <array>
#include <cstdio>

namespace zsp::host {

namespace {

#define ZSP_EXPORT(name) #name,
#define ZSP_EXPORT_AS(name, shared) #name,
constexpr auto kExports = std::to_array<const char*>({
#include "core/exports.inc"
});

struct Feature {
    std::uint64_t bit;
    const char* name;
};
constexpr std::array<Feature, 8> kFeatures = {{{ZSP_CPU_SSE2, "SSE2"},
                                               {ZSP_CPU_SSSE3, "SSSE3"},
                                               {ZSP_CPU_SSE41, "SSE4.1"},
                                               {ZSP_CPU_SSE42, "SSE4.2"},
                                               {ZSP_CPU_AVX, "AVX"},
                                               {ZSP_CPU_AVX2, "AVX2"},
                                               {ZSP_CPU_FMA, "FMA"},
                                               {ZSP_CPU_BMI2, "BMI2"}}};

} // namespace

void runInfo(const InfoOptions& options)
{
    const ZspLibraryVersion& version = *zspscGetLibVersion();
    std::printf("library    %s, version %s of %s\n", version.name, version.versionText,
                version.buildDate);
    std::printf("           %d.%d.%d, revision %d, processor build \"%.4s\"\n", version.major,
                version.minor, version.update, version.revision, version.cpuTag);

    const std::uint64_t features = zspGetEnabledCpuFeatures();
    std::printf("processor ");
    for (const Feature& feature : kFeatures)
        if (features & feature.bit) std::printf(" %s", feature.name);
    std::printf("\n");
    if (!(features & ZSP_CPU_AVX2) || !(features & ZSP_CPU_FMA) || !(features & ZSP_CPU_BMI2))
        std::printf("           AVX2, FMA or BMI2 is missing: the library cannot compute here\n");

    std::int32_t cache = 0;
    if (zspGetMaxCacheSizeB(&cache) == 0)
        std::printf("cache      %d KiB\n", cache / 1024);
    else
        std::printf("cache      size unknown\n");

    std::printf("exports    %zu\n", kExports.size());
    if (options.exports)
        for (const char* name : kExports)
            std::printf("           %s\n", name);
}

} // namespace zsp::host
