// Files of coded speech: raw frames one after the other, or these behind a WAV or AU header that
// names the codec.
#pragma once

#include "tools/zsp/codec/choice.hpp"
#include "tools/zsp/io/files.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zsp::host {

/// What a command line says about the codec; empty or 0 where it says nothing.
struct CodecWish {
    std::string name;
    std::int32_t bitRate = 0;
};

/// The codec to write a file with: as wished for, else by the file's extension.
CodecSetting codecToWrite(const CodecWish& wish, const std::string& path);

/// A file of coded speech, opened.
class CodedInput {
  public:
    /// Finds out the codec: as wished for, else by the header, else by the extension. Throws a
    /// Failure when the file is plainly none of that codec.
    CodedInput(const std::string& path, const CodecWish& wish);

    [[nodiscard]] const CodecSetting& setting() const { return setting_; }
    [[nodiscard]] const std::string& path() const { return file_.path(); }
    /// Bytes of coded speech, where known.
    [[nodiscard]] std::optional<std::uint64_t> size() const { return left_; }
    /// As InputFile::read(). GSM frames of a WAV file come as they stand in .gsm files.
    std::size_t read(std::span<std::uint8_t> bytes);

  private:
    CodecSetting fromHeader(const CodecWish& wish);
    void refuseOthers();
    std::size_t readFile(std::span<std::uint8_t> bytes);

    InputFile file_;
    std::optional<std::uint64_t> left_;
    bool gsmPairs_ = false;
    std::vector<std::uint8_t> frames_; // of pairs, not asked for yet
    CodecSetting setting_;             // the last one: the header says more than the codec
};

} // namespace zsp::host
