// zsp codecs: what there is to encode and decode with.

#include "tools/zsp/cli/values.hpp"
#include "tools/zsp/codec/coder.hpp"
#include "tools/zsp/commands/commands.hpp"
#include "tools/zsp/io/text.hpp"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace zsp::host {

namespace {

/// Rows of one family stand together, as one line.
std::vector<std::vector<const ZspvCodec*>> families()
{
    std::vector<std::vector<const ZspvCodec*>> result;
    for (const ZspvCodec* codec : allCodecs())
        if (result.empty() || std::string(result.back()[0]->family) != codec->family)
            result.push_back({codec});
        else
            result.back().push_back(codec);
    return result;
}

std::string frameOf(const ZspvCodec& codec)
{
    const bool any = codec.stepSamples < codec.frameSamples;
    return any ? "any" : format("%g ms", 1000.0 * codec.frameSamples / codec.sampleRate);
}

void listCodecs(bool names)
{
    if (names) {
        for (const auto& rows : families())
            for (const std::string& name : namesOf(rows[0]->family))
                std::printf("%s\n", name.c_str());
        return;
    }
    std::printf("codec     sampled  bit rates, kbit/s  frame  file       standard\n");
    for (const auto& rows : families()) {
        const ZspvCodec& codec = *rows[0];
        std::string rates = rateNames(rows);
        rates.erase(rates.find(" kbit/s"));
        for (const std::string& name : namesOf(codec.family))
            std::printf("%-9s %2g kHz   %-18s %-6s %-10s %s%s\n", name.c_str(),
                        codec.sampleRate / 1000.0, rates.c_str(), frameOf(codec).c_str(),
                        ("." + std::string(codec.fileExtension)).c_str(), codec.standard,
                        isAnnexA(name) ? " Annex A" : "");
    }
    std::printf("\nRTP names, as --codec takes them as well:");
    std::size_t column = 80;
    for (const ZspvCodec* codec : allCodecs()) {
        const std::string name = codec->rtpName;
        if (column + name.size() + 2 > 78) {
            std::printf("\n ");
            column = 1;
        }
        std::printf(" %s", name.c_str());
        column += name.size() + 1;
    }
    std::printf("\n");
}

} // namespace

Command codecsCommand()
{
    auto names = std::make_shared<bool>(false);
    return {.name = "codecs",
            .summary = "List the codecs with rates, frame, file extension and standard",
            .options = {{"--names", 0, "", "The names alone, one a line", takeSwitch(*names)}},
            .run = [names](const Files&) {
                requireProcessor();
                listCodecs(*names);
            }};
}

} // namespace zsp::host
