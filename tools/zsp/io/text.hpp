// Small helpers for text.
#pragma once

#include <string>

namespace zsp::host {

/// As snprintf().
[[gnu::format(printf, 1, 2)]] std::string format(const char* pattern, ...);

/// With the characters that mean something in HTML written as entities.
std::string escaped(const std::string& text);

/// A ratio in dB as text, or "-" where there was nothing but silence.
std::string ratioText(double db, int decimals);

} // namespace zsp::host
