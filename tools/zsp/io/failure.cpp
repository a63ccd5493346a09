// Texts of failures.

#include "tools/zsp/io/failure.hpp"

#include <cerrno>
#include <cstring>

namespace zsp::host {

Failure::Failure(const std::string& path, const std::string& reason)
    : std::runtime_error((path == "-" ? "standard input or output" : path) + ": " + reason)
{
}

void failWithErrno(const std::string& path)
{
    throw Failure(path, std::strerror(errno));
}

void require(int status, const char* call)
{
    if (status != 0)
        throw Failure(std::string(call) + " returned status " + std::to_string(status));
}

} // namespace zsp::host
