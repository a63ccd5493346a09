// The families that have reference vectors: one file and one line of the table each. A check goes
// from a vector through the exports of the public header alone, in one call, in blocks of many
// lengths and in the shortest ones, in place where that is promised, and wants every word equal.
#pragma once

#include "conformance/vectors.hpp"

#include <span>

namespace zsp::conformance {

struct Family {
    const char* name;
    const char* standard;
    std::vector<std::string> folders; // of the directory of vectors
    /// Adds the checks. A Fault outside of a check is one that concerns all, such as a missing
    /// list.
    void (*run)(const Vectors& vectors, Checks& checks);
};

/// In the order in which a report names them.
std::span<const Family> families();

/// All checks of a family; there is always at least one.
std::vector<Check> checksOf(const Family& family, const Vectors& vectors);

void checkG711(const Vectors& vectors, Checks& checks);
void checkG722(const Vectors& vectors, Checks& checks);
void checkG723(const Vectors& vectors, Checks& checks);
void checkG726(const Vectors& vectors, Checks& checks);
void checkG728(const Vectors& vectors, Checks& checks);
void checkG729(const Vectors& vectors, Checks& checks);
void checkG729Coder(const Vectors& vectors, Checks& checks);
void checkG729Encoder(const Vectors& vectors, Checks& checks);
void checkG729Decoder(const Vectors& vectors, Checks& checks);
void checkG729Pauses(const Vectors& vectors, Checks& checks);
void checkGsmFullRate(const Vectors& vectors, Checks& checks);
void checkGsmAmr(const Vectors& vectors, Checks& checks);
void checkAmrWb(const Vectors& vectors, Checks& checks);
void checkLevelControl(const Vectors& vectors, Checks& checks);

} // namespace zsp::conformance
