// UTF-8 decode and encode throughput of the codec against glibc iconv doing
// the same conversion (UTF-8 <-> UTF-32LE) on the same mixed text.
#include <benchmark/benchmark.h>
#include <iconv.h>

#include <string>
#include <vector>

#include "support/RatioReporter.h"
#include "zo/kel/Utf8.h"
#include "zo/kel/Utf8Internal.h"

namespace {

// Mostly ASCII, with a 2-byte character every 11th, a 3-byte one every 37th
// and a 4-byte one every 101st position: the shape of real user text.
std::wstring MixedText(std::size_t characters) {
    std::wstring text;
    text.reserve(characters);
    for (std::size_t i = 0; i < characters; ++i) {
        if (i % 101 == 100) {
            text.push_back(static_cast<wchar_t>(0x1F600 + i % 64));
        } else if (i % 37 == 36) {
            text.push_back(static_cast<wchar_t>(0x20AC + i % 200));
        } else if (i % 11 == 10) {
            text.push_back(static_cast<wchar_t>(0xE0 + i % 31));
        } else {
            text.push_back(static_cast<wchar_t>(' ' + i % 95));
        }
    }
    return text;
}

struct Corpus {
    std::wstring wide = MixedText(64 * 1024);
    std::vector<unsigned char> utf8;
    Corpus() {
        utf8.resize(zo::kel::internal::Utf8EncodedSize(wide.data(), wide.data() + wide.size()));
        zo::kel::WideToUtf8(wide.data(), wide.data() + wide.size(), utf8.data(), utf8.data() + utf8.size());
    }
};

const Corpus& TheCorpus() {
    static const Corpus corpus;
    return corpus;
}

void Iconv(benchmark::State& state, const char* from, const char* to, const void* input, std::size_t inputBytes,
           void* output, std::size_t outputBytes) {
    iconv_t descriptor = iconv_open(to, from);
    for (auto _ : state) {
        iconv(descriptor, nullptr, nullptr, nullptr, nullptr);
        char* in = static_cast<char*>(const_cast<void*>(input));
        std::size_t inLeft = inputBytes;
        char* out = static_cast<char*>(output);
        std::size_t outLeft = outputBytes;
        if (iconv(descriptor, &in, &inLeft, &out, &outLeft) == static_cast<std::size_t>(-1)) {
            state.SkipWithError("iconv failed");
        }
        benchmark::DoNotOptimize(out);
    }
    iconv_close(descriptor);
}

void BM_Utf8Decode(benchmark::State& state) {
    const Corpus& corpus = TheCorpus();
    std::vector<wchar_t> out(corpus.wide.size());
    for (auto _ : state) {
        wchar_t* end = zo::kel::Utf8ToWide(corpus.utf8.data(), corpus.utf8.data() + corpus.utf8.size(), out.data(),
                                           out.data() + out.size());
        benchmark::DoNotOptimize(end);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * corpus.utf8.size()));
}

void BM_IconvUtf8Decode(benchmark::State& state) {
    const Corpus& corpus = TheCorpus();
    std::vector<wchar_t> out(corpus.wide.size());
    Iconv(state, "UTF-8", "UTF-32LE", corpus.utf8.data(), corpus.utf8.size(), out.data(),
          out.size() * sizeof(wchar_t));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * corpus.utf8.size()));
}

void BM_Utf8Encode(benchmark::State& state) {
    const Corpus& corpus = TheCorpus();
    std::vector<unsigned char> out(corpus.utf8.size());
    for (auto _ : state) {
        unsigned char* end = zo::kel::WideToUtf8(corpus.wide.data(), corpus.wide.data() + corpus.wide.size(),
                                                 out.data(), out.data() + out.size());
        benchmark::DoNotOptimize(end);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * corpus.utf8.size()));
}

void BM_IconvUtf8Encode(benchmark::State& state) {
    const Corpus& corpus = TheCorpus();
    std::vector<unsigned char> out(corpus.utf8.size());
    Iconv(state, "UTF-32LE", "UTF-8", corpus.wide.data(), corpus.wide.size() * sizeof(wchar_t), out.data(),
          out.size());
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * corpus.utf8.size()));
}

BENCHMARK(BM_Utf8Decode);
BENCHMARK(BM_IconvUtf8Decode);
BENCHMARK(BM_Utf8Encode);
BENCHMARK(BM_IconvUtf8Encode);

}  // namespace

QKDYNAM_BENCHMARK_MAIN({{"BM_Utf8Decode", "BM_IconvUtf8Decode"}, {"BM_Utf8Encode", "BM_IconvUtf8Encode"}})
