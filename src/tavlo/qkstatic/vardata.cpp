// Construction, ownership, typed access and element access of VarData.
#include "tavlo/qkstatic/vardata.h"

#include <bit>
#include <cmath>
#include <utility>

#include "tavlo/qkdynamic/PayloadFactories.h"
#include "tavlo/qkstatic/PayloadRef.h"

using vardata_type::Word;

using internal::PayloadRef;
using internal::ReferenceCount;

namespace {

constexpr std::uint32_t kEmptyWord = Word(VarDataType::Empty);

// Clamped to the 32-bit range and floored, as every bit-array reading is.
unsigned int BitPattern(double value) noexcept {
    if (!(value > 0.0)) return 0;  // negatives and NaN
    if (value >= 4294967295.0) return 0xFFFFFFFFu;
    return static_cast<unsigned int>(std::floor(value));
}

}  // namespace

// --- Ownership ---------------------------------------------------------------

void VarData::setInline(std::uint32_t typeWord, std::uint64_t payload) noexcept {
    releaseGuts();
    type_ = typeWord;
    payload_ = payload;
}

void VarData::adoptGuts(std::uint32_t typeWord, IVarDataGuts* object) noexcept {
    releaseGuts();
    type_ = typeWord;
    payload_ = reinterpret_cast<std::uint64_t>(object);
}

VarData& VarData::operator=(const VarData& other) {
    if (this == &other) return *this;
    // The source may live inside the payload about to be released (an element
    // of this very vector): its words are read and its reference taken first.
    VarData taken(other);
    swap(taken);
    return *this;
}

VarData& VarData::operator=(VarData&& other) noexcept {
    if (this != &other) {
        VarData taken(std::move(other));
        swap(taken);
    }
    return *this;
}

void VarData::swap(VarData& other) noexcept {
    std::swap(type_, other.type_);
    std::swap(payload_, other.payload_);
}

// --- Construction and setters -------------------------------------------------

VarData::VarData(const unsigned char* data, unsigned int length) : type_(Word(VarDataType::Raw)), payload_(0) {
    if (data && length) payload_ = reinterpret_cast<std::uint64_t>(NewRawGuts(data, length));
}

VarData::VarData(unsigned short row, unsigned short column, const VarData& value)
    : type_(Word(VarDataType::Cell)), payload_(0) {
    if (row != 0 || column != 0 || value.tag() != VarDataType::Empty) {
        payload_ = reinterpret_cast<std::uint64_t>(NewCellGuts(row, column, &value));
    }
}

VarData VarData::pulse() {
    VarData value;
    value.Pulse();
    return value;
}

VarData VarData::brake() {
    VarData value;
    value.Break();
    return value;
}

VarData VarData::bitArray(unsigned int bits) {
    VarData value;
    value.setBitArray32(bits);
    return value;
}

VarData VarData::num(double number, unsigned short subtype) {
    VarData value;
    value.setInline((static_cast<std::uint32_t>(subtype) << 16) | Word(VarDataType::Numeric),
                    std::bit_cast<std::uint64_t>(number));
    return value;
}

VarData VarData::dict() {
    VarData value;
    value.adoptGuts(Word(VarDataType::Dictionary), NewVarDataDictionary());
    return value;
}

VarData VarData::sequence() {
    VarData value;
    value.adoptGuts(Word(VarDataType::Sequence), NewVectorGuts());
    return value;
}

void VarData::Pulse() { setInline(Word(VarDataType::Pulse), 0); }
void VarData::Break() { setInline(Word(VarDataType::Break), 0); }
void VarData::Clear() { setInline(kEmptyWord, 0); }

VarData& VarData::operator=(bool value) {
    setInline(Word(VarDataType::Logical), value ? 1 : 0);
    return *this;
}

VarData& VarData::operator=(int value) { return *this = static_cast<double>(value); }

VarData& VarData::operator=(double value) {
    setInline(Word(VarDataType::Numeric), std::bit_cast<std::uint64_t>(value));
    return *this;
}

VarData& VarData::operator=(long value) {
    setInline(Word(VarDataType::Time), static_cast<std::uint64_t>(value));
    return *this;
}

void VarData::SetRaw(const unsigned char* data, unsigned int length) {
    // The new block is made before the old one goes: `data` may point into it.
    IVarDataGuts* block = (data && length) ? NewRawGuts(data, length) : nullptr;
    adoptGuts(Word(VarDataType::Raw), block);
}

void VarData::setID64(unsigned long id) { setInline(Word(VarDataType::ID64), id); }

void VarData::setBitArray32(unsigned int bits) {
    setInline(vardata_type::kBitArrayTypeWord, std::bit_cast<std::uint64_t>(static_cast<double>(bits)));
}

void VarData::setVoidPointer(void* pointer) {
    if (tag() != VarDataType::VoidPointer) releaseGuts();
    type_ = Word(VarDataType::VoidPointer);
    payload_ = reinterpret_cast<std::uint64_t>(pointer);
}

// --- Readers ------------------------------------------------------------------

double VarData::number() const noexcept { return std::bit_cast<double>(payload_); }

