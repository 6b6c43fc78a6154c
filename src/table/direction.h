#pragma once

namespace Quask {

// The way of a walk over the buckets. Every value but `upward` walks downward.
enum class Direction : int
{
    downward = -1,
    upward = 1
};

}  // namespace Quask
