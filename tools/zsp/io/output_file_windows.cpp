// Writes an output that appears under its name only when it is complete, on Windows: until then the
// system deletes the file when its last handle is closed, however the process ends.

#include "tools/zsp/io/failure.hpp"
#include "tools/zsp/io/files.hpp"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <io.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace zsp::host {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void failWithSystem(const std::string& path)
{
    throw Failure(
        path, std::error_code(static_cast<int>(GetLastError()), std::system_category()).message());
}

HANDLE handleOf(int descriptor)
{
    return reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
}

/// Whether the file goes when it is closed.
bool setDoomed(int descriptor, bool doomed)
{
    FILE_DISPOSITION_INFO info{};
    info.DeleteFile = doomed;
    return SetFileInformationByHandle(handleOf(descriptor), FileDispositionInfo, &info,
                                      sizeof info) != 0;
}

/// A new file in a folder that goes when it is closed, and its name.
std::pair<int, std::string> doomedFile(const std::string& folder)
{
    for (int i = 0; i < 1000; ++i) {
        const std::string name =
            folder + "/.zsp-" + std::to_string(getpid()) + "-" + std::to_string(i);
        const HANDLE handle = CreateFileA(name.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                          nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (handle == INVALID_HANDLE_VALUE && GetLastError() == ERROR_FILE_EXISTS) continue;
        if (handle == INVALID_HANDLE_VALUE) break;
        const int descriptor = _open_osfhandle(reinterpret_cast<std::intptr_t>(handle), O_BINARY);
        if (!setDoomed(descriptor, true)) {
            close(descriptor);
            DeleteFileA(name.c_str());
            break;
        }
        return {descriptor, name};
    }
    failWithSystem(folder);
}

bool isRegular(int descriptor)
{
    return GetFileType(handleOf(descriptor)) == FILE_TYPE_DISK;
}

} // namespace

OutputFile::OutputFile(std::string path) : path_(std::move(path)), target_(path_)
{
    if (path_ == "-") {
        descriptor_ = STDOUT_FILENO;
        seekable_ = isRegular(descriptor_);
        return;
    }
    std::error_code error;
    const fs::file_status status = fs::status(path_, error);
    if (fs::is_directory(status)) throw Failure(path_, std::strerror(EISDIR));
    if (fs::exists(status) && access(path_.c_str(), W_OK) != 0) failWithErrno(path_);
    if (fs::exists(status) && !fs::is_regular_file(status)) { // NUL and the like
        descriptor_ = open(path_.c_str(), O_WRONLY | O_BINARY | O_NOINHERIT);
        if (descriptor_ < 0) failWithErrno(path_);
        return;
    }
    const fs::path folder = fs::path(target_).parent_path();
    try {
        std::tie(descriptor_, temporary_) = doomedFile(folder.empty() ? "." : folder.string());
    } catch (const Failure&) {
        failWithSystem(path_);
    }
    seekable_ = true;
    direct_ = false;
}

OutputFile::~OutputFile()
{
    if (path_ != "-" && descriptor_ >= 0) close(descriptor_);
}

void OutputFile::write(std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const auto block = static_cast<unsigned>(std::min<std::size_t>(bytes.size(), 1U << 30));
        const int count = ::write(descriptor_, bytes.data(), block);
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
    if (!direct_ && !setDoomed(descriptor_, false)) failWithSystem(path_);
    if (close(std::exchange(descriptor_, -1)) != 0) failWithErrno(path_);
    if (direct_) return;
    if (MoveFileExA(temporary_.c_str(), target_.c_str(), MOVEFILE_REPLACE_EXISTING)) return;
    const DWORD reason = GetLastError();
    DeleteFileA(temporary_.c_str());
    SetLastError(reason);
    failWithSystem(path_);
}

int unnamedFile()
{
    std::array<char, MAX_PATH + 1> folder{};
    GetTempPathA(DWORD{folder.size()}, folder.data());
    return doomedFile(folder.data()).first;
}

std::optional<std::string> identityOf(const std::string& path, bool output)
{
    if (path.empty()) return std::nullopt;
    const bool standard = path == "-";
    const int descriptor = standard ? (output ? STDOUT_FILENO : STDIN_FILENO)
                                    : open(path.c_str(), O_RDONLY | O_BINARY | O_NOINHERIT);
    if (descriptor < 0) {
        std::error_code error;
        std::string name = fs::weakly_canonical(path, error).string();
        std::transform(name.begin(), name.end(), name.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        return error ? std::nullopt : std::optional(name);
    }
    BY_HANDLE_FILE_INFORMATION info{};
    const bool known =
        isRegular(descriptor) && GetFileInformationByHandle(handleOf(descriptor), &info) != 0;
    if (!standard) close(descriptor);
    if (!known) return std::nullopt;
    return std::to_string(info.dwVolumeSerialNumber) + " " + std::to_string(info.nFileIndexHigh) +
           " " + std::to_string(info.nFileIndexLow);
}

} // namespace zsp::host