bool VarData::GetLogical(bool& value) const {
    if (tag() != VarDataType::Logical) return false;
    value = logicalByte();
    return true;
}

bool VarData::GetNumeric(double& value) const {
    if (type_ != Word(VarDataType::Numeric)) return false;
    value = number();
    return true;
}

bool VarData::GetTime(long& count) const {
    if (tag() != VarDataType::Time) return false;
    count = static_cast<long>(payload_);
    return true;
}

bool VarData::GetFILETIME(unsigned long& count) const {
    if (tag() != VarDataType::Time) return false;
    count = payload_;
    return true;
}

bool VarData::getID64(unsigned long& id) const {
    if (tag() != VarDataType::ID64) return false;
    id = payload_;
    return true;
}

bool VarData::getBitArray32(unsigned int& bits) const {
    if ((type_ & vardata_type::kBitArrayMask) != vardata_type::kBitArrayTypeWord) return false;
    bits = getBitArray32Fast();
    return true;
}

unsigned int VarData::getBitArray32Fast() const noexcept { return BitPattern(number()); }

bool VarData::GetRaw(const unsigned char*& data, unsigned int& length) const {
    if (tag() != VarDataType::Raw) return false;
    if (!holdsGuts()) {
        data = nullptr;
        length = 0;
        return true;
    }
    const PayloadRef<IVarDataRaw> raw(guts());
    return raw && raw->GetData(data, length);
}

bool VarData::GetCell(unsigned short& row, unsigned short& column, VarData& value) const {
    if (tag() != VarDataType::Cell) return false;
    if (!holdsGuts()) {
        row = 0;
        column = 0;
        value.Clear();
        return true;
    }
    const PayloadRef<IVarDataCell> cell(guts());
    if (!cell) return false;
    cell->GetCell(&row, &column, &value);
    return true;
}

unsigned int VarData::GetRaw() const {
    throwIfWrongType(Word(VarDataType::Raw));
    return GetLength();
}

void* VarData::getVoidPointer() const {
    throwIfWrongType(Word(VarDataType::VoidPointer));
    return reinterpret_cast<void*>(payload_);
}

void VarData::throwIfWrongType(unsigned int expected) const {
    if ((type_ & vardata_type::kTagMask) != expected) throw TypeErrorException();
}

void VarData::Not() noexcept {
    if (tag() == VarDataType::Logical) payload_ = logicalByte() ? 0 : 1;
}

unsigned int VarData::GetLength() const {
    if (!holdsGuts()) return 0;
    switch (tag()) {
        case VarDataType::Ansi: return getIAnsi()->GetLength();
        case VarDataType::Unicode: return getIUnicode()->GetLength();
        case VarDataType::Raw: {
            const unsigned char* data = nullptr;
            unsigned int length = 0;
            return GetRaw(data, length) ? length : 0;
        }
        case VarDataType::Dictionary: return getIDict()->size();
        case VarDataType::Sequence: {
            const PayloadRef<IVarDataSequence> sequence = querySequence();
            return sequence ? sequence->GetLength() : 0;
        }
        default: return 0;
    }
}

// --- Sequences ------------------------------------------------------------------

PayloadRef<IVarDataSequence> VarData::querySequence() const {
    if (!(type_ & SequenceFlag)) return {};
    return PayloadRef<IVarDataSequence>(guts());
}

VarData VarData::GetElement(unsigned int index) const {
    const PayloadRef<IVarDataSequence> sequence = querySequence();
    return sequence ? sequence->GetElement(index) : VarData();
}

VarData VarData::GetElement(unsigned int row, unsigned int column) const {
    return GetElement(row).GetElement(column);
}

void VarData::SetElement(unsigned int index, const VarData& value) {
    if (!(type_ & SequenceFlag)) throw TypeErrorException();
    if (!holdsGuts()) adoptGuts(type_, NewVectorGuts());
    unshare();
    const PayloadRef<IVarDataSequence> sequence = querySequence();
    if (!sequence) throw TypeErrorException();
    sequence->SetElement(index, value);
}

void VarData::SetElement(unsigned int row, unsigned int column, const VarData& value) {
    VarData rowValue = GetElement(row);
    if (rowValue.GetElement(column).Compare(value) == 0) return;
    // Dropping the outer reference first leaves the row with one owner, so
    // setting its element does not copy the whole row.
    SetElement(row, VarData());
    if (!(rowValue.type_ & SequenceFlag)) rowValue = sequence();
    rowValue.SetElement(column, value);
    SetElement(row, rowValue);
}

void VarData::unshare() {
    if (hasPayloadFlag()) copyIfShared();
}

void VarData::copyIfShared() {
    IVarDataGuts* object = guts();
    if (!object || ReferenceCount(object) < 2) return;
    if (type_ & SequenceFlag) {
        const PayloadRef<IVarDataSequence> sequence = querySequence();
        if (sequence) adoptGuts(type_, sequence->Copy());
    } else if (tag() == VarDataType::Dictionary) {
        adoptGuts(type_, getIDict()->copy());
    }
}
