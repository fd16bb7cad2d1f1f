// SPDX-License-Identifier: MIT
#pragma once

#include "qmUtility/platform/Kernel.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>

/// The results of the kernel services and the host modules, and a record of the calls.
struct Script
{
    std::uint64_t Clock = 0;              ///< the next value of both counters; a read adds 5,
    std::uint64_t CheapRead = UINT64_MAX; ///< but this one 2
    std::uint64_t Reads = 0;
    std::uint64_t TickRate = 1000;
    int PriorityResult = 1;
    std::pair<FILETIME, FILETIME> ProcessTimes{}; ///< kernel and user time
    BOOL AreTimesAvailable = 1;
    std::wstring Calls; ///< performance counts and other calls: "100|priority 15|debug a line|log a text|"
};
inline Script script;

/// A test that begins with an empty script.
struct Scripted : testing::Test
{
    Scripted() { script = {}; }
};
