// What came of the reference vectors, as text, JSON and a page.
#pragma once

#include "conformance/families.hpp"

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace zsp::host {

struct FamilyResult {
    const conformance::Family* family;
    std::vector<conformance::Check> checks; // none where the directory has no vectors of it
    std::size_t passed = 0;
};

struct Conformance {
    std::string directory;
    std::string library, voice; // versions
    std::string file;           // that the library was loaded from
    std::string processor;
    std::string time; // UTC
    std::vector<FamilyResult> families;
    std::size_t passed = 0, total = 0, files = 0; // files of vectors
};

/// Runs all checks. Without vectors of a family it has none, or, with `wantAll`, one that failed.
Conformance checkConformance(const std::filesystem::path& vectors, bool wantAll);

std::string textOf(const Conformance& result);

using ConformanceWriter = void (*)(const Conformance& result, const std::string& path);

/// What writes the kind of file that the extension of `path` tells; else a UsageError.
ConformanceWriter conformanceWriter(const std::string& path);

} // namespace zsp::host
