// What the files in describe/ share: each describes the exports of one family and hands them in.
#pragma once

#include "tests/fuzz/description.hpp"

#include <string>
#include <utility>
#include <vector>

namespace zsp::fuzz {

using Word = std::int16_t;
using Long = std::int32_t;

/// Hands in what a file describes; one stands at the end of each:
///
///   const Described kDescribed(describe);
class Described {
  public:
    explicit Described(std::vector<Family> (*describe)());
};

/// An export that reports the size of a state and takes nothing else.
template <Long bytes>
Description sizeOf(std::string name, ZspStatus (*function)(Long*))
{
    return {std::move(name), function, {out(1)}, {nulls()}, [](Long* size) { *size = bytes; }};
}

/// For states that are set up in one way only.
inline SetUp noSetUp(Choices&)
{
    return {};
}

} // namespace zsp::fuzz
