// Small helpers for text.
#pragma once

#include <string>

namespace zsp::host {

/// As snprintf().
[[gnu::format(printf, 1, 2)]] std::string format(const char* pattern, ...);

/// With the characters that mean something in HTML written as entities.
std::string escaped(const std::string& text);

} // namespace zsp::host
