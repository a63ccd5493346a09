// Files of G.728 in which frames may be lost (.g728f): seven bytes "#!G728" and a newline, then for
// every frame of 2.5 ms a byte with its length, 5, and the frame; or 255, and the frame is lost.
#pragma once

#include "tools/zsp/codec/choice.hpp"

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace zsp::host {

/// Whether a path's extension is that of these files.
bool hasG728ContainerName(const std::string& path);
/// Whether a file of this name and codec is one.
bool isG728Container(const CodecSetting& setting, const std::string& path);

/// Whole frames to what follows in such a file; `isFirst` puts the beginning before them.
std::vector<std::uint8_t> g728Contained(std::span<const std::uint8_t> frames, bool isFirst);

class G728ContainerReader {
  public:
    explicit G728ContainerReader(std::string path) : path_(std::move(path)) {}

    /// Hands on the frames that are complete; lost ones are empty. Throws a Failure where the bytes
    /// are no such file.
    void take(std::span<const std::uint8_t> bytes,
              const std::function<void(std::span<const std::uint8_t>)>& frame);
    /// Throws a Failure where the file ends inside of a frame.
    void finish() const;

  private:
    std::string path_;
    std::vector<std::uint8_t> pending_;
    bool hasBegun_ = false;
    std::uint64_t frames_ = 0;
};

} // namespace zsp::host
