// Small helpers for text.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zsp::host {

// How the compiler is to check a format: MinGW has two printf, and C++ gets the standard's.
#ifdef __MINGW_PRINTF_FORMAT
#define ZSP_PRINTF __MINGW_PRINTF_FORMAT
#else
#define ZSP_PRINTF printf
#endif

/// As snprintf().
[[gnu::format(ZSP_PRINTF, 1, 2)]] std::string format(const char* pattern, ...);
#undef ZSP_PRINTF

/// With the characters that mean something in HTML written as entities.
std::string escaped(const std::string& text);

/// ASCII letters in lower case.
std::string lowerCase(std::string text);

/// "1 byte", "2 bytes".
std::string countOf(std::uint64_t count, const std::string& noun);

/// "a, b or c".
std::string listed(const std::vector<std::string>& names);

/// A ratio in dB as text, or "-" where there was nothing but silence.
std::string ratioText(double db, int decimals);

} // namespace zsp::host
