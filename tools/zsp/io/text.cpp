// Formatted and escaped text.

#include "tools/zsp/io/text.hpp"

#include <cmath>
#include <cstdarg>
#include <cstdio>

namespace zsp::host {

std::string format(const char* pattern, ...)
{
    std::va_list arguments, again;
    va_start(arguments, pattern);
    va_copy(again, arguments);
    // The analyzer takes va_start for a function that leaves its argument alone.
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized)
    const int length = std::vsnprintf(nullptr, 0, pattern, arguments);
    va_end(arguments);
    std::string text(static_cast<std::size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, pattern, again);
    va_end(again);
    return text;
}

std::string escaped(const std::string& text)
{
    std::string result;
    for (const char c : text) {
        switch (c) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '"':
            result += "&quot;";
            break;
        default:
            result += c;
        }
    }
    return result;
}

std::string lowerCase(std::string text)
{
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

std::string countOf(std::uint64_t count, const std::string& noun)
{
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string listed(const std::vector<std::string>& names)
{
    std::string list;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (i > 0) list += i + 1 < names.size() ? ", " : " or ";
        list += names[i];
    }
    return list;
}

std::string ratioText(double db, int decimals)
{
    return std::isnan(db) || db < -50 ? "-" : format("%.*f", decimals, db);
}

} // namespace zsp::host
