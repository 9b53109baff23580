#include "tavlo/qkdynamic/RecentTexts.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>

#include "tavlo/qkdynamic/AnsiGuts.h"

using internal::PayloadRef;

namespace {

// Keys and state words are short; long texts rarely repeat byte for byte.
constexpr unsigned int kLongestKept = 32;
constexpr std::size_t kSlotCount = 256;  // one per value of the top hash byte

// The slot of a text (1 to 32 bytes): its length and its first and last
// eight (or four, or single) bytes, mixed by one multiplication.
std::size_t SlotOf(const char* text, unsigned int length) {
    std::uint64_t head = 0, tail = 0;
    if (length >= 8) {
        std::memcpy(&head, text, 8);
        std::memcpy(&tail, text + length - 8, 8);
    } else if (length >= 4) {
        std::uint32_t first, last;
        std::memcpy(&first, text, 4);
        std::memcpy(&last, text + length - 4, 4);
        head = first;
        tail = last;
    } else {
        head = static_cast<unsigned char>(text[0]) | static_cast<unsigned char>(text[length / 2]) << 8 |
               static_cast<unsigned char>(text[length - 1]) << 16;
    }
    const std::uint64_t mixed = (head ^ (tail << 29 | tail >> 35) ^ length) * 0x9E3779B97F4A7C15ull;
    return static_cast<std::size_t>(mixed >> 56);  // the best bits of a multiplicative hash
}

// Equality of two texts of `length` (1 to 32) bytes, in overlapping words.
template <class Word>
bool SameEnds(const char* a, const char* b, unsigned int length) {
    Word headA, headB, tailA, tailB;
    std::memcpy(&headA, a, sizeof(Word));
    std::memcpy(&headB, b, sizeof(Word));
    std::memcpy(&tailA, a + length - sizeof(Word), sizeof(Word));
    std::memcpy(&tailB, b + length - sizeof(Word), sizeof(Word));
    return headA == headB && tailA == tailB;
}

bool SameBytes(const char* a, const char* b, unsigned int length) {
    if (length < 4) return std::memcmp(a, b, length) == 0;
    if (length < 8) return SameEnds<std::uint32_t>(a, b, length);
    if (!SameEnds<std::uint64_t>(a, b, length)) return false;
    return length <= 16 || std::memcmp(a + 8, b + 8, length - 16) == 0;
}

// A direct-mapped table: a newer text evicts the one in its slot. Each slot
// holds one reference, given back when the thread ends.
class RecentTexts;

// The table is reached through a plain pointer, which costs one thread-local
// access; the owner that frees it at thread exit is touched once per thread.
// Once a thread's table is gone, its last reads share nothing.
thread_local RecentTexts* tRecent = nullptr;
thread_local bool tRecentGone = false;

class RecentTexts {
public:
    RecentTexts() = default;
    RecentTexts(const RecentTexts&) = delete;
    RecentTexts& operator=(const RecentTexts&) = delete;
    ~RecentTexts() {
        tRecent = nullptr;
        tRecentGone = true;
    }

    PayloadRef<AnsiGuts> share(const char* text, unsigned int length) {
        PayloadRef<AnsiGuts>& slot = slots_[SlotOf(text, length)];
        if (!slot || slot->GetLength() != length || !SameBytes(slot->GetData(), text, length)) {
            slot = PayloadRef<AnsiGuts>::Adopt(new AnsiGuts(text, length));
        }
        return PayloadRef<AnsiGuts>::Share(slot.get());
    }

private:
    std::array<PayloadRef<AnsiGuts>, kSlotCount> slots_{};
};

RecentTexts* RecentTextsOfThisThread() {
    if (!tRecent && !tRecentGone) {
        thread_local std::unique_ptr<RecentTexts> owner = std::make_unique<RecentTexts>();
        tRecent = owner.get();
    }
    return tRecent;
}

}  // namespace

PayloadRef<IVarDataAnsi> ReadAnsiGuts(const char* text, unsigned int length) {
    RecentTexts* recent = length <= kLongestKept ? RecentTextsOfThisThread() : nullptr;
    if (!recent) return PayloadRef<IVarDataAnsi>::Adopt(new AnsiGuts(text, length));
    return recent->share(text, length);
}
