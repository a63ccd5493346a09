// A call of a function whose arguments stand in a list.
#pragma once

#include <cstddef>
#include <span>
#include <type_traits>
#include <utility>

namespace zsp::test {

/// An argument as a call gets it.
struct Bound {
    void* pointer = nullptr;
    double number = 0;
};

template <typename P>
P bind(const Bound& b)
{
    if constexpr (std::is_pointer_v<P>)
        return static_cast<P>(b.pointer);
    else if constexpr (std::is_enum_v<P>) // whatever its values are, as from C
        return static_cast<P>(static_cast<int>(b.number));
    else
        return static_cast<P>(b.number);
}

template <typename R, typename... P>
R invoke(R (*function)(P...), std::span<const Bound> bound)
{
    return [&]<std::size_t... I>(std::index_sequence<I...>)
    {
        return function(bind<P>(bound[I])...);
    }
    (std::index_sequence_for<P...>{});
}

} // namespace zsp::test
