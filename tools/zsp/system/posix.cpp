// The system as POSIX and Linux show it.

#include "tools/zsp/system/system.hpp"

#include <dlfcn.h>

namespace zsp::host {

std::filesystem::path programFile()
{
    return std::filesystem::read_symlink("/proc/self/exe");
}

std::filesystem::path libraryFileOf(const void* address)
{
    Dl_info info{};
    if (dladdr(address, &info) == 0) return {};
    std::error_code error;
    const std::filesystem::path file = std::filesystem::canonical(info.dli_fname, error);
    return error ? std::filesystem::path(info.dli_fname) : file;
}

void passBytes()
{
}

} // namespace zsp::host
