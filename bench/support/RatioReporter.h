// A console reporter that, after the usual table, prints the time of each
// library benchmark divided by the time of its peer measured in the same run:
//   QKDYNAM_BENCHMARK_MAIN({{"BM_AutoBufferAppend", "BM_StdVectorInsert"}})
// pairs BM_AutoBufferAppend/1024 with BM_StdVectorInsert/1024 and so on.
// A ratio below 1 means the library is faster.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace qkdynam_bench {

struct Pair {
    std::string library;
    std::string peer;
};

class RatioReporter : public benchmark::ConsoleReporter {
public:
    explicit RatioReporter(std::vector<Pair> pairs) : pairs_(std::move(pairs)) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
                times_[run.benchmark_name()] = run.GetAdjustedCPUTime();
            }
        }
        ConsoleReporter::ReportRuns(runs);
    }

    void Finalize() override {
        ConsoleReporter::Finalize();
        std::printf("\n%-56s %10s\n", "library / peer (CPU time)", "ratio");
        for (const auto& [name, time] : times_) {
            for (const Pair& pair : pairs_) {
                if (name.compare(0, pair.library.size(), pair.library) != 0) continue;
                const std::string suffix = name.substr(pair.library.size());
                if (!suffix.empty() && suffix.front() != '/') continue;
                const auto peer = times_.find(pair.peer + suffix);
                if (peer == times_.end() || peer->second <= 0) continue;
                std::printf("%-56s %10.2f\n", (name + " / " + pair.peer + suffix).c_str(), time / peer->second);
            }
        }
        std::fflush(stdout);
    }

private:
    std::vector<Pair> pairs_;
    std::map<std::string, double> times_;
};

inline int RunWithRatios(int argc, char** argv, std::vector<Pair> pairs) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    RatioReporter reporter(std::move(pairs));
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}

}  // namespace qkdynam_bench

#define QKDYNAM_BENCHMARK_MAIN(...) \
    int main(int argc, char** argv) { return qkdynam_bench::RunWithRatios(argc, argv, __VA_ARGS__); }
