#pragma once

/// @file
/// Ratios within one run: a console reporter that remembers each benchmark's median.

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

class MedianReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs)
            if (run.aggregate_name == "median")
                m_medians[run.run_name.function_name] = run.GetAdjustedRealTime();
        ConsoleReporter::ReportRuns(runs);
    }

    /// @return the median real time of a benchmark of this run, in its time unit; 0 when it did not run.
    double Median(const std::string& name) const
    {
        const auto found = m_medians.find(name);
        return found != m_medians.end() ? found->second : 0.0;
    }

private:
    std::map<std::string, double> m_medians;
};
