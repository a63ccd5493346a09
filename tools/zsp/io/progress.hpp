// One line on the terminal that tells how far a long job is.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace zsp::host {

/// Writes to standard error, only when that is a terminal, from half a second on, five times a
/// second; the destructor clears the line.
class Progress {
  public:
    /// `total` as what update() counts, when it is known.
    Progress(std::string label, std::optional<std::uint64_t> total);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void update(std::uint64_t done);

  private:
    using Clock = std::chrono::steady_clock;

    std::string label_;
    std::optional<std::uint64_t> total_;
    bool enabled_;
    bool shown_ = false;
    Clock::time_point next_;
};

} // namespace zsp::host
