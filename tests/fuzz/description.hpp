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
#include "tests/fuzz/choices.hpp"
#include "tests/support/bound.hpp"
#include "tests/support/checked_call.hpp"
#include "zspsc.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

namespace zsp::fuzz {

using test::Bound;

inline std::size_t size(std::int64_t n)
{
    return static_cast<std::size_t>(n);
}

/// What a state was set up with, and what lengths of arguments follow from it.
using SetUp = std::vector<std::int64_t>;

/// The arguments of the call that is being made, as lengths and checks see them.
class Call {
  public:
    Call(const SetUp& setUp, std::size_t arguments) : setUp_(setUp), bound_(arguments) {}

    std::int64_t number(std::size_t i) const { return static_cast<std::int64_t>(bound_[i].number); }
    double real(std::size_t i) const { return bound_[i].number; }
    std::int64_t setUp(std::size_t i) const { return setUp_.at(i); }
    template <typename T>
    const T* data(std::size_t i) const
    {
        return static_cast<const T*>(bound_[i].pointer);
    }

    Bound& bound(std::size_t i) { return bound_[i]; }
    std::span<const Bound> all() const { return bound_; }

  private:
    const SetUp& setUp_;
    std::vector<Bound> bound_;
};

/// Elements of a block: a constant, or what numbers of the call and the state's set-up say.
struct Length {
    Length(int constant) : of([constant](const Call&) { return std::int64_t{constant}; }) {}
    Length(std::function<std::int64_t(const Call&)> f) : of(std::move(f)) {}

    std::function<std::int64_t(const Call&)> of;
};

/// A block's bytes as elements.
template <typename T>
std::span<T> elements(std::span<std::byte> bytes)
{
    return {static_cast<T*>(static_cast<void*>(bytes.data())), bytes.size() / sizeof(T)};
}

inline Length arg(std::size_t i)
{
    return {[i](const Call& c) { return c.number(i); }};
}

inline Length setUp(std::size_t i)
{
    return {[i](const Call& c) { return c.setUp(i); }};
}

struct Argument {
    enum class Kind { number, in, out, inOut, scratch, state };

    Kind kind = Kind::number;
    // Numbers: the documented range, the largest one tried where lengths follow, or a list.
    double low = 0, high = 0, tried = 0;
    std::vector<double> list = {};
    int step = 1;             // valid calls take multiples of it
    double spoiltTo = 0x1p31; // no number is tried beyond it
    // Blocks: elements, those in front of the pointer, and of pointer arrays those of each vector.
    Length length = 0, before = 0, each = 0;
    bool isOptional = false;
    std::vector<std::size_t> mayBe = {}; // may share its memory with one of these
    std::function<void(const Call&, std::span<std::byte>)> fit =
        {}; // restricts random content to what is accepted

    bool isPointer() const { return kind != Kind::number; }

    Argument with(std::function<void(Argument&)> change) const
    {
        Argument a = *this;
        change(a);
        return a;
    }
    Argument upTo(double most) const
    {
        return with([=](Argument& a) { a.tried = most; });
    }
    Argument multipleOf(int unit) const
    {
        return with([=](Argument& a) { a.step = unit; });
    }
    Argument optional() const
    {
        return with([](Argument& a) { a.isOptional = true; });
    }
    Argument orIn(std::initializer_list<std::size_t> others) const
    {
        return with([=](Argument& a) { a.mayBe = others; });
    }
    Argument after(const Length& past) const
    {
        return with([=](Argument& a) { a.before = past; });
    }
    Argument fitted(std::function<void(const Call&, std::span<std::byte>)> change) const
    {
        return with([=](Argument& a) { a.fit = change; });
    }
};

inline constexpr double kMax = 2147483647, kMin = -2147483648.0;

inline Argument number(double low, double high)
{
    return {.low = low, .high = high, .tried = high};
}
inline Argument real(double low, double high)
{
    return number(low, high);
}
inline Argument oneOf(std::initializer_list<double> list)
{
    return {.list = list};
}
/// A count of at least one.
inline Argument length(double tried = 400)
{
    return number(1, kMax).upTo(tried);
}
inline Argument anyWord()
{
    return number(-32768, 32767);
}
inline Argument block(Argument::Kind kind, Length elements, Length each = 0)
{
    return {.kind = kind, .length = std::move(elements), .each = std::move(each)};
}
/// Elements, or for an array of pointers their number and the elements behind each.
inline Argument in(Length elements, Length each = 0)
{
    return block(Argument::Kind::in, std::move(elements), std::move(each));
}
inline Argument out(Length elements)
{
    return block(Argument::Kind::out, std::move(elements));
}
inline Argument inOut(Length elements, Length each = 0)
{
    return block(Argument::Kind::inOut, std::move(elements), std::move(each));
}
/// Memory of any content before, and of any after.
inline Argument scratch(Length bytes)
{
    return block(Argument::Kind::scratch, std::move(bytes));
}
/// The family's state.
inline Argument state()
{
    return block(Argument::Kind::state, 0);
}

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
