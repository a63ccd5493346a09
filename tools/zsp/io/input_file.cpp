// Reads a file or standard input to its end, and sees that no file is both read and written.

#include "tools/zsp/io/failure.hpp"
#include "tools/zsp/io/files.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace zsp::host {

namespace {

#ifdef _WIN32
constexpr int kReading = O_RDONLY | O_NOINHERIT | O_BINARY;
#else
constexpr int kReading = O_RDONLY | O_CLOEXEC;
#endif

} // namespace

InputFile::InputFile(std::string path)
    : path_(std::move(path)),
      descriptor_(path_ == "-" ? STDIN_FILENO : open(path_.c_str(), kReading)), owned_(path_ != "-")
{
    struct stat status {};
    if (descriptor_ < 0 || fstat(descriptor_, &status) != 0) failWithErrno(path_);
    if (S_ISDIR(status.st_mode)) throw Failure(path_, std::strerror(EISDIR));
    if (!S_ISREG(status.st_mode)) return;
    start_ = std::max<std::int64_t>(lseek(descriptor_, 0, SEEK_CUR), 0);
    size_ = static_cast<std::uint64_t>(std::max<std::int64_t>(status.st_size - start_, 0));
}

InputFile::InputFile(std::string name, std::span<const std::uint8_t> bytes)
    : path_(std::move(name)), descriptor_(-1), owned_(false), size_(bytes.size()),
      seen_(bytes.begin(), bytes.end())
{
}

InputFile::~InputFile()
{
    if (owned_) close(descriptor_);
}

/// From the descriptor, behind what was seen.
std::size_t InputFile::readOn(std::uint8_t* bytes, std::size_t count)
{
    std::size_t done = 0;
    while (descriptor_ >= 0 && done < count) {
        const auto block = static_cast<unsigned>(std::min<std::size_t>(count - done, 1U << 30));
        const auto got = ::read(descriptor_, bytes + done, block);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) failWithErrno(path_);
        if (got == 0) break;
        done += static_cast<std::size_t>(got);
    }
    return done;
}

std::size_t InputFile::read(std::span<std::uint8_t> bytes)
{
    const std::size_t seen = std::min(bytes.size(), seen_.size() - position_);
    std::copy_n(seen_.begin() + static_cast<std::ptrdiff_t>(position_), seen, bytes.begin());
    position_ += seen;
    if (position_ == seen_.size() && descriptor_ >= 0) {
        seen_.clear();
        position_ = 0;
    }
    return seen + readOn(bytes.data() + seen, bytes.size() - seen);
}

std::span<const std::uint8_t> InputFile::peek(std::size_t count)
{
    const std::size_t held = seen_.size() - position_;
    if (held < count) {
        seen_.resize(position_ + count);
        seen_.resize(position_ + held + readOn(seen_.data() + position_ + held, count - held));
    }
    return std::span(seen_).subspan(position_, std::min(count, seen_.size() - position_));
}

void InputFile::skipSeen(std::size_t count)
{
    position_ += count;
}

int InputFile::seekableDescriptor()
{
    if (!size_ || descriptor_ < 0) {
        const int copy = unnamedFile();
        std::array<std::uint8_t, 65536> block;
        std::uint64_t total = 0;
        for (std::size_t count = block.size(); count == block.size();) {
            count = read(block);
            total += count;
            if (::write(copy, block.data(), static_cast<unsigned>(count)) !=
                static_cast<std::ptrdiff_t>(count)) {
                close(copy);
                throw Failure(path_, std::string("cannot be copied to a temporary file: ") +
                                         std::strerror(errno));
            }
        }
        if (owned_) close(descriptor_);
        descriptor_ = copy;
        owned_ = true;
        size_ = total;
    }
    seen_.clear();
    position_ = 0;
    if (lseek(descriptor_, start_, SEEK_SET) < 0) failWithErrno(path_);
    return descriptor_;
}

void requireDistinct(std::span<const std::string> inputs, std::span<const std::string> outputs)
{
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        const auto identity = identityOf(outputs[i], true);
        const bool standard = outputs[i] == "-";
        for (const std::string& input : inputs)
            if (identity && identity == identityOf(input, false))
                throw UsageError(outputs[i] + ": is input and output at once");
        for (std::size_t k = 0; k < i; ++k)
            if ((standard && outputs[k] == "-") ||
                (identity && identity == identityOf(outputs[k], true)))
                throw UsageError(outputs[i] + ": is named for two outputs");
    }
}

} // namespace zsp::host
