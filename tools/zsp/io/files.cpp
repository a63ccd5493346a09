#include "tools/zsp/io/files.hpp"

#include "tools/zsp/io/failure.hpp"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace zsp::host {

namespace {

constexpr std::array kInterrupts = {SIGHUP, SIGINT, SIGPIPE, SIGTERM};

/// Name of the one temporary file in existence, for the signal handler; empty when there is none.
std::array<char, 4096> temporaryName{};

/// Removes the temporary file and lets the signal do what it would have done.
void onInterrupt(int signal)
{
    if (temporaryName[0]) unlink(temporaryName.data());
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

/// The signals that end a process, held back while the temporary file and its name change together.
class SignalsHeld {
  public:
    SignalsHeld()
    {
        sigset_t held;
        sigemptyset(&held);
        for (const int signal : kInterrupts)
            sigaddset(&held, signal);
        sigprocmask(SIG_BLOCK, &held, &before_);
    }
    ~SignalsHeld() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;

  private:
    sigset_t before_{};
};

void watchInterrupts()
{
    for (const int signal : kInterrupts) {
        struct sigaction current {};
        sigaction(signal, nullptr, &current);
        if (current.sa_handler == SIG_DFL) std::signal(signal, onInterrupt);
    }
}

/// The permissions that open() would have given a new file.
mode_t newFileMode()
{
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

} // namespace

InputFile::InputFile(std::string path)
    : path_(std::move(path)),
      descriptor_(path_ == "-" ? STDIN_FILENO : open(path_.c_str(), O_RDONLY | O_CLOEXEC))
{
    struct stat status {};
    if (descriptor_ < 0 || fstat(descriptor_, &status) != 0) failWithErrno(path_);
    if (S_ISDIR(status.st_mode)) throw Failure(path_, std::strerror(EISDIR));
    if (S_ISREG(status.st_mode)) size_ = static_cast<std::uint64_t>(status.st_size);
}

InputFile::~InputFile()
{
    if (path_ != "-") close(descriptor_);
}

std::size_t InputFile::read(std::span<std::uint8_t> bytes)
{
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = ::read(descriptor_, bytes.data() + done, bytes.size() - done);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) failWithErrno(path_);
        if (count == 0) break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

OutputFile::OutputFile(std::string path) : path_(std::move(path))
{
    struct stat status {};
    const bool standard = path_ == "-";
    const bool exists =
        (standard ? fstat(STDOUT_FILENO, &status) : stat(path_.c_str(), &status)) == 0;
    if (standard) {
        descriptor_ = STDOUT_FILENO;
        seekable_ = exists && S_ISREG(status.st_mode);
        return;
    }
    if (exists && S_ISDIR(status.st_mode)) throw Failure(path_, std::strerror(EISDIR));
    if (exists && !S_ISREG(status.st_mode)) {
        descriptor_ = open(path_.c_str(), O_WRONLY | O_CLOEXEC);
        if (descriptor_ < 0) failWithErrno(path_);
        return;
    }

    // A link keeps pointing to its file: the new file takes the place of what the link names.
    std::error_code ignored;
    if (exists) {
        if (access(path_.c_str(), W_OK) != 0) failWithErrno(path_);
        const auto target = std::filesystem::canonical(path_, ignored);
        if (!ignored) path_ = target.string();
    }
    std::string name = path_ + ".XXXXXX";
    if (name.size() >= temporaryName.size()) throw Failure(path_, std::strerror(ENAMETOOLONG));
    watchInterrupts();
    const SignalsHeld held;
    descriptor_ = mkostemp(name.data(), O_CLOEXEC);
    if (descriptor_ < 0) failWithErrno(path_);
    temporary_ = name;
    seekable_ = true;
    std::memcpy(temporaryName.data(), name.c_str(), name.size() + 1);
    fchmod(descriptor_, exists ? status.st_mode & 07777 : newFileMode());
}

OutputFile::~OutputFile()
{
    if (path_ == "-") return;
    if (descriptor_ >= 0) close(descriptor_);
    if (temporary_.empty()) return;
    const SignalsHeld held;
    unlink(temporary_.c_str());
    temporaryName[0] = '\0';
}

void OutputFile::write(std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor_, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) failWithErrno(path_);
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
}

void OutputFile::write(std::string_view text)
{
    write(std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

void OutputFile::commit()
{
    if (path_ == "-") return;
    if (close(std::exchange(descriptor_, -1)) != 0) failWithErrno(path_);
    if (temporary_.empty()) return;
    const SignalsHeld held;
    if (std::rename(temporary_.c_str(), path_.c_str()) != 0) failWithErrno(path_);
    temporary_.clear();
    temporaryName[0] = '\0';
}

} // namespace zsp::host
