// The 77 fixed display formats: each index has a display name that users
// see and type (matched byte for byte, case included). Any index of 77 or
// more means index 0, "General". Constant data; nothing here throws.
#pragma once

#include "qkdynam_platform.h"

inline constexpr unsigned int kDisplayFormatCount = 77;

// Finds `name` (exact bytes) among the display names in index order; stores
// the index and returns true, or returns false leaving `index` untouched.
QKDYNAM_API bool IsFormat0(const char* name, short* index) noexcept;
// Copies the display name of `index` with strncpy(dest, name, size) and
// always terminates at dest[size - 1]. Nothing is written when size is 0.
QKDYNAM_API void GetFormatText0(unsigned int index, char* dest, unsigned long size) noexcept;
