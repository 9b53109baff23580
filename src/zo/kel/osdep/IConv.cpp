#include "zo/kel/osdep/IConv.h"

#include <iconv.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "zo/kel/Exception.h"

namespace zo::kel::osdep::internal {

namespace {

const iconv_t kNoDescriptor = reinterpret_cast<iconv_t>(-1);
constexpr std::size_t kIconvFailed = static_cast<std::size_t>(-1);

// The descriptors this thread opened, most recent last. A handful of charset
// pairs is all a process uses, so a short list searched linearly is enough.
class DescriptorCache {
public:
    DescriptorCache() = default;
    DescriptorCache(const DescriptorCache&) = delete;
    DescriptorCache& operator=(const DescriptorCache&) = delete;
    ~DescriptorCache() {
        for (const Entry& entry : entries_) iconv_close(entry.descriptor);
    }

    // A descriptor in its initial shift state, or kNoDescriptor when iconv
    // does not know the pair.
    iconv_t get(const char* fromCharset, const char* toCharset) {
        for (const Entry& entry : entries_) {
            if (entry.from == fromCharset && entry.to == toCharset) {
                iconv(entry.descriptor, nullptr, nullptr, nullptr, nullptr);
                return entry.descriptor;
            }
        }
        const iconv_t descriptor = iconv_open(toCharset, fromCharset);
        if (descriptor == kNoDescriptor) return descriptor;
        if (entries_.size() == kCapacity) {
            iconv_close(entries_.front().descriptor);
            entries_.erase(entries_.begin());
        }
        entries_.push_back({fromCharset, toCharset, descriptor});
        return descriptor;
    }

private:
    static constexpr std::size_t kCapacity = 8;
    struct Entry {
        std::string from;
        std::string to;
        iconv_t descriptor;
    };
    std::vector<Entry> entries_;
};

thread_local DescriptorCache tDescriptors;

// Where converted bytes go: the caller's buffer, or (when only counting) a
// scratch area that is emptied into the count whenever it fills.
class Output {
public:
    Output(char* first, std::size_t room) : next_(first), room_(room), counting_(first == nullptr) {
        if (counting_) rewind();
    }

    char** next() { return &next_; }
    std::size_t* room() { return &room_; }

    // Called when iconv reports that the room ran out.
    void makeRoom() {
        if (!counting_) ZO_THROW(exception::BufferOverflow);
        counted_ += static_cast<std::size_t>(next_ - scratch_);
        rewind();
    }

    template <typename Out>
    void put(Out unit) {
        if (room_ < sizeof unit) makeRoom();
        std::memcpy(next_, &unit, sizeof unit);
        next_ += sizeof unit;
        room_ -= sizeof unit;
    }

    std::size_t bytesProduced(const char* first) const {
        return counting_ ? counted_ + static_cast<std::size_t>(next_ - scratch_) : static_cast<std::size_t>(next_ - first);
    }

private:
    void rewind() {
        next_ = scratch_;
        room_ = sizeof scratch_;
    }

    char scratch_[512];
    char* next_;
    std::size_t room_;
    bool counting_;
    std::size_t counted_ = 0;
};

}  // namespace

template <typename In, typename Out>
std::size_t IConv(const In* first, const In* last, const char* fromCharset, Out* outFirst, Out*& outLast,
                  const char* toCharset, bool throwing) {
    const iconv_t descriptor = tDescriptors.get(fromCharset, toCharset);
    if (descriptor == kNoDescriptor) {
        if (throwing) ZO_THROW(exception::UnableToConvert);
        outLast = outFirst;
        return 0;
    }
    char* input = const_cast<char*>(reinterpret_cast<const char*>(first));
    std::size_t inputLeft = first < last ? static_cast<std::size_t>(last - first) * sizeof(In) : 0;
    char* const outputStart = reinterpret_cast<char*>(outFirst);
    Output output(outputStart, outFirst ? static_cast<std::size_t>(outLast - outFirst) * sizeof(Out) : 0);

    bool flushing = false;  // the input is used up; write the closing shift sequence
    for (;;) {
        const std::size_t result = flushing ? iconv(descriptor, nullptr, nullptr, output.next(), output.room())
                                            : iconv(descriptor, &input, &inputLeft, output.next(), output.room());
        if (result != kIconvFailed) {
            if (flushing) break;
            flushing = true;
            continue;
        }
        if (errno == E2BIG) {
            output.makeRoom();
            continue;
        }
        // EILSEQ: a unit the target cannot hold or the source does not form;
        // EINVAL: the input ends inside a sequence.
        if (throwing) ZO_THROW(exception::UnableToConvert);
        const std::size_t skipped = errno == EINVAL ? inputLeft : std::min(inputLeft, sizeof(In));
        input += skipped;
        inputLeft -= skipped;
        output.put(static_cast<Out>('?'));
    }
    const std::size_t units = output.bytesProduced(outputStart) / sizeof(Out);
    if (outFirst) outLast = outFirst + units;
    return units;
}

template std::size_t IConv<char, wchar_t>(const char*, const char*, const char*, wchar_t*, wchar_t*&, const char*,
                                          bool);
template std::size_t IConv<wchar_t, char>(const wchar_t*, const wchar_t*, const char*, char*, char*&, const char*,
                                          bool);
template std::size_t IConv<wchar_t, unsigned char>(const wchar_t*, const wchar_t*, const char*, unsigned char*,
                                                   unsigned char*&, const char*, bool);
template std::size_t IConv<unsigned char, wchar_t>(const unsigned char*, const unsigned char*, const char*,
                                                   wchar_t*, wchar_t*&, const char*, bool);

}  // namespace zo::kel::osdep::internal
