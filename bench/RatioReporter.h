// A console reporter that also prints, after the run, how each benchmark's
// CPU time compares with its peer measured in the same run (name, peer pairs).
#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

class RatioReporter : public benchmark::ConsoleReporter {
public:
    // Each pair is (measured, peer); the ratio printed is measured / peer.
    explicit RatioReporter(std::vector<std::pair<std::string, std::string>> pairs) : pairs_(std::move(pairs)) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) nanoseconds_[run.benchmark_name()] = run.GetAdjustedCPUTime();
        ConsoleReporter::ReportRuns(runs);
    }

    void Finalize() override {
        ConsoleReporter::Finalize();
        for (const auto& [measured, peer] : pairs_) {
            if (!nanoseconds_.count(measured) || !nanoseconds_.count(peer)) continue;
            std::printf("ratio %-40s / %-40s = %.2f\n", measured.c_str(), peer.c_str(),
                        nanoseconds_[measured] / nanoseconds_[peer]);
        }
    }

private:
    std::vector<std::pair<std::string, std::string>> pairs_;
    std::map<std::string, double> nanoseconds_;
};

inline int RunWithRatios(int argc, char** argv, std::vector<std::pair<std::string, std::string>> pairs) {
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter(std::move(pairs));
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
