// AsciiToNumber against strtod on the same mix of short decimal, exponent and
// hexadecimal texts; fast_float shows what a state-of-the-art parser does.
#include <fast_float/fast_float.h>

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "support/RatioReporter.h"
#include "tavlo/qkstatic/TextToValue.h"

namespace {

const std::vector<const char*> kTexts = {
    "12",     "-7",      "3.25",   "100.5",  "0.001",   "65535",  "-42.125", "1e3",   "2.5E-3",  "-1.5e+10",
    "6.02E23", "0x1F",   "0xFFFF", "0x7E",   "12345.678", "0.5", "999",     "1E-6",  "0x10000", "-0.75",
};

void BM_AsciiToNumber(benchmark::State& state) {
    double sum = 0.0;
    for (auto _ : state) {
        for (const char* text : kTexts) {
            double value;
            AsciiToNumber(text, &value);
            sum += value;
        }
    }
    benchmark::DoNotOptimize(sum);
    state.SetItemsProcessed(state.iterations() * static_cast<long>(kTexts.size()));
}

void BM_strtod(benchmark::State& state) {
    double sum = 0.0;
    for (auto _ : state) {
        for (const char* text : kTexts) sum += std::strtod(text, nullptr);
    }
    benchmark::DoNotOptimize(sum);
    state.SetItemsProcessed(state.iterations() * static_cast<long>(kTexts.size()));
}

// fast_float reads no hexadecimal: those texts go through its hex-free path
// after the prefix, as integers, to keep the work comparable.
void BM_fast_float(benchmark::State& state) {
    double sum = 0.0;
    for (auto _ : state) {
        for (const char* text : kTexts) {
            double value = 0.0;
            const std::size_t length = std::strlen(text);
            if (length > 2 && text[1] == 'x') {
                unsigned long integer = 0;
                std::from_chars(text + 2, text + length, integer, 16);
                value = static_cast<double>(integer);
            } else {
                fast_float::from_chars(text, text + length, value);
            }
            sum += value;
        }
    }
    benchmark::DoNotOptimize(sum);
    state.SetItemsProcessed(state.iterations() * static_cast<long>(kTexts.size()));
}

BENCHMARK(BM_AsciiToNumber);
BENCHMARK(BM_strtod);
BENCHMARK(BM_fast_float);

}  // namespace

QKDYNAM_BENCHMARK_MAIN({{"BM_AsciiToNumber", "BM_strtod"}, {"BM_fast_float", "BM_strtod"}})
