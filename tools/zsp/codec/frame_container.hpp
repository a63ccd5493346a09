// Files that hold the frames of G.728 (.g728f) or G.729 (.g729f) with what is known of those that
// are not there: seven bytes "#!G728" or "#!G729" and a newline, then for every frame a byte with
// its length, and the frame. The length 255 stands for a lost frame, and 0 of G.729 for one that
// was not sent; no bytes follow.
#pragma once

#include "tools/zsp/codec/choice.hpp"

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zsp::host {

struct ContainerKind {
    const char* family;
    std::string_view extension; // with its dot
    std::string_view beginning;
    std::vector<std::uint8_t> lengths; // of frames that are there, or were not sent
    const char* lengthsInWords;        // "neither 5 nor 255"
};

/// The kind that a path's extension tells, null for none.
const ContainerKind* containerByName(const std::string& path);
/// The kind of such a file of this name and codec, null where it is none.
const ContainerKind* containerToRead(const CodecSetting& setting, const std::string& path);
/// The same of a file to be written: with pauses, G.729 is always in one.
const ContainerKind* containerToWrite(const CodecSetting& setting, const std::string& path);

class ContainerReader {
  public:
    enum class Frame { present, untransmitted, lost };
    using Take = std::function<void(Frame, std::span<const std::uint8_t>)>;

    ContainerReader(const ContainerKind& kind, std::string path)
        : kind_(kind), path_(std::move(path))
    {
    }

    /// Hands on the frames that are complete; those that are not present are empty. Throws a
    /// Failure where the bytes are no such file.
    void take(std::span<const std::uint8_t> bytes, const Take& frame);
    /// Throws a Failure where the file ends inside of a frame.
    void finish() const;

  private:
    const ContainerKind& kind_;
    std::string path_;
    std::vector<std::uint8_t> pending_;
    bool hasBegun_ = false;
    std::uint64_t frames_ = 0;
};

} // namespace zsp::host
