/* zoini line sources: a stream read in chunks of 2084 bytes, or a memory
 * block, split into lines for IniRead. A source borrows its stream or bytes,
 * which must outlive it; it owns nothing and needs no disposal. */
#ifndef ZOINI_INILINESOURCE_INTERNAL_H
#define ZOINI_INILINESOURCE_INTERNAL_H

#include <stddef.h>
#include <stdio.h>

#include "zoini/zoini.h"

typedef struct zoini_LineSource {
    FILE* stream; /* null for a memory block */
    const unsigned char* next;
    const unsigned char* end;
    int pairTerminator; /* the terminator that just ended a line, or -1 */
    int lineOpen;       /* part of the current line was delivered */
    int completedLines;
    unsigned char chunk[2084];
} zoini_LineSource;

void zoini_LineSourceFromStream(zoini_LineSource* source, FILE* stream);
void zoini_LineSourceFromMemory(zoini_LineSource* source, const void* bytes, size_t size);
/* Before the first line: 0, -3 for a UTF-16/UTF-32 mark, or -5002. */
int zoini_LineSourceCheckEncoding(zoini_LineSource* source);
/* The IniLineInputFunc of a zoini_LineSource. */
int zoini_LineSourceRead(void* context, char* buffer, int room, int* lineComplete, int* endOfInput,
                         int* lineNumber);

#endif
