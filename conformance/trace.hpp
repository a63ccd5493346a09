// Traces: what the blocks of a coder give in some frames, under the names of the reference's
// program, and the notes of a coder at work, to be held against them.
#pragma once

#include "conformance/vectors.hpp"

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

namespace zsp::conformance {

/// Names that stand in a line, apart from each other.
std::set<std::string> namesOf(const std::string& line);

/// The results of one name in a frame, in the order in which they came.
using Results = std::map<std::string, std::vector<std::vector<std::int32_t>>>;

/// The probe of a coder (voice/codec/shared/probe.hpp) that notes what its blocks give.
struct Recorder {
    /// This thread's. A function, since MinGW defines an inline variable of threads twice.
    static Results& results();

    template <typename T>
    static void show(const char* name, const T& words)
    {
        auto& values = results()[name].emplace_back();
        if constexpr (std::is_integral_v<T>)
            values.assign(1, words);
        else
            values.assign(words.begin(), words.end());
    }
};

/// Lines NAME COUNT: VALUES, one for each result. A frame begins with a line named `opening`, whose
/// value is its number, and ends where a line named `closing` begins what is another coder's.
class Trace {
  public:
    Trace(const Vectors& vectors, const std::string& file, const std::string& opening,
          const std::string& closing = {});

    [[nodiscard]] const std::map<std::int32_t, Results>& frames() const { return frames_; }

    /// Faults where a block of this frame has given something else, or not as often as the trace
    /// says. Names in `inner` are results that no block hands out.
    void requireFrame(std::int32_t number, const Results& got,
                      const std::set<std::string>& inner) const;

  private:
    std::string file_;
    std::map<std::int32_t, Results> frames_; // by their numbers
};

} // namespace zsp::conformance
