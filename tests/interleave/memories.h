#pragma once

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "interleave/interleaved_memory.h"
#include "interleave/weakly_ordered_memory.h"

// For tests that are made with both kinds of memory:
//
//     template <typename Memory>
//     class Something : public testing::Test
//     {};
//     TYPED_TEST_SUITE(Something, BothMemories, MemoryNames);
namespace QuaskTesting {

using BothMemories = testing::Types<InterleavedMemory, WeaklyOrderedMemory>;

struct MemoryNames
{
    template <typename Memory>
    static std::string GetName(int /*index*/)
    {
        return std::is_same_v<Memory, InterleavedMemory> ? "Interleaved" : "WeaklyOrdered";
    }
};

}  // namespace QuaskTesting
