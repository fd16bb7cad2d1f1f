// SPDX-License-Identifier: MIT
#include "qmUtility/host/qmSystemInfo.h"

#include <array>
#include <chrono>
#include <cmath>

#if defined(__x86_64__)
#include <cpuid.h>
#include <x86intrin.h>
#endif

namespace {

using Clock = std::chrono::steady_clock;

#if defined(__x86_64__)

/// @return the registers A to D of a CPUID leaf; zeros when the processor has no such leaf.
std::array<unsigned, 4> Identify(unsigned leaf) {
    std::array<unsigned, 4> registers{};
    auto& [a, b, c, d] = registers;
    __get_cpuid_count(leaf, 0, &a, &b, &c, &d);
    return registers;
}

bool HasInvariantCounter() {
    static const bool result = (Identify(0x80000007)[3] & 1U << 8) != 0;
    return result;
}

/// One moment, read from the counter and from the system's clock.
struct Moment {
    std::uint64_t Ticks = 0;
    std::chrono::duration<double> Time{};
};

/// Reads the counter before and after the clock. Of ten tries, the narrowest was not interrupted in between.
Moment Now() {
    Moment moment;
    std::uint64_t narrowest = UINT64_MAX;
    for (int i = 0; i != 10; ++i) {
        const std::uint64_t before = __rdtsc();
        const auto time = Clock::now().time_since_epoch();
        const std::uint64_t width = __rdtsc() - before;
        if (width < narrowest) {
            narrowest = width;
            moment = {before + width / 2, time};
        }
    }
    return moment;
}

std::uint64_t MeasureRate() {
    const Moment first = Now();
    Moment last = first;
    while (last.Time - first.Time < std::chrono::milliseconds(5)) last = Now();
    return static_cast<std::uint64_t>(
        std::llround(static_cast<double>(last.Ticks - first.Ticks) / (last.Time - first.Time).count()));
}

std::uint64_t CounterRate() {
    // The counter runs at b / a times the crystal's frequency, c hertz. The nominal frequency in leaf 0x16 is
    // no substitute for a missing c: it is rounded, and a virtual machine's counter may run at another rate.
    const auto [a, b, c, d] = Identify(0x15);
    return a != 0 && b != 0 && c != 0 ? std::uint64_t{c} * b / a : MeasureRate();
}

#endif

}  // namespace

std::uint64_t cpu::GetTick() {
#if defined(__x86_64__)
    if (HasInvariantCounter()) return __rdtsc();
#endif
    return static_cast<std::uint64_t>(Clock::now().time_since_epoch().count());
}

std::uint64_t cpu::GetClockSpeed() {
#if defined(__x86_64__)
    if (HasInvariantCounter()) {
        static const std::uint64_t rate = CounterRate();
        return rate;
    }
#endif
    return Clock::period::den;
}
