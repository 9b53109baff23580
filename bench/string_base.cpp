// StringBase append and case-insensitive compare against std::string append
// and glibc strcasecmp on the same texts.
#include <benchmark/benchmark.h>
#include <strings.h>

#include <string>

#include "support/RatioReporter.h"
#include "zo/kel/StringBase.h"

namespace {

constexpr const char* kPiece = "field=value; ";

void BM_StringBaseAppend(benchmark::State& state) {
    for (auto _ : state) {
        zo::kel::NarrowString text;
        for (std::int64_t i = 0; i < state.range(0); ++i) text.append(kPiece, 13);
        benchmark::DoNotOptimize(text.c_str());
    }
}

void BM_StdStringAppend(benchmark::State& state) {
    for (auto _ : state) {
        std::string text;
        for (std::int64_t i = 0; i < state.range(0); ++i) text.append(kPiece, 13);
        benchmark::DoNotOptimize(text.c_str());
    }
}

// Two texts equal but for case in every fourth letter.
std::pair<std::string, std::string> CaseVariants(std::size_t length) {
    std::string lower;
    for (std::size_t i = 0; i < length; ++i) lower.push_back(static_cast<char>('a' + i % 26));
    std::string mixed = lower;
    for (std::size_t i = 0; i < length; i += 4) mixed[i] = static_cast<char>(mixed[i] - 'a' + 'A');
    return {lower, mixed};
}

void BM_StringBaseCaseCompare(benchmark::State& state) {
    const auto [lower, mixed] = CaseVariants(static_cast<std::size_t>(state.range(0)));
    const zo::kel::NarrowString a(lower.c_str());
    const zo::kel::NarrowString b(mixed.c_str());
    for (auto _ : state) benchmark::DoNotOptimize(a.compare(b));
}

void BM_Strcasecmp(benchmark::State& state) {
    const auto [lower, mixed] = CaseVariants(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(strcasecmp(lower.c_str(), mixed.c_str()));
}

BENCHMARK(BM_StringBaseAppend)->Arg(8)->Arg(1024);
BENCHMARK(BM_StdStringAppend)->Arg(8)->Arg(1024);
BENCHMARK(BM_StringBaseCaseCompare)->Arg(16)->Arg(1024);
BENCHMARK(BM_Strcasecmp)->Arg(16)->Arg(1024);

}  // namespace

QKDYNAM_BENCHMARK_MAIN({{"BM_StringBaseAppend", "BM_StdStringAppend"},
                        {"BM_StringBaseCaseCompare", "BM_Strcasecmp"}})
