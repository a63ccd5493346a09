// A sound for a report's player. A file that browsers play is linked; of others, of standard input
// and output, the beginning goes into the report itself.
#pragma once

#include "tools/zsp/report/report.hpp"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zsp::host {

class SoundClip {
  public:
    SoundClip(std::string path, int rate);

    void add(std::span<const std::int16_t> samples);
    [[nodiscard]] Report::Player player(const std::string& label,
                                        const std::string& reportPath) const;

  private:
    std::string path_;
    int rate_;
    bool linked_, cut_ = false;
    std::vector<std::int16_t> samples_;
};

} // namespace zsp::host
