/* Line sources over a stream or a memory block. NUL, LF and CR end a line; a
 * different terminator right after one is the second half of a CR LF or
 * LF CR pair and is swallowed, so every pair makes one break. */
#include <string.h>

#include "zoini/IniLineSource_internal.h"

static const unsigned char kEndsLine[256] = {[0] = 1, ['\n'] = 1, ['\r'] = 1};

enum { kNoTerminator = -1 };

static void Init(zoini_LineSource* source, FILE* stream, const unsigned char* bytes, size_t size) {
    source->stream = stream;
    source->next = bytes;
    source->end = bytes + size;
    source->pairTerminator = kNoTerminator;
    source->lineOpen = 0;
    source->completedLines = 0;
}

void zoini_LineSourceFromStream(zoini_LineSource* source, FILE* stream) { Init(source, stream, NULL, 0); }

void zoini_LineSourceFromMemory(zoini_LineSource* source, const void* bytes, size_t size) {
    Init(source, NULL, bytes, size);
}

/* Makes unread bytes available: 1, 0 at the end of input, or -5002. */
static int Refill(zoini_LineSource* source) {
    if (source->next < source->end) return 1;
    if (!source->stream) return 0;
    const size_t got = fread(source->chunk, 1, sizeof source->chunk, source->stream);
    if (got == 0) return ferror(source->stream) ? kIniErrReadFailed : 0;
    source->next = source->chunk;
    source->end = source->chunk + got;
    return 1;
}

/* The byte-order marks: UTF-8 is skipped, UTF-16 and UTF-32 are refused. */
int zoini_LineSourceCheckEncoding(zoini_LineSource* source) {
    const int available = Refill(source);
    if (available <= 0) return available;
    const size_t size = (size_t)(source->end - source->next);
    const unsigned char* p = source->next;
    if (size >= 2 && ((p[0] == 0xFF && p[1] == 0xFE) || (p[0] == 0xFE && p[1] == 0xFF)))
        return kIniErrUnsupportedEncoding;
    if (size >= 4 && p[0] == 0 && p[1] == 0 && p[2] == 0xFE && p[3] == 0xFF) return kIniErrUnsupportedEncoding;
    if (size >= 3 && p[0] == 0xEF && p[1] == 0xBB && p[2] == 0xBF) source->next += 3;
    return 0;
}

int zoini_LineSourceRead(void* context, char* buffer, int room, int* lineComplete, int* endOfInput,
                         int* lineNumber) {
    zoini_LineSource* source = context;
    *lineComplete = 0;
    *endOfInput = 0;
    size_t stored = 0;
    const size_t capacity = room > 1 ? (size_t)room - 1 : 0;
    while (stored < capacity) {
        const int available = Refill(source);
        if (available < 0) return available;
        if (available == 0) {
            if (source->lineOpen || stored) {
                *lineComplete = 1;
                ++source->completedLines;
                source->lineOpen = 0;
            } else {
                *endOfInput = 1;
            }
            break;
        }
        if (source->pairTerminator != kNoTerminator) {
            const int first = *source->next;
            const int swallow = kEndsLine[first] && first != source->pairTerminator;
            source->pairTerminator = kNoTerminator;
            if (swallow) {
                ++source->next;
                continue;
            }
        }
        const unsigned char* p = source->next;
        const unsigned char* stop = p + ((size_t)(source->end - p) < capacity - stored ? (size_t)(source->end - p)
                                                                                       : capacity - stored);
        while (p < stop && !kEndsLine[*p]) ++p;
        memcpy(buffer + stored, source->next, (size_t)(p - source->next));
        stored += (size_t)(p - source->next);
        source->next = p;
        if (p < source->end && kEndsLine[*p]) {
            source->pairTerminator = *p;
            ++source->next;
            *lineComplete = 1;
            ++source->completedLines;
            source->lineOpen = 0;
            break;
        }
        source->lineOpen = 1;
    }
    if (!*endOfInput) *lineNumber = source->completedLines + (*lineComplete ? 0 : 1);
    if (room > 0) buffer[stored] = '\0';
    return (int)stored;
}
