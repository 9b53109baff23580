// Streams of small appends (1 to 16 bytes, the way the byte forms are
// written) filling a fresh buffer of 1 KiB, 64 KiB and 4 MiB: AutoBuffer
// against std::vector<unsigned char>::insert at the end.
#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>
#include <vector>

#include "support/RatioReporter.h"
#include "zo/kel/AutoBuffer.h"

namespace {

// Field sizes of a typical record: counts, tags, numbers, short texts.
constexpr std::array<unsigned int, 16> kAppendSizes{4, 2, 8, 1, 4, 16, 4, 3, 8, 2, 12, 1, 4, 8, 6, 16};
// Larger than any append, so no size is read past its end.
constexpr std::array<unsigned char, 32> kSource{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};

template <typename Append>
void Fill(std::size_t target, Append append) {
    std::size_t filled = 0;
    for (std::size_t i = 0; filled < target; ++i) {
        const unsigned int n = kAppendSizes[i % kAppendSizes.size()];
        append(kSource.data(), n);
        filled += n;
    }
}

void BM_AutoBufferAppend(benchmark::State& state) {
    const auto target = static_cast<std::size_t>(state.range(0));
    for (auto _ : state) {
        zo::kel::AutoBuffer buffer;
        Fill(target, [&](const unsigned char* bytes, unsigned int n) { buffer.Append(bytes, n); });
        benchmark::DoNotOptimize(buffer.Data());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * target));
}

void BM_StdVectorInsert(benchmark::State& state) {
    const auto target = static_cast<std::size_t>(state.range(0));
    for (auto _ : state) {
        std::vector<unsigned char> buffer;
        Fill(target, [&](const unsigned char* bytes, unsigned int n) { buffer.insert(buffer.end(), bytes, bytes + n); });
        benchmark::DoNotOptimize(buffer.data());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * target));
}

BENCHMARK(BM_AutoBufferAppend)->Arg(1 << 10)->Arg(64 << 10)->Arg(4 << 20);
BENCHMARK(BM_StdVectorInsert)->Arg(1 << 10)->Arg(64 << 10)->Arg(4 << 20);

}  // namespace

QKDYNAM_BENCHMARK_MAIN({{"BM_AutoBufferAppend", "BM_StdVectorInsert"}})
