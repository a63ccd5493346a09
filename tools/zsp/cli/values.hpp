// What options take: numbers, choices and names, each with words for what is allowed.
#pragma once

#include "tools/zsp/cli/command.hpp"
#include "tools/zsp/io/audio_format.hpp"
#include "tools/zsp/io/failure.hpp"
#include "tools/zsp/io/text.hpp"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zsp::host {

using Take = std::function<void(const std::string&)>;

/// A finite number from `low` to `high`; `unit` with a blank before it, or empty.
Take takeNumber(double low, double high, const std::string& unit,
                std::function<void(double)> target);

/// Any text but an empty one.
Take takeText(std::string& target);

/// One of some names, letter case aside.
template <typename T>
Take takeChoice(std::vector<std::pair<std::string, T>> choices, T& target)
{
    return [choices = std::move(choices), &target](const std::string& text) {
        std::vector<std::string> names;
        for (const auto& [name, value] : choices) {
            if (lowerCase(text) == name) {
                target = value;
                return;
            }
            names.push_back(name);
        }
        throw UsageError(text + " is not " + listed(names));
    };
}

inline Take takeSwitch(bool& target)
{
    return [&target](const std::string&) { target = true; };
}

/// --format for the kind of an input or output file.
Option formatOption(const AudioFormat*& target);

} // namespace zsp::host
