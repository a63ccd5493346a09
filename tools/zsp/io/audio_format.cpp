// The table of kinds, extensions and libsndfile's formats.

#include "tools/zsp/io/audio_format.hpp"

#include "tools/zsp/io/text.hpp"

#include <array>
#include <filesystem>
#include <sndfile.h>

namespace zsp::host {

namespace {

constexpr int kRawWords = SF_FORMAT_RAW | SF_FORMAT_PCM_16 | SF_ENDIAN_LITTLE;
constexpr Encoding kLinear = Encoding::linear;

constexpr std::array kFormats = std::to_array<AudioFormat>({
    {"wav", ".wav .wave ", SF_FORMAT_WAV | SF_FORMAT_PCM_16, kLinear, false},
    {"au", ".au .snd ", SF_FORMAT_AU | SF_FORMAT_PCM_16, kLinear, false},
    {"flac", ".flac ", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, kLinear, false},
    {"aiff", ".aiff .aif ", SF_FORMAT_AIFF | SF_FORMAT_PCM_16, kLinear, false},
    {"caf", ".caf ", SF_FORMAT_CAF | SF_FORMAT_PCM_16, kLinear, false},
    {"w64", ".w64 ", SF_FORMAT_W64 | SF_FORMAT_PCM_16, kLinear, false},
    {"rf64", ".rf64 ", SF_FORMAT_RF64 | SF_FORMAT_PCM_16, kLinear, false},
    {"ogg", ".ogg .oga ", SF_FORMAT_OGG | SF_FORMAT_VORBIS, kLinear, false},
    {"raw", ".raw .pcm .sln ", kRawWords, kLinear, true},
    {"ul", ".ul .ulaw ", SF_FORMAT_RAW | SF_FORMAT_ULAW, Encoding::muLaw, true},
    {"al", ".al .alaw ", SF_FORMAT_RAW | SF_FORMAT_ALAW, Encoding::aLaw, true},
});

} // namespace

std::string_view nameOf(Encoding encoding)
{
    switch (encoding) {
    case Encoding::muLaw:
        return "mu-law";
    case Encoding::aLaw:
        return "A-law";
    default:
        return "16-bit linear";
    }
}

std::string lowerExtension(const std::string& path)
{
    return lowerCase(std::filesystem::path(path).extension().string());
}

const AudioFormat* audioFormatByName(const std::string& name)
{
    for (const AudioFormat& format : kFormats)
        if (lowerCase(name) == format.name) return &format;
    return nullptr;
}

const AudioFormat* audioFormatByExtension(const std::string& path)
{
    const std::string extension = lowerExtension(path) + " ";
    if (extension == " ") return nullptr;
    for (const AudioFormat& format : kFormats)
        if (std::string_view(format.extensions).find(extension) != std::string_view::npos)
            return &format;
    return nullptr;
}

std::string audioFormatNames()
{
    std::vector<std::string> names;
    for (const AudioFormat& format : kFormats)
        names.emplace_back(format.name);
    return listed(names);
}

std::string audioFormatExtensions()
{
    std::string names;
    for (const AudioFormat& format : kFormats) {
        const std::string_view all = format.extensions;
        names += (names.empty() ? "" : " ") + std::string(all.substr(0, all.find(' ')));
    }
    return names;
}

} // namespace zsp::host
