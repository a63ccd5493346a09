// What POSIX and Windows do differently, but for files, which are in io/.
#pragma once

#include <filesystem>

namespace zsp::host {

/// The file of this program.
std::filesystem::path programFile();

/// The file of the library that holds `address`, as the loader found it; empty if it has none.
std::filesystem::path libraryFileOf(const void* address);

/// Has standard input and output pass bytes as they are.
void passBytes();

} // namespace zsp::host
