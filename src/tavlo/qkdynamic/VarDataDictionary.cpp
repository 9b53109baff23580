#include "tavlo/qkdynamic/VarDataDictionary.h"

#include <algorithm>
#include <cstdlib>
#include <cwchar>
#include <limits>

#include "zo/kel/Exception.h"

namespace {

// The lines that the entry-limit faults have always reported.
constexpr unsigned int kSetValueLimitLine = 176;
constexpr unsigned int kGetValueReferenceLimitLine = 204;

class VarDataDictionaryIterator final : public IVarDataIterator, public zo::kel::internal::SmallBlockObject {
public:
    explicit VarDataDictionaryIterator(VarDataDictionary::Map::iterator position) : position_(position) {}

    void Release() override { delete this; }
    const VarData& value() const override { return position_->second; }
    const VarData& key() const override { return position_->first; }
    VarData& getValueReference() override { return position_->second; }
    void increment() override { ++position_; }
    void decrement() override { --position_; }
    bool compare(const IVarDataIterator* other) const override {
        return position_ == static_cast<const VarDataDictionaryIterator*>(other)->position_;
    }
    IVarDataIterator* copy() const override { return new VarDataDictionaryIterator(position_); }

private:
    VarDataDictionary::Map::iterator position_;
};

using Entry = VarDataDictionary::Map::value_type;

bool EntryLess(const Entry& a, const Entry& b) {
    if (const std::int32_t order = a.first.Compare(b.first); order != 0) return order < 0;
    return a.second.Compare(b.second) < 0;
}

bool SameEntry(const Entry& a, const Entry& b) {
    return a.first.Compare(b.first) == 0 && a.second.Compare(b.second) == 0;
}

// A key or value in the text form: texts quoted (without escaping), anything
// else in its display text.
void AppendEntryText(zo::kel::WideString& out, const VarData& value) {
    const auto tag = static_cast<VarDataType>(vardata_type::TagOf(value.GetType()));
    const bool quoted = tag == VarDataType::Ansi || tag == VarDataType::Unicode;
    VarData text(value);
    text.Convert_(VarDataType::Unicode);
    if (vardata_type::TagOf(text.GetType()) != vardata_type::Word(VarDataType::Unicode)) return;
    if (quoted) out += L'"';
    out += text.getString();
    if (quoted) out += L'"';
}

zo::kel::WideString DictionaryText(const VarDataDictionary::Map& entries) {
    zo::kel::WideString text(L"{");
    bool first = true;
    for (const auto& [key, value] : entries) {
        if (!first) text += L',';
        first = false;
        AppendEntryText(text, key);
        text += L':';
        AppendEntryText(text, value);
    }
    text += L'}';
    return text;
}

}  // namespace

std::int32_t VarDataDictionary::Compare(const IVarDataGuts* other) const {
    const auto& mine = entries_;
    const auto& theirs = static_cast<const VarDataDictionary*>(other)->entries_;
    if (&mine == &theirs) return 0;
    if (std::lexicographical_compare(mine.begin(), mine.end(), theirs.begin(), theirs.end(), EntryLess)) return -1;
    if (mine.size() != theirs.size()) return 1;
    return std::equal(mine.begin(), mine.end(), theirs.begin(), SameEntry) ? 0 : 1;
}

void VarDataDictionary::checkRoomForOneMore(unsigned int line) const {
    if (entries_.size() >= std::numeric_limits<unsigned int>::max()) {
        throw zo::kel::exception::OutOfRange(line, ZO_SOURCE_FILE);
    }
}

void VarDataDictionary::setValue(const VarData& key, const VarData& value) {
    checkRoomForOneMore(kSetValueLimitLine);
    entries_.insert_or_assign(key, value);
}

const VarData& VarDataDictionary::getValue(const VarData& key) const {
    const auto found = entries_.find(key);
    if (found == entries_.end()) throw KeyErrorException();
    return found->second;
}

VarData& VarDataDictionary::getValueReference(const VarData& key) {
    if (const auto found = entries_.find(key); found != entries_.end()) return found->second;
    checkRoomForOneMore(kGetValueReferenceLimitLine);
    return entries_.emplace(key, VarData()).first->second;
}

IVarDataIterator* VarDataDictionary::begin(const VarData&) const {
    return new VarDataDictionaryIterator(entries_.begin());
}

IVarDataIterator* VarDataDictionary::end(const VarData&) const { return new VarDataDictionaryIterator(entries_.end()); }

IVarDataIterator* VarDataDictionary::find(const VarData&, const VarData& key) const {
    return new VarDataDictionaryIterator(entries_.find(key));
}

void VarDataDictionary::erase(const VarData& key) { entries_.erase(key); }

wchar_t* VarDataDictionary::getString() const {
    try {
        const zo::kel::WideString text = DictionaryText(entries_);
        auto* block = static_cast<wchar_t*>(std::malloc((text.size() + 1) * sizeof(wchar_t)));
        if (block) std::wmemcpy(block, text.c_str(), text.size() + 1);
        return block;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
