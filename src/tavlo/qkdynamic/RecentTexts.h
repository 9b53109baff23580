// Texts read from the byte form repeat: every record of a kind carries the
// same keys and many of the same values. Each thread keeps the payload
// objects of the short texts it read last, and reading one of them again
// shares that object (a text payload never changes) instead of copying the
// bytes into a new one.
#pragma once

#include "tavlo/qkstatic/PayloadRef.h"

// An Ansi payload holding the `length` (at least 1) bytes at `text`.
internal::PayloadRef<IVarDataAnsi> ReadAnsiGuts(const char* text, unsigned int length);
