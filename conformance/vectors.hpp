// Reference vectors in a directory, and the checks of a library's results against them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace zsp::conformance {

using Words = std::vector<std::int16_t>;

/// A vector that cannot be read, a call that fails, or a result that differs: ends the check.
struct Fault : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// A directory with a folder per family, tests/vectors or a copy of it. What is missing or has no
/// whole number of elements is a Fault.
class Vectors {
  public:
    explicit Vectors(std::filesystem::path directory) : directory_(std::move(directory)) {}

    [[nodiscard]] const std::filesystem::path& directory() const { return directory_; }

    /// All elements of a raw little-endian file.
    template <typename T>
    [[nodiscard]] std::vector<T> read(const std::string& name) const
    {
        const std::string bytes = contents(name);
        if (bytes.empty() || bytes.size() % sizeof(T) != 0)
            throw Fault(name + " has " + std::to_string(bytes.size()) + " bytes");
        std::vector<T> values(bytes.size() / sizeof(T));
        std::memcpy(values.data(), bytes.data(), bytes.size());
        return values;
    }
    [[nodiscard]] Words words(const std::string& name) const { return read<std::int16_t>(name); }

    /// The lines of a text file, split into words, without blank lines and comments.
    [[nodiscard]] std::vector<std::vector<std::string>> runs(const std::string& name) const;

    /// Names of the files that were read.
    [[nodiscard]] const std::set<std::string>& seen() const { return seen_; }

  private:
    [[nodiscard]] std::string contents(const std::string& name) const;

    std::filesystem::path directory_;
    mutable std::set<std::string> seen_;
};

/// Faults unless a file of `size` elements holds whole records and at least one. Returns how many.
std::size_t recordsOf(std::size_t size, std::size_t record, const std::string& what);

/// Faults unless a call returned success.
void require(int status, const std::string& what);

/// Faults with the first element that differs.
template <typename A, typename B>
void requireEqual(const A& got, const B& want, const std::string& what)
{
    if (std::size(got) != std::size(want))
        throw Fault(what + ": " + std::to_string(std::size(got)) + " elements, wanted " +
                    std::to_string(std::size(want)));
    for (std::size_t i = 0; i < std::size(got); ++i)
        if (got[i] != want[i])
            throw Fault(what + ": element " + std::to_string(i) + " is " + std::to_string(got[i]) +
                        ", wanted " + std::to_string(want[i]));
}

/// A plain record as the words that it consists of.
template <typename Record>
Words wordsOf(const Record& record)
{
    Words words(sizeof record / 2);
    std::memcpy(words.data(), &record, sizeof record);
    return words;
}

/// A state in memory of the caller's that begins `offset` bytes behind a boundary of 16 bytes.
class StateBuffer {
  public:
    StateBuffer(std::int32_t size, std::size_t offset)
        : storage_(static_cast<std::size_t>(size) + 32, std::byte{0xA5}), offset_(offset)
    {
    }
    [[nodiscard]] void* data()
    {
        const auto past = reinterpret_cast<std::uintptr_t>(storage_.data()) % 16;
        return storage_.data() + (16 - past) % 16 + offset_;
    }

  private:
    std::vector<std::byte> storage_;
    std::size_t offset_;
};

/// How a signal is cut into calls. The result is the same, whichever it is.
enum class Split { none, blocks, shortest };
inline constexpr Split kSplits[] = {Split::none, Split::blocks, Split::shortest};

/// Lengths of the calls for a signal, all multiples of `unit`; those of blocks differ.
class Cuts {
  public:
    Cuts(Split split, std::size_t length, std::size_t unit)
        : split_(split), left_(length), unit_(unit)
    {
    }
    /// 0 when the signal is at its end.
    std::size_t next();

  private:
    Split split_;
    std::size_t left_, unit_;
    std::uint32_t random_ = 1;
};

/// One check: a run, a signal or a file of records. An empty fault means that it passed.
struct Check {
    std::string name, fault;
};

class Checks {
  public:
    /// Adds a check; `run` faults when the library's result is not the vector's.
    template <typename Run>
    void add(std::string name, Run run)
    {
        std::string fault;
        try {
            run();
        } catch (const Fault& caught) {
            fault = caught.what();
        }
        checks_.push_back({std::move(name), std::move(fault)});
    }
    [[nodiscard]] const std::vector<Check>& all() const { return checks_; }

  private:
    std::vector<Check> checks_;
};

} // namespace zsp::conformance
