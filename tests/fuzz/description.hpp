// What an export takes and answers, as data from which calls can be made at random.
//
// A description lists the arguments with their lengths and ranges and the checks in the documented
// order; a definition, where there is one, has the export's signature and computes the same by
// other means. Exports that share a state form a family, which knows how to set a state up. To
// describe an export means two lines in its family's file:
//
//   {ZSP_DESCRIBED(zspsInvSqrt_32s_I), {inOut(arg(1)), length()}, {nulls(), outside(1,
//   zspStsSizeErr)},
//    [](std::int32_t* x, std::int32_t len) { common::invSqrtScalar({x, size(len)}); }},
#pragma once

#include "core/leaving.hpp"
#include "tests/fuzz/arguments.hpp"
#include "tests/fuzz/choices.hpp"
#include "tests/support/checked_call.hpp"
#include "zspsc.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

namespace zsp::fuzz {

/// One of the documented checks: what the call returns when it fails.
struct Check {
    ZspStatus status;
    std::function<bool(const Call&)> fails;
    std::vector<std::size_t> which = {}; // instead: pointers that are null, a number out of range
    bool looksAtContent = false;
    bool mayWrite = false; // scratch, of its full size, before it fails

    static constexpr std::size_t kAll = ~std::size_t{0};
};

inline Check nulls(std::vector<std::size_t> which = {Check::kAll})
{
    return {zspStsNullPtrErr, {}, std::move(which)};
}
/// A number outside its range; its bounds are the argument's.
inline Check outside(std::size_t argument, ZspStatus status)
{
    return {status, {}, {argument}};
}
inline Check when(std::function<bool(const Call&)> fails, ZspStatus status)
{
    return {status, std::move(fails)};
}
/// A check before which a state may have been written to already.
inline Check whenWritten(std::function<bool(const Call&)> fails, ZspStatus status)
{
    return {status, std::move(fails), {}, false, true};
}
/// A check that reads a block, after all before it have passed.
inline Check whenContent(std::function<bool(const Call&)> fails, ZspStatus status)
{
    return {status, std::move(fails), {}, true};
}

/// Kinds of elements that blocks hold.
enum class Element { bytes, words, longs, reals, doubles, records };

struct Parameter {
    Element element;
    std::size_t bytes, alignment; // of one element
    bool isVectors;               // an array of pointers to vectors of these elements
    bool isReal;                  // a number, not an integer
    double low, high;             // what its type holds
};

template <typename P>
Parameter parameter()
{
    if constexpr (std::is_pointer_v<P>) {
        using T = std::remove_const_t<std::remove_pointer_t<P>>;
        if constexpr (std::is_pointer_v<T>) {
            Parameter inner = parameter<T>();
            inner.isVectors = true;
            return inner;
        } else if constexpr (std::is_void_v<T>) {
            return {Element::bytes, 1, 1, false, false, 0, 0};
        } else {
            constexpr auto kElement = std::is_same_v<T, std::uint8_t>   ? Element::bytes
                                      : std::is_same_v<T, std::int16_t> ? Element::words
                                      : std::is_same_v<T, std::int32_t> ? Element::longs
                                      : std::is_same_v<T, Zsp32sc>      ? Element::longs
                                      : std::is_same_v<T, float>        ? Element::reals
                                      : std::is_same_v<T, Zsp32fc>      ? Element::reals
                                      : std::is_same_v<T, double>       ? Element::doubles
                                                                        : Element::records;
            return {kElement, sizeof(T), kElement == Element::records ? 1 : alignof(T),
                    false,    false,     0,
                    0};
        }
    } else {
        return {Element::bytes,
                0,
                0,
                false,
                std::is_floating_point_v<P>,
                static_cast<double>(std::numeric_limits<P>::lowest()),
                static_cast<double>(std::numeric_limits<P>::max())};
    }
}

struct Description {
    template <typename... P>
    Description(std::string exportName, ZspStatus (*function)(P...), std::vector<Argument> takes,
                std::vector<Check> checksInOrder,
                std::type_identity_t<void (*)(P...)> definition = nullptr)
        : name(std::move(exportName)), arguments(std::move(takes)),
          checks(std::move(checksInOrder)), parameters{parameter<P>()...},
          call([function](std::span<const Bound> bound) { return test::invoke(function, bound); }),
          checkedCall([function](std::span<const Bound> bound) {
              return test::invoke(test::checked(function), bound);
          })
    {
        if (definition)
            define = [definition](std::span<const Bound> bound) {
                if constexpr ((hasFloats<P> || ...)) { // as on the way into an export
                    const DenormalsAreZero scope;
                    return test::invoke(definition, bound);
                }
                test::invoke(definition, bound);
            };
    }

    std::string name;
    std::vector<Argument> arguments;
    std::vector<Check> checks;
    std::vector<Parameter> parameters;
    std::function<ZspStatus(std::span<const Bound>)> call, checkedCall;
    std::function<void(std::span<const Bound>)> define;
};

/// Exports that work on one kind of state, or on none.
struct Family {
    std::string name;
    std::vector<Description> exports;

    // The state, for families that have one.
    std::function<SetUp(Choices&)> draw = {};
    Length bytes = 0; // from the set-up
    std::function<void(const SetUp&, void*)> init = {};
    std::function<void(Choices&, void*)> touch = {}; // what a caller may write between calls
    std::size_t alignment = 1;                       // where the record begins in the buffer
    bool holdsPointers = false;                      // to itself: two states are never equal

    bool hasState() const { return static_cast<bool>(init); }
};

/// All families of the library.
const std::vector<Family>& families();

} // namespace zsp::fuzz

#define ZSP_DESCRIBED(function) #function, &function
