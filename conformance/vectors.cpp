// Reading of reference vectors.

#include "conformance/vectors.hpp"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace zsp::conformance {

std::string Vectors::contents(const std::string& name) const
{
    const auto path = directory_ / name;
    std::error_code error;
    std::ifstream file;
    // A folder opens as a file does, but cannot be read.
    if (std::filesystem::is_regular_file(path, error)) file.open(path, std::ios::binary);
    if (!file.is_open()) throw Fault("cannot read " + path.string());
    seen_.insert(name);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::vector<std::string>> Vectors::runs(const std::string& name) const
{
    std::istringstream text(contents(name));
    std::vector<std::vector<std::string>> runs;
    for (std::string line; std::getline(text, line);) {
        std::istringstream words(line);
        std::vector<std::string> run{std::istream_iterator<std::string>(words), {}};
        if (!run.empty() && run[0][0] != '#') runs.push_back(std::move(run));
    }
    if (runs.empty()) throw Fault(name + " names no runs");
    return runs;
}

std::size_t recordsOf(std::size_t size, std::size_t record, const std::string& what)
{
    if (size == 0 || size % record != 0)
        throw Fault(what + " has " + std::to_string(size) + " elements, records have " +
                    std::to_string(record));
    return size / record;
}

void require(int status, const std::string& what)
{
    if (status != 0) throw Fault(what + " returned status " + std::to_string(status));
}

std::size_t Cuts::next()
{
    std::size_t length = left_;
    if (split_ == Split::shortest) length = unit_;
    if (split_ == Split::blocks) {
        random_ = random_ * 1664525 + 1013904223;
        length = unit_ * (1 + (random_ >> 16) % 300);
    }
    length = std::min(length, left_);
    left_ -= length;
    return length;
}

} // namespace zsp::conformance
