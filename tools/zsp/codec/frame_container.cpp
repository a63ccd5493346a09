// Reads G.728 and G.729 with their losses, and knows which files hold them.

#include "tools/zsp/codec/frame_container.hpp"

#include "tools/zsp/io/audio_format.hpp"
#include "tools/zsp/io/failure.hpp"

#include <algorithm>

namespace zsp::host {

namespace {

constexpr std::uint8_t kLost = 255;

std::span<const ContainerKind> kinds()
{
    static const ContainerKind kKinds[] = {
        {"g728", ".g728f", "#!G728\n", {5}, "neither 5 nor 255"},
        {"g729", ".g729f", "#!G729\n", {10, 2, 0}, "none of 10, 2, 0 and 255"}};
    return kKinds;
}

} // namespace

const ContainerKind* containerByName(const std::string& path)
{
    const std::string extension = lowerExtension(path);
    for (const ContainerKind& kind : kinds())
        if (extension == kind.extension) return &kind;
    return nullptr;
}

const ContainerKind* containerToRead(const CodecSetting& setting, const std::string& path)
{
    const ContainerKind* kind = containerByName(path);
    return kind && std::string_view(setting.codec->family) == kind->family ? kind : nullptr;
}

const ContainerKind* containerToWrite(const CodecSetting& setting, const std::string& path)
{
    if (setting.dtx)
        for (const ContainerKind& kind : kinds())
            if (std::string_view(setting.codec->family) == kind.family) return &kind;
    return containerToRead(setting, path);
}

void ContainerReader::take(std::span<const std::uint8_t> bytes, const Take& frame)
{
    pending_.insert(pending_.end(), bytes.begin(), bytes.end());
    const std::string_view beginning = kind_.beginning;
    std::size_t at = 0;
    if (!hasBegun_) {
        if (pending_.size() < beginning.size()) return;
        if (!std::equal(beginning.begin(), beginning.end(), pending_.begin()))
            throw Failure(path_, "does not begin with " +
                                     std::string(beginning.substr(0, beginning.size() - 1)));
        hasBegun_ = true;
        at = beginning.size();
    }
    while (at < pending_.size()) {
        const std::uint8_t length = pending_[at];
        const auto& known = kind_.lengths;
        if (length != kLost && std::find(known.begin(), known.end(), length) == known.end())
            throw Failure(path_, "frame " + std::to_string(frames_ + 1) + " has the length " +
                                     std::to_string(length) + ", " + kind_.lengthsInWords);
        const std::size_t count = length == kLost ? 0 : length;
        if (pending_.size() - at < 1 + count) break;
        frame(length == kLost ? Frame::lost
              : length == 0   ? Frame::untransmitted
                              : Frame::present,
              std::span(pending_).subspan(at + 1, count));
        ++frames_;
        at += 1 + count;
    }
    pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(at));
}

void ContainerReader::finish() const
{
    if (!hasBegun_ || !pending_.empty()) throw Failure(path_, "ends inside of a frame");
}

} // namespace zsp::host
