// NumberToText0 against a bare snprintf of the same pattern with the values it
// prints, for "General", "0.00", "HH:MM:SS", "mm/dd/yy hh:mm:ss" and
// "yyyy-mm-dd hh:mm:ss".
#include <cstdio>

#include "support/RatioReporter.h"
#include "tavlo/qkstatic/NumberToText.h"

namespace {

constexpr double kValue = 45000.5 + 1234.0 / 8.64e7;  // 2023-03-15 12:00:01.234

template <unsigned int Format>
void BM_NumberToText0(benchmark::State& state) {
    char buffer[64];
    for (auto _ : state) {
        benchmark::DoNotOptimize(NumberToText0(Format, buffer, sizeof(buffer), kValue));
        benchmark::ClobberMemory();
    }
}

template <typename... Values>
void BareSnprintf(benchmark::State& state, const char* pattern, Values... values) {
    char buffer[64];
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::snprintf(buffer, sizeof(buffer), pattern, values...));
        benchmark::ClobberMemory();
    }
}

void BM_snprintf_0(benchmark::State& state) { BareSnprintf(state, "%G", kValue); }
void BM_snprintf_3(benchmark::State& state) { BareSnprintf(state, "%0.2f", kValue); }
void BM_snprintf_36(benchmark::State& state) { BareSnprintf(state, "%2.2lu:%2.2u:%2.2u", 1080012ul, 0u, 1u); }
void BM_snprintf_50(benchmark::State& state) {
    BareSnprintf(state, "%2.2u/%2.2u/%2.2u %2.2u:%2.2u:%2.2u", 3u, 15u, 23u, 12u, 0u, 1u);
}
void BM_snprintf_72(benchmark::State& state) {
    BareSnprintf(state, "%4.4u-%2.2u-%2.2u %2.2u:%2.2u:%2.2u", 2023u, 3u, 15u, 12u, 0u, 1u);
}

BENCHMARK(BM_NumberToText0<0>);
BENCHMARK(BM_snprintf_0);
BENCHMARK(BM_NumberToText0<3>);
BENCHMARK(BM_snprintf_3);
BENCHMARK(BM_NumberToText0<36>);
BENCHMARK(BM_snprintf_36);
BENCHMARK(BM_NumberToText0<50>);
BENCHMARK(BM_snprintf_50);
BENCHMARK(BM_NumberToText0<72>);
BENCHMARK(BM_snprintf_72);

}  // namespace

QKDYNAM_BENCHMARK_MAIN({{"BM_NumberToText0<0>", "BM_snprintf_0"},
                        {"BM_NumberToText0<3>", "BM_snprintf_3"},
                        {"BM_NumberToText0<36>", "BM_snprintf_36"},
                        {"BM_NumberToText0<50>", "BM_snprintf_50"},
                        {"BM_NumberToText0<72>", "BM_snprintf_72"}})
