// The arguments of an export for random calls: their lengths and ranges, as data.
#pragma once

#include "tests/support/bound.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <span>
#include <utility>
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

} // namespace zsp::fuzz
