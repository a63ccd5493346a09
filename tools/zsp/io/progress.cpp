// A line on the terminal that is written over as work goes on.

#include "tools/zsp/io/progress.hpp"

#include <cstdio>
#include <unistd.h>
#include <utility>

namespace zsp::host {

Progress::Progress(std::string label, std::optional<std::uint64_t> total)
    : label_(std::move(label)), total_(total), enabled_(isatty(STDERR_FILENO) == 1),
      next_(Clock::now() + std::chrono::milliseconds(500))
{
}

Progress::~Progress()
{
    if (shown_) std::fputs("\r\033[K", stderr);
}

void Progress::update(std::uint64_t done)
{
    if (!enabled_ || Clock::now() < next_) return;
    next_ = Clock::now() + std::chrono::milliseconds(200);
    shown_ = true;
    if (total_ && *total_ > 0)
        std::fprintf(stderr, "\r\033[K%s: %.0f %%", label_.c_str(),
                     100.0 * static_cast<double>(done) / static_cast<double>(*total_));
    else
        std::fprintf(stderr, "\r\033[K%s: %.1f million samples", label_.c_str(),
                     static_cast<double>(done) / 1e6);
    std::fflush(stderr);
}

} // namespace zsp::host
