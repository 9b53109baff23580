// IniReadFromFile, which builds the whole document, against inih's ini_parse,
// which only calls back per item, over the same generated 5 MB file.
#include <benchmark/benchmark.h>
#include <ini.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "support/RatioReporter.h"
#include "zoini/zoini.h"

namespace {

// Many sections of plain, quoted and continued items, about 5 MB in all.
std::string GenerateText() {
    std::string text;
    char line[256];
    for (int section = 0; text.size() < 5u << 20; ++section) {
        std::snprintf(line, sizeof line, "[Section %d]\n", section);
        text += line;
        for (int item = 0; item < 12; ++item) {
            const int n = section * 100 + item;
            if (item % 4 == 1) {
                std::snprintf(line, sizeof line, "Quoted%d = \"text with spaces %d\"\n", item, n);
            } else if (item % 4 == 3) {
                std::snprintf(line, sizeof line,
                              "Long%d Line0001 = continued value part one for %d, \n"
                              "Long%d Line0002 = part two of the same value\n",
                              item, n, item);
            } else {
                std::snprintf(line, sizeof line, "Item%d = %d\n", item, n * 7);
            }
            text += line;
        }
        text += '\n';
    }
    return text;
}

class GeneratedFile {
public:
    GeneratedFile() {
        char pattern[] = "/tmp/zoini-bench-XXXXXX";
        const int descriptor = mkstemp(pattern);
        path_ = pattern;
        const std::string text = GenerateText();
        size_ = text.size();
        if (descriptor < 0 || write(descriptor, text.data(), size_) != static_cast<ssize_t>(size_)) std::abort();
        close(descriptor);
    }
    ~GeneratedFile() { unlink(path_.c_str()); }
    const char* path() const { return path_.c_str(); }
    size_t size() const { return size_; }

private:
    std::string path_;
    size_t size_ = 0;
};

const GeneratedFile& File() {
    static const GeneratedFile file;
    return file;
}

void IniReadFromFileBench(benchmark::State& state) {
    const GeneratedFile& file = File();
    for (auto _ : state) {
        IniHandle doc = IniNew(0);
        if (IniReadFromFile(doc, file.path()) != 0) state.SkipWithError("read failed");
        benchmark::DoNotOptimize(IniNumberOfSections(doc));
        IniDispose(doc);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * file.size()));
}

int CountItem(void* user, const char*, const char*, const char*) {
    ++*static_cast<long*>(user);
    return 1;
}

void InihParseBench(benchmark::State& state) {
    const GeneratedFile& file = File();
    for (auto _ : state) {
        long items = 0;
        if (ini_parse(file.path(), CountItem, &items) != 0) state.SkipWithError("ini_parse failed");
        benchmark::DoNotOptimize(items);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * file.size()));
}

}  // namespace

BENCHMARK(IniReadFromFileBench)->Name("IniReadFromFile")->Unit(benchmark::kMillisecond);
BENCHMARK(InihParseBench)->Name("inih_ini_parse")->Unit(benchmark::kMillisecond);

QKDYNAM_BENCHMARK_MAIN({{"IniReadFromFile", "inih_ini_parse"}})
