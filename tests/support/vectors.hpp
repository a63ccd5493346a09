// Reference vectors from tests/vectors.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace zsp::test {

/// A file of tests/vectors. Only vectors.cpp knows where that is, so that the other files compile
/// to the same in every checkout.
std::filesystem::path vectorPath(const std::string& name);

/// All elements of a raw little-endian file; a missing file fails the test.
template <typename T>
std::vector<T> readVector(const std::string& name)
{
    std::ifstream file(vectorPath(name), std::ios::binary);
    if (!file) ADD_FAILURE() << "cannot open " << vectorPath(name);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(bytes.size() % sizeof(T), 0u) << name;
    std::vector<T> values(bytes.size() / sizeof(T));
    if (!values.empty()) std::memcpy(values.data(), bytes.data(), values.size() * sizeof(T));
    return values;
}

/// `count` elements from `first` on.
template <typename T>
std::vector<T> part(const std::vector<T>& from, std::size_t first, std::size_t count)
{
    const auto at = from.begin() + static_cast<std::ptrdiff_t>(first);
    return {at, at + static_cast<std::ptrdiff_t>(count)};
}

/// The lines of a text file, split into words, without blank lines and comments.
inline std::vector<std::vector<std::string>> readRuns(const std::string& name)
{
    std::ifstream file(vectorPath(name));
    if (!file) ADD_FAILURE() << "cannot open " << vectorPath(name);
    std::vector<std::vector<std::string>> runs;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::vector<std::string> run{std::istream_iterator<std::string>(words), {}};
        if (!run.empty() && run[0][0] != '#') runs.push_back(std::move(run));
    }
    return runs;
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
