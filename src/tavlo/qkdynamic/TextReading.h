// How a text payload reads as a truth value and as a number: a logical word
// gives its flag, else numeric or time text gives its number, else false/0.
#pragma once

#include "tavlo/qkstatic/TextToValue.h"

namespace internal {

template <class Char>
bool TextTruth(const Char* text) {
    bool flag = false;
    if (IsLogicalText(text, flag)) return flag;
    double number = 0.0;
    if (IsNumericText(text, number) || IsTimeText(text, number)) return number != 0.0;
    return false;
}

template <class Char>
double TextNumber(const Char* text) {
    bool flag = false;
    if (IsLogicalText(text, flag)) return flag ? 1.0 : 0.0;
    double number = 0.0;
    if (IsNumericText(text, number) || IsTimeText(text, number)) return number;
    return 0.0;
}

}  // namespace internal
