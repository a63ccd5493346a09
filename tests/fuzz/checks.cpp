// Which of an export's documented checks a call fails.

#include "tests/fuzz/checks.hpp"

#include <algorithm>

namespace zsp::fuzz {

namespace {

bool isOutside(const Argument& a, double value)
{
    if (!a.list.empty()) return std::find(a.list.begin(), a.list.end(), value) == a.list.end();
    return !(value >= a.low && value <= a.high); // not a number is in no range
}

bool fails(const Description& d, const Check& check, const Call& call)
{
    if (check.fails) return check.fails(call);
    if (check.status != zspStsNullPtrErr)
        return isOutside(d.arguments[check.which[0]], call.real(check.which[0]));
    const auto isNull = [&](std::size_t i) { return !call.data<void>(i); };
    if (check.which[0] != Check::kAll)
        return std::any_of(check.which.begin(), check.which.end(), isNull);
    for (std::size_t i = 0; i < d.arguments.size(); ++i)
        if (d.arguments[i].isPointer() && !d.arguments[i].isOptional && isNull(i)) return true;
    return false;
}

} // namespace

const Check* firstFailing(const Description& d, const Call& call, bool content)
{
    for (const Check& check : d.checks)
        if ((content || !check.looksAtContent) && fails(d, check, call)) return &check;
    return nullptr;
}

} // namespace zsp::fuzz
