// Checks of numbers and choices, and their words.

#include "tools/zsp/cli/values.hpp"

#include <charconv>
#include <cmath>

namespace zsp::host {

Take takeNumber(double low, double high, const std::string& unit,
                std::function<void(double)> target)
{
    return [=, target = std::move(target)](const std::string& text) {
        const char* end = text.data() + text.size();
        const char* begin = text.starts_with("+") ? text.data() + 1 : text.data();
        double value = 0;
        const auto [stop, error] = std::from_chars(begin, end, value);
        if (error != std::errc() || stop != end || !(value >= low && value <= high))
            throw UsageError(text + format(" is not a number from %g to %g", low, high) + unit);
        target(value);
    };
}

Take takeText(std::string& target)
{
    return [&target](const std::string& text) { target = text; };
}

Option formatOption(const AudioFormat*& target)
{
    return {"--format", 'f', "KIND",
            "Kind of the audio file, when its name does not tell: " + audioFormatNames(),
            [&target](const std::string& name) {
                target = audioFormatByName(name);
                if (!target) throw UsageError(name + " is not " + audioFormatNames());
            }};
}

} // namespace zsp::host
