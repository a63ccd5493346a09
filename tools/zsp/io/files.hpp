// Input and output files of bytes. "-" is standard input or output.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace zsp::host {

/// A file open for reading.
class InputFile {
  public:
    explicit InputFile(std::string path);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    /// Fills `bytes` as far as the file goes; fewer than asked for means its end.
    std::size_t read(std::span<std::uint8_t> bytes);

    /// Size in bytes, unless this is a pipe or a device.
    [[nodiscard]] std::optional<std::uint64_t> size() const { return size_; }
    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] int descriptor() const { return descriptor_; }

  private:
    std::string path_;
    int descriptor_;
    std::optional<std::uint64_t> size_;
};

/// A file that appears under its name only when all of it is written: until commit() the bytes go
/// to a temporary file in the same directory, which is removed when the writer is destroyed, or the
/// process interrupted, before. Pipes and devices are written directly.
class OutputFile {
  public:
    explicit OutputFile(std::string path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(std::span<const std::uint8_t> bytes);
    void write(std::string_view text);
    /// Gives the complete file its name. Nothing may be written afterwards.
    void commit();

    /// Whether a header written first can be completed at the end.
    [[nodiscard]] bool seekable() const { return seekable_; }
    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] int descriptor() const { return descriptor_; }

  private:
    std::string path_;
    std::string temporary_; // empty when the target is written directly
    int descriptor_ = -1;
    bool seekable_ = false;
};

} // namespace zsp::host
