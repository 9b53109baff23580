#include "tavlo/qkdynamic/RecentTexts.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "tavlo/qkdynamic/AnsiGuts.h"

namespace {

// Keys and state words are short; long texts rarely repeat byte for byte.
constexpr unsigned int kLongestKept = 32;
constexpr std::size_t kSlotCount = 256;  // one per value of the top hash byte

// The slot of a text, mixed from its length and its bytes eight at a time.
std::size_t SlotOf(const char* text, unsigned int length) {
    std::uint64_t mixed = length;
    for (unsigned int at = 0; at < length; at += 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, text + at, std::min(length - at, 8u));
        mixed = (mixed ^ word) * 0x9E3779B97F4A7C15ull;
    }
    return static_cast<std::size_t>(mixed >> 56);  // the best bits of a multiplicative hash
}

// A direct-mapped table: a newer text evicts the one in its slot. Each slot
// holds one reference, given back when the thread ends.
class RecentTexts {
public:
    PayloadRef<IVarDataAnsi> share(const char* text, unsigned int length) {
        PayloadRef<IVarDataAnsi>& slot = slots_[SlotOf(text, length)];
        if (!slot || slot->GetLength() != length || std::memcmp(slot->GetData(), text, length) != 0) {
            slot = PayloadRef<IVarDataAnsi>::Adopt(new AnsiGuts(text, length));
        }
        return PayloadRef<IVarDataAnsi>::Share(slot.get());
    }

private:
    std::array<PayloadRef<IVarDataAnsi>, kSlotCount> slots_{};
};

}  // namespace

PayloadRef<IVarDataAnsi> ReadAnsiGuts(const char* text, unsigned int length) {
    if (length > kLongestKept) return PayloadRef<IVarDataAnsi>::Adopt(new AnsiGuts(text, length));
    thread_local RecentTexts recent;
    return recent.share(text, length);
}
