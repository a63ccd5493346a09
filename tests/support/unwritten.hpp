// Marks memory as not written yet, for the memory sanitizer and for Valgrind, which then tell who
// uses it. Nothing where neither looks.
#pragma once

#include <cstddef>

#ifdef __has_feature
#if __has_feature(memory_sanitizer)
#define ZSP_MSAN
#include <sanitizer/msan_interface.h>
#endif
#endif
#if !defined(ZSP_MSAN) && __has_include(<valgrind/memcheck.h>)
#define ZSP_MEMCHECK
#include <valgrind/memcheck.h>
#endif

namespace zsp::test {

inline void markUnwritten([[maybe_unused]] void* memory, [[maybe_unused]] std::size_t bytes)
{
#if defined(ZSP_MSAN)
    __msan_poison(memory, bytes);
#elif defined(ZSP_MEMCHECK)
    VALGRIND_MAKE_MEM_UNDEFINED(memory, bytes);
#endif
}

/// A report unless all of it was written.
inline void requireWritten([[maybe_unused]] const void* memory, [[maybe_unused]] std::size_t bytes)
{
#if defined(ZSP_MSAN)
    __msan_check_mem_is_initialized(memory, bytes);
#elif defined(ZSP_MEMCHECK)
    VALGRIND_CHECK_MEM_IS_DEFINED(memory, bytes);
#endif
}

} // namespace zsp::test
