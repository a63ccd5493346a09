// Reading of traces, and results held against them.

#include "conformance/trace.hpp"

#include <cstdlib>
#include <sstream>

namespace zsp::conformance {

std::set<std::string> namesOf(const std::string& line)
{
    std::istringstream words(line);
    return {std::istream_iterator<std::string>(words), {}};
}

Results& Recorder::results()
{
    thread_local Results results;
    return results;
}

Trace::Trace(const Vectors& vectors, const std::string& file, const std::string& opening,
             const std::string& closing)
    : file_(file)
{
    Results* frame = nullptr;
    Results others;
    for (const auto& line : vectors.runs(file)) {
        std::vector<std::int32_t> values;
        for (std::size_t i = 1; i < line.size(); ++i)
            if (!line[i].ends_with(':'))
                values.push_back(
                    static_cast<std::int32_t>(std::strtol(line[i].c_str(), nullptr, 10)));
        if (line[0] == opening) {
            if (values.size() != 1) throw Fault(file + ": " + opening + " without a number");
            frame = &frames_[values[0]];
            continue;
        }
        if (line[0] == closing) frame = &others;
        if (!frame) throw Fault(file + " begins without a frame");
        (*frame)[line[0]].push_back(std::move(values));
    }
}

void Trace::requireFrame(std::int32_t number, const Results& got,
                         const std::set<std::string>& inner) const
{
    for (const auto& [name, wanted] : frames_.at(number)) {
        if (inner.contains(name)) continue;
        const std::string what = file_ + ", frame " + std::to_string(number) + ", " + name;
        const auto found = got.find(name);
        const std::size_t count = found == got.end() ? 0 : found->second.size();
        if (count != wanted.size())
            throw Fault(what + ": " + std::to_string(count) + " results, wanted " +
                        std::to_string(wanted.size()));
        for (std::size_t i = 0; i < count; ++i)
            requireEqual(found->second[i], wanted[i], what + ", result " + std::to_string(i));
    }
}

} // namespace zsp::conformance
