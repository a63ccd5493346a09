// What the targets of the host share.
#pragma once

#include "tests/fuzz/targets/target.hpp"
#include "tools/zsp/commands/commands.hpp"

#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace zsp::fuzz {

/// A file with some content, which has a path but no name in any folder.
class MemoryFile {
  public:
    MemoryFile(const std::uint8_t* data, std::size_t size) : descriptor_(memfd_create("input", 0))
    {
        must(descriptor_ >= 0 && ::write(descriptor_, data, size) == static_cast<ssize_t>(size),
             "there is memory for the input");
    }
    ~MemoryFile() { close(descriptor_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

  private:
    int descriptor_;
};

} // namespace zsp::fuzz
