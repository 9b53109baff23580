// The value core against the standard library doing the same work: copying
// shared text, a dictionary of text keys, and numbers converted to text.
#include <benchmark/benchmark.h>
#include <strings.h>

#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "support/RatioReporter.h"
#include "tavlo/qkstatic/vardata.h"

namespace {

constexpr int kKeys = 10000;

std::vector<std::string> KeyTexts() {
    std::vector<std::string> keys;
    char text[32];
    for (int i = 0; i < kKeys; ++i) {
        // Scattered so that insertion order is not key order.
        std::snprintf(text, sizeof text, "Tag_%05d.Value", (i * 7919) % kKeys);
        keys.emplace_back(text);
    }
    return keys;
}

struct CaseInsensitiveLess {
    bool operator()(const std::string& a, const std::string& b) const { return strcasecmp(a.c_str(), b.c_str()) < 0; }
};

void BM_VarDataCopyText(benchmark::State& state) {
    const VarData text("pump station 7 / discharge pressure");
    for (auto _ : state) {
        VarData copy(text);
        benchmark::DoNotOptimize(copy);
    }
}

void BM_SharedPtrCopyString(benchmark::State& state) {
    const auto text = std::make_shared<std::string>("pump station 7 / discharge pressure");
    for (auto _ : state) {
        std::shared_ptr<std::string> copy(text);
        benchmark::DoNotOptimize(copy);
    }
}

void BM_VarDataDictionaryInsertLookup(benchmark::State& state) {
    std::vector<VarData> keys;
    for (const std::string& key : KeyTexts()) keys.emplace_back(key.c_str());
    for (auto _ : state) {
        VarData dictionary = VarData::dict();
        double value = 0;
        for (const VarData& key : keys) dictionary.setValue(key, VarData::num(value++));
        double sum = 0;
        for (const VarData& key : keys) sum += static_cast<double>(dictionary.getValue(key));
        benchmark::DoNotOptimize(sum);
    }
}

void BM_StdMapInsertLookup(benchmark::State& state) {
    const std::vector<std::string> keys = KeyTexts();
    for (auto _ : state) {
        std::map<std::string, double, CaseInsensitiveLess> dictionary;
        double value = 0;
        for (const std::string& key : keys) dictionary.insert_or_assign(key, value++);
        double sum = 0;
        for (const std::string& key : keys) sum += dictionary.at(key);
        benchmark::DoNotOptimize(sum);
    }
}

constexpr double kNumbers[] = {0.0, 1.0, -2.5, 3.14159265358979, 1e-7, 6.02214076e23, 123456.789, -0.001};

void BM_VarDataConvertToAnsi(benchmark::State& state) {
    std::size_t i = 0;
    for (auto _ : state) {
        VarData value = VarData::num(kNumbers[i++ % std::size(kNumbers)]);
        value.Convert_(VarDataType::Ansi);
        benchmark::DoNotOptimize(value);
    }
}

void BM_SnprintfToString(benchmark::State& state) {
    std::size_t i = 0;
    for (auto _ : state) {
        char buffer[32];
        const int length = std::snprintf(buffer, sizeof buffer, "%G", kNumbers[i++ % std::size(kNumbers)]);
        std::string text(buffer, static_cast<std::size_t>(length));
        benchmark::DoNotOptimize(text);
    }
}

BENCHMARK(BM_VarDataCopyText);
BENCHMARK(BM_SharedPtrCopyString);
BENCHMARK(BM_VarDataDictionaryInsertLookup)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StdMapInsertLookup)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_VarDataConvertToAnsi);
BENCHMARK(BM_SnprintfToString);

}  // namespace

QKDYNAM_BENCHMARK_MAIN({{"BM_VarDataCopyText", "BM_SharedPtrCopyString"},
                        {"BM_VarDataDictionaryInsertLookup", "BM_StdMapInsertLookup"},
                        {"BM_VarDataConvertToAnsi", "BM_SnprintfToString"}})
