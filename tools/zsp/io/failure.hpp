// How a subcommand ends early: Failure with exit status 1, UsageError with exit status 2. main()
// prints the text behind "zsp: ".
#pragma once

#include <stdexcept>
#include <string>

namespace zsp::host {

struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;

    /// "file: reason", with "-" spelt out.
    Failure(const std::string& path, const std::string& reason);
};

/// The command line asks for something that cannot be.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// "file: " and the text of `errno`, as a Failure.
[[noreturn]] void failWithErrno(const std::string& path);

/// Throws a Failure that names `call` when the library returns anything but success. All arguments
/// are checked before, so this tells of a fault of ours.
void require(int status, const char* call);

} // namespace zsp::host
