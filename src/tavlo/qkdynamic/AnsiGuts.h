// The payload of an Ansi value: immutable narrow text. It answers two
// interface tables: the value-layer text interface and the string
// operations of IAnsiGuts, whose results are new objects with one reference.
#pragma once

#include "tavlo/qkdynamic/PayloadObject.h"
#include "tavlo/qkstatic/vardata.h"
#include "zo/kel/SmallBlockCache.h"
#include "zo/kel/StringBase.h"

class AnsiGuts final : public IVarDataAnsi, public IAnsiGuts, public zo::kel::internal::SmallBlockObject {
public:
    AnsiGuts(const char* text, unsigned int length) : text_(text, length) {}
    explicit AnsiGuts(zo::kel::NarrowString text) : text_(std::move(text)) {}

    std::int32_t QueryInterface(const _GUID& iid, void** object) override;
    std::int32_t AddRef() override { return referenceCount_.increment(); }
    std::int32_t Release() override;

    // Truth and number of the text read as a logical, numeric or time text.
    explicit operator bool() const override;
    explicit operator double() const override;
    std::int32_t Compare(const IVarDataGuts* other) const override;
    const char* GetData() const override { return text_.c_str(); }
    unsigned int GetLength() const override { return text_.length(); }
    virtual ~AnsiGuts() = default;

    std::int32_t Compare(const IAnsiGuts* other) const override;
    std::int32_t ExactCompare(const IAnsiGuts* other) const override;
    std::int32_t Compare(const char* other) const override;
    std::int32_t ExactCompare(const char* other) const override;
    IAnsiGuts* ToLower() const override;
    IAnsiGuts* ToUpper() const override;
    IAnsiGuts* Concat(const IAnsiGuts* other) const override;
    IAnsiGuts* Concat(const char* other) const override;
    IAnsiGuts* Left(unsigned int count) const override;
    IAnsiGuts* Right(unsigned int count) const override;
    IAnsiGuts* Mid(unsigned int start, unsigned int count) const override;
    // Capitalises words: 'hELLO wORLD' gives 'Hello World'.
    IAnsiGuts* Proper() const override;

    // The order of two Ansi payloads, as Compare gives it, without a virtual
    // call: every Ansi payload is an AnsiGuts (made by the factories).
    static std::int32_t CompareTexts(const IVarDataGuts* a, const IVarDataGuts* b) {
        return TextOf(a).compare(TextOf(b));
    }
    // The text of an Ansi payload, likewise without a virtual call.
    static const zo::kel::NarrowString& TextOf(const IVarDataGuts* guts) {
        return static_cast<const AnsiGuts*>(static_cast<const IVarDataAnsi*>(guts))->text_;
    }

private:
    static const zo::kel::NarrowString& TextOf(const IAnsiGuts* other);

    zo::kel::osdep::AtomicInt referenceCount_{1};
    zo::kel::NarrowString text_;
};
