// The payload of a Cell: row, column and a value. Truth, number and order are
// those of the value alone, so equal values at different coordinates compare
// equal. It also answers the byte-block identifier, with the cell interface:
// callers ask for byte blocks only on values tagged Raw.
#pragma once

#include "tavlo/qkdynamic/PayloadObject.h"
#include "tavlo/qkstatic/vardata.h"

class CellGuts final : public internal::PayloadObject<IVarDataCell, IID_IUnknown, IID_IVarDataGuts, IID_IVarDataCell,
                                                      IID_IVarDataRaw> {
public:
    CellGuts(unsigned short row, unsigned short column, const VarData& value)
        : row_(row), column_(column), value_(value) {}

    explicit operator bool() const override { return static_cast<bool>(value_); }
    explicit operator double() const override { return static_cast<double>(value_); }
    std::int32_t Compare(const IVarDataGuts* other) const override {
        return value_.Compare(static_cast<const CellGuts*>(other)->value_);
    }
    void GetCell(unsigned short* row, unsigned short* column, VarData* value) const override {
        *row = row_;
        *column = column_;
        *value = value_;
    }

private:
    unsigned short row_;
    unsigned short column_;
    VarData value_;
};
