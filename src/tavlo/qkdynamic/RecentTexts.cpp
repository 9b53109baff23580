#include "tavlo/qkdynamic/RecentTexts.h"

#include <array>
#include <cstdint>
#include <cstring>

#include "tavlo/qkdynamic/AnsiGuts.h"

namespace {

// Keys and state words are short; long texts rarely repeat byte for byte.
constexpr unsigned int kLongestKept = 32;
constexpr std::size_t kSlotCount = 256;

std::uint32_t HashOf(const char* text, unsigned int length) {
    std::uint32_t hash = 2166136261u;  // FNV-1a
    for (unsigned int i = 0; i < length; ++i) hash = (hash ^ static_cast<unsigned char>(text[i])) * 16777619u;
    return hash;
}

// A direct-mapped table: a newer text evicts the one in its slot. Each slot
// holds one reference, given back when the thread ends.
class RecentTexts {
public:
    RecentTexts() = default;
    RecentTexts(const RecentTexts&) = delete;
    RecentTexts& operator=(const RecentTexts&) = delete;
    ~RecentTexts() {
        for (AnsiGuts* kept : slots_) {
            if (kept) kept->Release();
        }
    }

    IVarDataGuts* share(const char* text, unsigned int length) {
        AnsiGuts*& slot = slots_[HashOf(text, length) % kSlotCount];
        if (!slot || slot->GetLength() != length || std::memcmp(slot->GetData(), text, length) != 0) {
            auto* made = new AnsiGuts(text, length);
            if (slot) slot->Release();
            slot = made;  // the creation reference is the slot's
        }
        slot->AddRef();
        return static_cast<IVarDataAnsi*>(slot);
    }

private:
    std::array<AnsiGuts*, kSlotCount> slots_{};
};

}  // namespace

IVarDataGuts* ReadAnsiGuts(const char* text, unsigned int length) {
    if (length > kLongestKept) return static_cast<IVarDataAnsi*>(new AnsiGuts(text, length));
    thread_local RecentTexts recent;
    return recent.share(text, length);
}
