#pragma once

#include <bit>
#include <cstdint>

namespace QuaskTesting {

// A moment of a writer's run: the number of stores that it has made.
using Moment = unsigned;

// A set of moments: bit k for moment k.
using Moments = std::uint64_t;

constexpr Moment latestPossible = 63;

constexpr Moments only(Moment moment)
{
    return Moments{1} << moment;
}
constexpr Moments from(Moment first)
{
    return ~Moments{0} << first;
}
constexpr Moments upTo(Moment last)
{
    return ~Moments{0} >> (latestPossible - last);
}
constexpr Moments between(Moment first, Moment last)
{
    return from(first) & upTo(last);
}
constexpr bool contains(Moments moments, Moment moment)
{
    return (moments & only(moment)) != 0;
}

// Of a set that is not empty.
constexpr Moment earliest(Moments moments)
{
    return static_cast<Moment>(std::countr_zero(moments));
}
constexpr Moment latest(Moments moments)
{
    return latestPossible - static_cast<Moment>(std::countl_zero(moments));
}

}  // namespace QuaskTesting
