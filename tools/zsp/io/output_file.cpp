// Writes an output that appears under its name only when it is complete.

#include "tools/zsp/io/failure.hpp"
#include "tools/zsp/io/files.hpp"

#include <algorithm>
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

namespace fs = std::filesystem;

constexpr std::array kInterrupts = {SIGHUP, SIGINT, SIGPIPE, SIGQUIT, SIGTERM, SIGXCPU, SIGXFSZ};

/// Names of the temporary files in existence, for the signal handler; empty where there is none.
using Name = std::array<char, 4096>;
std::array<Name, 4> temporaryNames{};

/// Removes the temporary files and lets the signal do what it would have done.
void onInterrupt(int signal)
{
    for (const Name& name : temporaryNames)
        if (name[0]) unlink(name.data());
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

/// The signals that end a process, held back while a temporary file and its name change together.
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

/// Puts a name onto the signal handler's list, or takes it off.
void exchangeName(const std::string& before, const std::string& after)
{
    const auto place = std::find_if(temporaryNames.begin(), temporaryNames.end(),
                                    [&before](const Name& name) { return before == name.data(); });
    if (place == temporaryNames.end() || after.size() >= place->size()) return;
    std::memcpy(place->data(), after.c_str(), after.size() + 1);
}

/// The permissions that open() would have given a new file.
mode_t newFileMode()
{
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

/// Where a chain of links ends, whether or not there is a file.
std::string followed(const std::string& path)
{
    fs::path at = path;
    std::error_code error;
    for (int links = 0; fs::is_symlink(fs::symlink_status(at, error)); ++links) {
        if (links == 40) throw Failure(path, std::strerror(ELOOP));
        const fs::path next = fs::read_symlink(at, error);
        if (error) throw Failure(path, error.message());
        at = next.is_absolute() ? next : at.parent_path() / next;
    }
    return at.string();
}

std::string directoryOf(const std::string& path)
{
    const fs::path parent = fs::path(path).parent_path();
    return parent.empty() ? "." : parent.string();
}

} // namespace

OutputFile::OutputFile(std::string path) : path_(std::move(path)), target_(path_)
{
    struct stat status {};
    if (path_ == "-") {
        descriptor_ = STDOUT_FILENO;
        // A shell's ">>" sets every write behind what is there: no header can be completed then.
        const int flags = fcntl(STDOUT_FILENO, F_GETFL);
        seekable_ = fstat(STDOUT_FILENO, &status) == 0 && S_ISREG(status.st_mode) && flags >= 0 &&
                    (flags & O_APPEND) == 0;
        return;
    }
    const bool exists = stat(path_.c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode)) throw Failure(path_, std::strerror(EISDIR));
    if (exists && !S_ISREG(status.st_mode)) {
        descriptor_ = open(path_.c_str(), O_WRONLY | O_CLOEXEC);
        if (descriptor_ < 0) failWithErrno(path_);
        return;
    }
    if (exists && access(path_.c_str(), W_OK) != 0) failWithErrno(path_);

    // A link keeps pointing to its file: the new file takes the place of what the link names.
    target_ = followed(path_);
    struct stat ignored {};
    if (!exists && lstat(target_.c_str(), &ignored) != 0 && errno != ENOENT) failWithErrno(path_);
    const std::string directory = directoryOf(target_);
    openUnnamed(directory);
    if (descriptor_ < 0) openNamed(directory);
    seekable_ = true;
    direct_ = false;
    fchmod(descriptor_, exists ? status.st_mode & 07777 : newFileMode());
}

// Linking needs the file's place in /proc.
void OutputFile::openUnnamed(const std::string& directory)
{
    descriptor_ = open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (descriptor_ < 0) return;
    const std::string place = "/proc/self/fd/" + std::to_string(descriptor_);
    if (access(place.c_str(), F_OK) == 0) return;
    close(std::exchange(descriptor_, -1));
}

// The name is short, so that the file's own may be as long as names can be.
void OutputFile::openNamed(const std::string& directory)
{
    std::string name = directory + "/.zsp-XXXXXX";
    if (name.size() >= Name().size()) throw Failure(path_, std::strerror(ENAMETOOLONG));
    watchInterrupts();
    const SignalsHeld held;
    descriptor_ = mkostemp(name.data(), O_CLOEXEC);
    if (descriptor_ < 0) failWithErrno(path_);
    temporary_ = name;
    exchangeName("", name);
}

OutputFile::~OutputFile()
{
    if (path_ == "-") return;
    if (descriptor_ >= 0) close(descriptor_);
    if (temporary_.empty()) return;
    const SignalsHeld held;
    unlink(temporary_.c_str());
    exchangeName(temporary_, "");
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

/// Gives the file without a name one: its own, or where that is taken a short one to begin with.
void OutputFile::link()
{
    const std::string place = "/proc/self/fd/" + std::to_string(descriptor_);
    const auto linkAs = [&place](const std::string& name) {
        return linkat(AT_FDCWD, place.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
    };
    if (linkAs(target_)) return;
    for (int i = 0; errno == EEXIST && i < 1000; ++i) {
        const std::string name =
            directoryOf(target_) + "/.zsp-" + std::to_string(getpid()) + "-" + std::to_string(i);
        if (!linkAs(name)) continue;
        temporary_ = name;
        return;
    }
    failWithErrno(path_);
}

void OutputFile::commit()
{
    if (path_ == "-") return;
    const SignalsHeld held;
    if (!direct_ && temporary_.empty()) link();
    if (close(std::exchange(descriptor_, -1)) != 0) failWithErrno(path_);
    if (temporary_.empty()) return;
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0) failWithErrno(path_);
    exchangeName(temporary_, "");
    temporary_.clear();
}

int unnamedFile()
{
    const char* given = std::getenv("TMPDIR");
    const std::string directory = given && *given ? given : "/tmp";
    int descriptor = open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (descriptor >= 0) return descriptor;
    std::string name = directory + "/zsp-XXXXXX";
    const SignalsHeld held;
    descriptor = mkostemp(name.data(), O_CLOEXEC);
    if (descriptor < 0) failWithErrno(directory);
    unlink(name.c_str());
    return descriptor;
}

/// Device and number of the file that is there, else the folder's and the name in it.
std::optional<std::string> identityOf(const std::string& path, bool output)
{
    if (path.empty()) return std::nullopt;
    struct stat status {};
    const auto place = [&status](const std::string& name) {
        return std::to_string(status.st_dev) + " " + std::to_string(status.st_ino) + " " + name;
    };
    const int found = path == "-" ? fstat(output ? STDOUT_FILENO : STDIN_FILENO, &status)
                                  : stat(path.c_str(), &status);
    if (found == 0) return S_ISREG(status.st_mode) ? std::optional(place("")) : std::nullopt;
    const std::string target = followed(path);
    if (stat(directoryOf(target).c_str(), &status) != 0) return std::nullopt;
    return place(fs::path(target).filename().string());
}

} // namespace zsp::host
