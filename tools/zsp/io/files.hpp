// Input and output files of bytes. "-" is standard input or output.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zsp::host {

/// A file open for reading, or bytes in memory.
class InputFile {
  public:
    explicit InputFile(std::string path);
    /// Bytes that stay where they are; `name` appears in messages.
    InputFile(std::string name, std::span<const std::uint8_t> bytes);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    /// Fills `bytes` as far as the file goes; fewer than asked for means its end.
    std::size_t read(std::span<std::uint8_t> bytes);
    /// The next `count` bytes, which stay to be read; fewer only where the file ends before.
    std::span<const std::uint8_t> peek(std::size_t count);
    /// Leaves out `count` bytes that were seen by peek().
    void skipSeen(std::size_t count);

    /// A descriptor at the beginning of the file, of which nothing may have been read. A pipe is
    /// copied to a file without a name first.
    int seekableDescriptor();

    /// Size in bytes, unless this is a pipe or a device.
    [[nodiscard]] std::optional<std::uint64_t> size() const { return size_; }
    [[nodiscard]] const std::string& path() const { return path_; }

  private:
    std::size_t readOn(std::uint8_t* bytes, std::size_t count);

    std::string path_;
    int descriptor_;
    bool owned_;
    std::int64_t start_ = 0; // where a redirected file begins
    std::optional<std::uint64_t> size_;
    std::vector<std::uint8_t> seen_; // read already, but not asked for yet
    std::size_t position_ = 0;       // in seen_
};

/// A file that appears under its name only when all of it is written: until commit() the bytes go
/// to a file without a name in the same directory, which goes away with the process. Where there
/// are no such files it has a name, which is removed when the writer is destroyed, or the process
/// interrupted, before. Pipes and devices are written directly.
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
    void openUnnamed(const std::string& directory);
    void openNamed(const std::string& directory);
    void link();

    std::string path_, target_; // as given; with its links followed
    std::string temporary_;     // name until the commit, where files without one cannot be
    int descriptor_ = -1;
    bool seekable_ = false, direct_ = true;
};

/// Throws a UsageError when two of the files are one, be it under two names, unless both are read;
/// empty names count for none. Reading and writing a terminal, a pipe or a device is no fault.
void requireDistinct(std::span<const std::string> inputs, std::span<const std::string> outputs);

/// What makes two names one file, be it there or not; nothing for terminals, pipes and devices.
std::optional<std::string> identityOf(const std::string& path, bool output);

/// A file for reading and writing that has no name and ends with its descriptor.
int unnamedFile();

} // namespace zsp::host
