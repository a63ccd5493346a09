// The options of zsp encode and zsp decode, and which codecs have them.

#include "tools/zsp/commands/coding_options.hpp"

#include "tools/zsp/codec/coder.hpp"

#include <string>

namespace zsp::host {

int wordBits(const CodingOptions& options, const CodecSetting& setting)
{
    const int bits = g726Bits(setting);
    if (options.unpacked && bits == 0)
        throw UsageError("--unpacked: is for G.726, not for " +
                         std::string(setting.codec->rtpName));
    return bits;
}

bool isFamily(const CodecSetting& setting, std::string_view name)
{
    return setting.codec->family == name;
}

CodecSetting encoderSetting(const CodingOptions& options, CodecSetting setting)
{
    if (options.dtx && (setting.codec->flags & zspvCodecDtx) == 0)
        throw UsageError(std::string("--dtx: ") + setting.codec->rtpName +
                         " has no silence compression of its own");
    if (options.highPass && !isFamily(setting, "g7231"))
        throw UsageError(std::string("--highpass: is for G.723.1, not for ") +
                         setting.codec->rtpName);
    setting.dtx = options.dtx;
    setting.highPass = options.highPass.value_or(true);
    return setting;
}

CodecSetting decoderSetting(const CodingOptions& options, CodecSetting setting)
{
    if (options.postFilter && !isFamily(setting, "g728") && !isFamily(setting, "g729") &&
        !isFamily(setting, "g7231"))
        throw UsageError(std::string("--postfilter: is for G.723.1, G.728 and G.729, not for ") +
                         setting.codec->rtpName);
    setting.postFilter = options.postFilter.value_or(true);
    return setting;
}

Packing packingOf(const CodingOptions& options, const CodecSetting& setting)
{
    if (options.unpacked) return Packing::unpacked;
    return highBitsFirst(*setting.codec) ? Packing::aal2 : Packing::rfc3551;
}

std::vector<Option> codingOptions(const std::shared_ptr<CodingOptions>& options)
{
    return {{"--codec", 'c', "NAME",
             "A codec as zsp codecs lists it; without this the extension of the coded file tells",
             takeText(options->wish.name)},
            {"--rate", 'r', "RATE", "Bit rate, as 24, 24k or 24000; zsp codecs lists them",
             [options](const std::string& text) {
                 options->wish.bitRate = bitRateOf(text);
                 if (options->wish.bitRate == 0)
                     throw UsageError(text + " is no bit rate, as 24, 24k or 24000");
             }},
            formatOption(options->format),
            {"--unpacked", 'u', "", "G.726: one code word per byte, as in the ITU's test sequences",
             takeSwitch(options->unpacked)}};
}

} // namespace zsp::host
