// Reference vectors from tests/vectors.
#pragma once

#include "conformance/vectors.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

namespace zsp::test {

/// A file of tests/vectors. Only vectors.cpp knows where that is, so that the other files compile
/// to the same in every checkout.
std::filesystem::path vectorPath(const std::string& name);

/// All elements of a raw little-endian file; a missing file fails the test.
template <typename T>
std::vector<T> readVector(const std::string& name)
try {
    return conformance::Vectors(vectorPath("")).read<T>(name);
} catch (const conformance::Fault& fault) {
    ADD_FAILURE() << fault.what();
    return {};
}

/// The checks of a family in conformance/ whose names begin so: all pass, and there are `count`.
void expectConforms(const std::string& family, std::size_t count, const std::string& prefix = "");

/// `count` elements from `first` on.
template <typename T>
std::vector<T> part(const std::vector<T>& from, std::size_t first, std::size_t count)
{
    const auto at = from.begin() + static_cast<std::ptrdiff_t>(first);
    return {at, at + static_cast<std::ptrdiff_t>(count)};
}

/// The lines of a text file, split into words, without blank lines and comments.
inline std::vector<std::vector<std::string>> readRuns(const std::string& name)
try {
    return conformance::Vectors(vectorPath("")).runs(name);
} catch (const conformance::Fault& fault) {
    ADD_FAILURE() << fault.what();
    return {};
}

/// Compares element by element and names the first difference.
template <typename A, typename B>
void expectEqual(const A& got, const B& want, const std::string& what)
{
    ASSERT_EQ(std::size(got), std::size(want)) << what;
    for (std::size_t i = 0; i < std::size(got); ++i)
        ASSERT_EQ(got[i], want[i]) << what << ", element " << i;
}

} // namespace zsp::test
