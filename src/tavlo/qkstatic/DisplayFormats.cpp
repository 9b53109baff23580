#include "tavlo/qkstatic/DisplayFormats.h"

#include <cstring>

#include "tavlo/qkstatic/DisplayFormatsInternal.h"

using internal::DisplayFormatAt;

bool IsFormat0(const char* name, short* index) noexcept {
    if (name == nullptr) return false;
    for (unsigned int row = 0; row < kDisplayFormatCount; ++row) {
        if (std::strcmp(name, DisplayFormatAt(row).name) == 0) {
            if (index != nullptr) *index = static_cast<short>(row);
            return true;
        }
    }
    return false;
}

void GetFormatText0(unsigned int index, char* dest, unsigned long size) noexcept {
    if (dest == nullptr || size == 0) return;
    std::strncpy(dest, DisplayFormatAt(index).name, size);
    dest[size - 1] = '\0';
}
