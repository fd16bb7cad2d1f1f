#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <utility>

/// @return the first of the values, which is gone then.
template <class Value>
Value Take(std::deque<Value>& values)
{
    EXPECT_FALSE(values.empty()) << "asked for once too often";
    const Value value = values.empty() ? Value{} : values.front();
    if (!values.empty())
        values.pop_front();
    return value;
}

/// What the kernel services and the host modules do, and what was asked of them.
struct Script
{
    std::deque<std::int64_t> Counts;      ///< the performance counter's next values
    std::function<std::uint64_t()> Ticks; ///< the tick counter
    std::uint64_t TickRate = 0;
    int PriorityResult = 1;
    /// The next kernel and user times; when there are none, asking fails.
    std::deque<std::pair<std::uint64_t, std::uint64_t>> ProcessTimes;
    /// Counts read and other calls: "100|priority 15|debug a line|log the format" and its argument, "|".
    std::wstring Calls;
};
inline Script script;

/// A test that begins with an empty script.
struct Scripted : testing::Test
{
    Scripted() { script = {}; }
};
