// zsp info: which library this is and what the processor can do.

#include "tools/zsp/cli/values.hpp"
#include "tools/zsp/commands/commands.hpp"

#include "zspcore.h"
#include "zspvoice.h"

#include <array>
#include <cstdio>
#include <memory>
#include <span>

namespace zsp::host {

namespace {

#define ZSP_EXPORT(name) #name,
#define ZSP_EXPORT_AS(name, shared) #name,
#define ZSPV_EXPORT(name) #name,
constexpr auto kExports = std::to_array<const char*>({
#include "core/exports.inc"
});
constexpr auto kVoiceExports = std::to_array<const char*>({
#include "voice/exports.inc"
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

void printInfo(bool exports)
{
    const ZspLibraryVersion& version = *zspscGetLibVersion();
    std::printf("library    %s, version %s of %s\n", version.name, version.versionText,
                version.buildDate);
    std::printf("           %d.%d.%d, revision %d, processor build \"%.4s\"\n", version.major,
                version.minor, version.update, version.revision, version.cpuTag);

    std::printf("voice      libzspvoice %d.%d.%d\n", ZSPVOICE_VERSION_MAJOR, ZSPVOICE_VERSION_MINOR,
                ZSPVOICE_VERSION_PATCH);

    const std::uint64_t features = zspGetEnabledCpuFeatures();
    std::printf("processor ");
    for (const Feature& feature : kFeatures)
        if (features & feature.bit) std::printf(" %s", feature.name);
    std::printf("\n");
    if (!processorSuffices())
        std::printf("           AVX2, FMA or BMI2 is missing: the library cannot compute here\n");

    std::int32_t cache = 0;
    if (zspGetMaxCacheSizeB(&cache) == 0)
        std::printf("cache      %d KiB\n", cache / 1024);
    else
        std::printf("cache      size unknown\n");

    const auto list = [exports](const char* library, std::span<const char* const> names) {
        std::printf("exports    %zu of %s\n", names.size(), library);
        for (const char* name : names.first(exports ? names.size() : 0))
            std::printf("           %s\n", name);
    };
    list("libzspsc", kExports);
    list("libzspvoice", kVoiceExports);
}

} // namespace

Command infoCommand()
{
    const auto exports = std::make_shared<bool>(false);
    return {.name = "info",
            .summary = "Library version, processor and exports",
            .options = {{"--exports", 0, "", "List the exported functions", takeSwitch(*exports)}},
            .run = [exports](const Files&) { printInfo(*exports); }};
}

} // namespace zsp::host
