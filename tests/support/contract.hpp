// What every export promises about its arguments, as data.
//
// A contract is one valid call and the ways to spoil it, in the order of the export's checks. From
// that the runner makes these calls, each with fresh guarded buffers:
//
//   - the valid call, with every state at an even and at an odd address;
//   - each row;
//   - each pair of rows that spoil different arguments: the earlier row's status wins;
//   - each required pointer null, alone and with each row: zspStsNullPtrErr wins;
//   - all required pointers null and all numbers -1.
//
// After a failed call every buffer holds what it held before; after any call inputs and guards do,
// and the processor is as a callee has to leave it.
#pragma once

#include "tests/support/bound.hpp"
#include "tests/support/checked_call.hpp"
#include "zspsc/types.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace zsp::test {

/// One argument of a call.
struct Argument {
    enum class Kind { input, output, state, number };

    Kind kind = Kind::number;
    double value = 0;                 // a number
    std::vector<std::byte> content;   // a buffer's bytes before the call
    std::function<void(void*)> setUp; // a state's initialisation
    bool isNull = false;
    bool isOptional = false;
    bool isReported = false;     // may be written by a call that fails
    const void* fixed = nullptr; // handed over itself, not a copy of its bytes

    bool isPointer() const { return kind != Kind::number; }

    /// The same pointer argument, which may be null.
    Argument optional() const
    {
        Argument a = *this;
        a.isOptional = true;
        return a;
    }

    /// The same output, where a failed call may say how much it would need.
    Argument reported() const
    {
        Argument a = *this;
        a.isReported = true;
        return a;
    }
};

/// An object that the call knows by its address, such as a constant record of the library's.
inline Argument pointer(const void* object)
{
    return {.kind = Argument::Kind::input, .content = {}, .setUp = {}, .fixed = object};
}

inline Argument number(double value)
{
    return {.value = value, .content = {}, .setUp = {}};
}

inline Argument null()
{
    return {.kind = Argument::Kind::input, .content = {}, .setUp = {}, .isNull = true};
}

template <typename T>
Argument buffer(Argument::Kind kind, const std::vector<T>& values)
{
    Argument a{.kind = kind, .content = {}, .setUp = {}};
    a.content.resize(values.size() * sizeof(T));
    if (!values.empty()) std::memcpy(a.content.data(), values.data(), a.content.size());
    return a;
}

/// Elements that the call only reads.
template <typename T>
Argument in(const std::vector<T>& values)
{
    return buffer(Argument::Kind::input, values);
}

template <typename T>
Argument in(std::size_t count)
{
    return in(std::vector<T>(count, T{}));
}

/// Elements that the call writes, or reads and writes.
template <typename T>
Argument out(const std::vector<T>& values)
{
    return buffer(Argument::Kind::output, values);
}

template <typename T>
Argument out(std::size_t count)
{
    return out(std::vector<T>(count, T{}));
}

/// A state of so many bytes, made ready by `setUp` (which may be empty).
inline Argument state(std::size_t bytes, std::function<void(void*)> setUp = {})
{
    Argument a = out<std::byte>(bytes);
    a.kind = Argument::Kind::state;
    a.setUp = std::move(setUp);
    return a;
}

/// An argument replaced by another: `{2, null()}`, `{3, number(-1)}`.
struct Change {
    std::size_t index;
    Argument argument;
};

struct Row {
    std::vector<Change> changes;
    ZspStatus want;
};

class Contract {
  public:
    template <typename... P>
    Contract(std::string name, ZspStatus (*function)(P...), std::vector<Argument> arguments)
        : name_(std::move(name)), arguments_(std::move(arguments)),
          call_([function](const std::vector<Bound>& bound) {
              return invoke(checked(function), bound);
          }),
          arity_(sizeof...(P))
    {
    }

    /// A way to spoil the call and what it then returns. Rows stand in the order of the checks.
    Contract& row(std::initializer_list<Change> changes, ZspStatus want)
    {
        rows_.push_back({changes, want});
        return *this;
    }

    /// Checks of this export do not start with the null pointers: its rows say when null is found.
    Contract& nullChecksInRows()
    {
        nullFirst_ = false;
        return *this;
    }

    const std::string& name() const { return name_; }

    /// Makes all calls; reports through GoogleTest.
    void run() const;

  private:
    void check(const std::vector<Argument>& arguments, ZspStatus want, std::size_t offset,
               const std::string& what) const;

    std::string name_;
    std::vector<Argument> arguments_;
    std::function<ZspStatus(const std::vector<Bound>&)> call_;
    std::size_t arity_;
    std::vector<Row> rows_;
    bool nullFirst_ = true;
};

/// All contracts of the test program.
std::vector<Contract>& contracts();

/// Registers the contracts of one family: `const bool registered = addContracts({...});`
bool addContracts(std::vector<Contract> more);

} // namespace zsp::test

/// The exported function's name and address, to begin a Contract with.
#define ZSP_NAMED(function) #function, &function
