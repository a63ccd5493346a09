// The numbers of a random call, and which of its pointers are null.

#include "tests/fuzz/caller.hpp"
#include "tests/fuzz/checks.hpp"

#include <algorithm>
#include <array>
#include <cmath>

namespace zsp::fuzz {

namespace {

constexpr std::int64_t kVectors = 8;

/// Whether the blocks of a valid call are small enough.
bool fits(const Description& d, const Call& call)
{
    for (std::size_t i = 0; i < d.arguments.size(); ++i) {
        const Argument& a = d.arguments[i];
        if (!a.isPointer() || a.kind == Argument::Kind::state) continue;
        const auto most = static_cast<std::int64_t>(Blocks::kLargest / d.parameters[i].bytes);
        if (a.length.of(call) > (d.parameters[i].isVectors ? kVectors : most)) return false;
        if (a.before.of(call) > most || a.length.of(call) + a.before.of(call) > most) return false;
        if (a.each.of(call) > most) return false;
    }
    return true;
}

} // namespace

double Caller::draw(const Argument& a, const Parameter& p, bool cautious)
{
    if (!a.list.empty()) return a.list[size(choices_.below(static_cast<int>(a.list.size())))];
    if (p.isReal)
        return static_cast<float>(a.low + (a.tried - a.low) * choices_.below(4097) / 4096);
    const double high = std::min(a.tried, a.high);
    if (!cautious && choices_.oneIn(8)) return choices_.oneOf(std::array{a.low, high, a.high});
    const auto low = static_cast<std::int64_t>(a.low);
    const bool isSmall = high - a.low > 64 && choices_.below(2) == 0;
    const std::int64_t value =
        choices_.between(low, isSmall ? low + 48 : static_cast<std::int64_t>(high));
    return static_cast<double>((value + a.step - 1) / a.step * a.step);
}

double Caller::spoil(const Argument& a, const Parameter& p)
{
    const double valid = draw(a, p, false);
    const double any = static_cast<double>(choices_.bits<std::uint32_t>()) + kMin;
    const std::array integers = {a.low - 1, a.high + 1, 0.0,       -1.0, 1.0,      p.low,
                                 p.high,    valid + 1,  valid - 1, any,  valid * 2};
    const std::array reals = {std::nan(""),      -HUGE_VAL, HUGE_VAL, a.low - 1e-6,
                              a.high * 1.000001, -valid,    valid + 1};
    if (p.isReal) return static_cast<float>(choices_.oneOf(reals));
    return std::clamp(choices_.oneOf(integers), p.low, std::min(p.high, a.spoiltTo));
}

/// Numbers, and which pointers are null; others point anywhere for the time being. Returns whether
/// all checks pass that look at no content.
bool Caller::drawArguments(const Description& d, Call& call, bool valid)
{
    for (int attempt = 0; attempt < 40; ++attempt) {
        for (std::size_t i = 0; i < d.arguments.size(); ++i) {
            const Argument& a = d.arguments[i];
            if (a.isPointer())
                call.bound(i).pointer = a.isOptional && choices_.oneIn(3) ? nullptr : this;
            else
                call.bound(i).number = draw(a, d.parameters[i], attempt > 3);
        }
        for (int spoils = valid ? 0 : 1 + choices_.below(2); spoils > 0; --spoils) {
            const auto i = size(choices_.below(static_cast<int>(d.arguments.size())));
            if (d.arguments[i].isPointer())
                call.bound(i).pointer = nullptr;
            else
                call.bound(i).number = spoil(d.arguments[i], d.parameters[i]);
        }
        const Check* check = firstFailing(d, call, false);
        const bool isFull = !check || check->mayWrite;
        if ((!check || !valid) && (!isFull || fits(d, call))) return !check;
    }
    for (std::size_t i = 0; i < d.arguments.size(); ++i) // no valid call found
        call.bound(i).pointer = nullptr;
    return false;
}

} // namespace zsp::fuzz
