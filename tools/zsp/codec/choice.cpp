// Finds the codec by option, extension or header, and its row by the bit rate.

#include "tools/zsp/codec/choice.hpp"

#include "tools/zsp/cli/values.hpp"
#include "tools/zsp/codec/frame_container.hpp"
#include "tools/zsp/io/audio_format.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace zsp::host {

namespace {

template <typename Predicate>
std::vector<const ZspvCodec*> selected(Predicate predicate)
{
    std::vector<const ZspvCodec*> found;
    for (const ZspvCodec* codec : allCodecs())
        if (predicate(*codec)) found.push_back(codec);
    return found;
}

/// Of families with a row per bit rate, G.726: the rate that the old G.721 had.
constexpr std::int32_t kUsualRate = 32000;

bool has(const ZspvCodec& codec, std::int32_t bitRate)
{
    const std::int32_t* end = codec.bitRates + codec.bitRateCount;
    return std::find(codec.bitRates, end, bitRate) != end;
}

} // namespace

std::vector<const ZspvCodec*> allCodecs()
{
    std::vector<const ZspvCodec*> codecs;
    for (std::int32_t i = 0; i < zspvCodecCount(); ++i)
        codecs.push_back(zspvCodecByIndex(i));
    return codecs;
}

bool isAnnexA(const std::string& name)
{
    return lowerCase(name) == "g729a";
}

std::vector<const ZspvCodec*> codecsNamed(const std::string& name)
{
    const std::string wanted = isAnnexA(name) ? "g729" : lowerCase(name);
    return selected([&wanted](const ZspvCodec& codec) {
        return wanted == lowerCase(codec.family) || wanted == lowerCase(codec.rtpName);
    });
}

std::vector<const ZspvCodec*> codecsByExtension(const std::string& path)
{
    const ContainerKind* container = containerByName(path);
    const std::string extension =
        container ? "." + std::string(container->family) : lowerExtension(path);
    return selected([&extension](const ZspvCodec& codec) {
        return extension == "." + std::string(codec.fileExtension);
    });
}

std::vector<std::string> namesOf(const std::string& family)
{
    std::vector<std::string> names = {family};
    if (isAnnexA(family + "a")) names.push_back(family + "a");
    return names;
}

std::string familyNames()
{
    std::vector<std::string> names;
    for (const ZspvCodec* codec : allCodecs())
        for (const std::string& name : namesOf(codec->family))
            if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
    return listed(names);
}

std::int32_t bitRateOf(const std::string& text)
{
    double value = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const std::string unit = lowerCase(stop);
    const bool kilo = unit == "k" || unit == "kbit/s" || unit == "kbps";
    if (error != std::errc() || !(kilo || unit.empty()) || !(value > 0 && value < 1e6)) return 0;
    return static_cast<std::int32_t>(std::lround(kilo || value < 1000 ? value * 1000 : value));
}

std::string rateNames(const std::vector<const ZspvCodec*>& codecs)
{
    std::vector<std::int32_t> rates;
    for (const ZspvCodec* codec : codecs)
        rates.insert(rates.end(), codec->bitRates, codec->bitRates + codec->bitRateCount);
    std::sort(rates.begin(), rates.end());
    std::vector<std::string> names;
    for (const std::int32_t rate : rates)
        names.push_back(format("%g", rate / 1000.0));
    return listed(names) + " kbit/s";
}

CodecSetting withRate(const std::vector<const ZspvCodec*>& codecs, std::int32_t bitRate)
{
    for (const ZspvCodec* codec : codecs)
        if (has(*codec, bitRate)) return {.codec = codec, .bitRate = bitRate};
    if (bitRate != 0)
        throw UsageError(
            format("--rate: %s has no %g kbit/s, but ", codecs[0]->family, bitRate / 1000.0) +
            rateNames(codecs));
    if (codecs.size() > 1)
        for (const ZspvCodec* codec : codecs)
            if (has(*codec, kUsualRate)) return {.codec = codec, .bitRate = kUsualRate};
    return {.codec = codecs[0], .bitRate = codecs[0]->bitRates[0]};
}

} // namespace zsp::host
