// Links a sound or puts its beginning into the page.

#include "tools/zsp/report/sound_clip.hpp"

#include "tools/zsp/io/audio_format.hpp"
#include "tools/zsp/io/sample_header.hpp"
#include "tools/zsp/io/text.hpp"
#include "tools/zsp/report/image.hpp"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>

namespace zsp::host {

namespace {

constexpr std::size_t kSeconds = 30;

bool browsersPlay(const std::string& path)
{
    constexpr std::array kKinds = {".wav", ".flac", ".ogg", ".oga", ".opus", ".mp3"};
    return std::find(kKinds.begin(), kKinds.end(), lowerExtension(path)) != kKinds.end();
}

/// As a path in a URL.
std::string percentEncoded(const std::string& path)
{
    constexpr std::string_view kPlain = "-._~/";
    std::string text;
    for (const char c : path) {
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        const bool plain =
            letter || (c >= '0' && c <= '9') || kPlain.find(c) != std::string_view::npos;
        text += plain ? std::string(1, c) : format("%%%02X", static_cast<unsigned char>(c));
    }
    return text;
}

} // namespace

SoundClip::SoundClip(std::string path, int rate)
    : path_(std::move(path)), rate_(rate), linked_(browsersPlay(path_))
{
}

void SoundClip::add(std::span<const std::int16_t> samples)
{
    if (linked_) return;
    const std::size_t room = kSeconds * static_cast<std::size_t>(rate_) - samples_.size();
    cut_ = cut_ || samples.size() > room;
    samples = samples.first(std::min(samples.size(), room));
    samples_.insert(samples_.end(), samples.begin(), samples.end());
}

Report::Player SoundClip::player(const std::string& label, const std::string& reportPath) const
{
    namespace fs = std::filesystem;
    if (linked_) {
        std::error_code error;
        const fs::path target = fs::absolute(path_, error).lexically_normal();
        const fs::path from = fs::absolute(reportPath, error).lexically_normal().parent_path();
        return {percentEncoded(target.lexically_relative(from).string()), label};
    }
    std::vector<std::uint8_t> file;
    for (const char c : wavHeader(1, rate_, 16, static_cast<std::uint32_t>(2 * samples_.size())))
        file.push_back(static_cast<std::uint8_t>(c));
    for (const std::int16_t x : samples_) {
        file.push_back(static_cast<std::uint8_t>(x & 0xff));
        file.push_back(static_cast<std::uint8_t>(x >> 8 & 0xff));
    }
    return {dataUri("audio/wav", file), label + (cut_ ? format(", first %zu s", kSeconds) : "")};
}

} // namespace zsp::host
