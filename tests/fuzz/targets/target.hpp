// What the targets of the fuzzer share. A target is a file with one function, which takes bytes
// from anywhere and must come back:
//
//   extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
//
// With clang's libFuzzer it becomes a fuzzer; in all other builds corpus_main.cpp runs it over the
// inputs in the tree.
#pragma once

#include "tests/fuzz/choices.hpp"
#include "tests/support/unwritten.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
/// Reads the target's own options, which begin with two dashes. Only some targets have it.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);

namespace zsp::fuzz {

/// Ends the run where something is not as documented.
inline void must(bool holds, const char* what)
{
    if (holds) return;
    std::fprintf(stderr, "not so: %s\n", what);
    std::abort();
}

/// Elements in a block of exactly their size, behind which the address sanitizer sees every step;
/// before anything is written, the memory sanitizer sees who reads. A block of none can be pointed
/// at, too.
template <typename T>
class Exact {
  public:
    explicit Exact(std::size_t count)
        : size_(count), data_(std::make_unique_for_overwrite<T[]>(count))
    {
    }
    template <typename From>
    explicit Exact(std::span<From> from) : Exact(from.size())
    {
        std::copy(from.begin(), from.end(), data_.get());
    }

    T* data() { return data_.get(); }
    std::span<T> all() { return {data_.get(), size_}; }
    /// Everything must have been written by now.
    void seen() const { test::requireWritten(data_.get(), size_ * sizeof(T)); }
    std::int32_t count() const { return static_cast<std::int32_t>(size_); }

  private:
    std::size_t size_;
    std::unique_ptr<T[]> data_;
};

/// The next bytes of an input, as far as there are.
inline Exact<std::uint8_t> take(Choices& choices, std::size_t most)
{
    Exact<std::uint8_t> bytes(std::min(most, choices.left()));
    for (std::uint8_t& byte : bytes.all())
        byte = choices.bits<std::uint8_t>();
    return bytes;
}

} // namespace zsp::fuzz
