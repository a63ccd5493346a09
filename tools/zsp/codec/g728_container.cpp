// Reads and writes G.728 with its losses.

#include "tools/zsp/codec/g728_container.hpp"

#include "tools/zsp/io/audio_format.hpp"
#include "tools/zsp/io/failure.hpp"

#include <algorithm>
#include <string_view>

namespace zsp::host {

namespace {

constexpr std::string_view kBeginning = "#!G728\n";
constexpr std::size_t kFrame = 5;
constexpr std::uint8_t kLost = 255;

} // namespace

bool hasG728ContainerName(const std::string& path)
{
    return lowerExtension(path) == ".g728f";
}

bool isG728Container(const CodecSetting& setting, const std::string& path)
{
    return std::string_view(setting.codec->family) == "g728" && hasG728ContainerName(path);
}

std::vector<std::uint8_t> g728Contained(std::span<const std::uint8_t> frames, bool isFirst)
{
    std::vector<std::uint8_t> bytes;
    if (isFirst) bytes.assign(kBeginning.begin(), kBeginning.end());
    for (; frames.size() >= kFrame; frames = frames.subspan(kFrame)) {
        bytes.push_back(kFrame);
        bytes.insert(bytes.end(), frames.begin(), frames.begin() + kFrame);
    }
    return bytes;
}

void G728ContainerReader::take(std::span<const std::uint8_t> bytes,
                               const std::function<void(std::span<const std::uint8_t>)>& frame)
{
    pending_.insert(pending_.end(), bytes.begin(), bytes.end());
    std::size_t at = 0;
    if (!hasBegun_) {
        if (pending_.size() < kBeginning.size()) return;
        if (!std::equal(kBeginning.begin(), kBeginning.end(), pending_.begin()))
            throw Failure(path_, "does not begin with #!G728");
        hasBegun_ = true;
        at = kBeginning.size();
    }
    while (at < pending_.size()) {
        const std::uint8_t length = pending_[at];
        if (length != kFrame && length != kLost)
            throw Failure(path_, "frame " + std::to_string(frames_ + 1) + " has the length " +
                                     std::to_string(length) + ", neither 5 nor 255");
        const std::size_t count = length == kLost ? 0 : kFrame;
        if (pending_.size() - at < 1 + count) break;
        frame(std::span(pending_).subspan(at + 1, count));
        ++frames_;
        at += 1 + count;
    }
    pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(at));
}

void G728ContainerReader::finish() const
{
    if (!hasBegun_ || !pending_.empty()) throw Failure(path_, "ends inside of a frame");
}

} // namespace zsp::host
