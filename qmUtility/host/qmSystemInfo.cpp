#include "qmUtility/host/qmSystemInfo.h"

#include <chrono>
#include <cmath>

#if defined(__x86_64__)
#include <cpuid.h>
#include <x86intrin.h>
#endif

namespace {

using Clock = std::chrono::steady_clock;

#if defined(__x86_64__)

struct Registers
{
    unsigned A = 0;
    unsigned B = 0;
    unsigned C = 0;
    unsigned D = 0;
};

/// @return what the processor tells about itself on a page; zeros when it has no such page.
Registers Identify(unsigned page)
{
    Registers r;
    __get_cpuid_count(page, 0, &r.A, &r.B, &r.C, &r.D);
    return r;
}

bool HasInvariantCounter()
{
    static const bool result = (Identify(0x80000007).D & 1U << 8) != 0;
    return result;
}

/// The same moment on the counter and on the system's clock.
struct Moment
{
    std::uint64_t Ticks = 0;
    std::chrono::duration<double> Time{};
};

/// Reads the counter before and after the clock, and again in case the thread is interrupted in between: the
/// narrowest of some tries counts.
Moment Now()
{
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

std::uint64_t MeasureRate()
{
    const Moment first = Now();
    Moment last = first;
    while (last.Time - first.Time < std::chrono::milliseconds(5))
        last = Now();
    return static_cast<std::uint64_t>(
        std::llround(static_cast<double>(last.Ticks - first.Ticks) / (last.Time - first.Time).count()));
}

std::uint64_t CounterRate()
{
    // The counter runs at B / A times the crystal's C hertz. Where C is missing, the nominal frequency of
    // page 0x16 could stand in for it, but that is rounded and need not be what a virtual machine's counter
    // runs at.
    const Registers r = Identify(0x15);
    if (r.A != 0 && r.B != 0 && r.C != 0)
        return std::uint64_t{r.C} * r.B / r.A;
    return MeasureRate();
}

#endif

} // namespace

std::uint64_t cpu::GetTick()
{
#if defined(__x86_64__)
    if (HasInvariantCounter())
        return __rdtsc();
#endif
    return static_cast<std::uint64_t>(Clock::now().time_since_epoch().count());
}

std::uint64_t cpu::GetClockSpeed()
{
#if defined(__x86_64__)
    if (HasInvariantCounter()) {
        static const std::uint64_t rate = CounterRate();
        return rate;
    }
#endif
    return Clock::period::den;
}
