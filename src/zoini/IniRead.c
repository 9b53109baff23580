/* The reader: one branch per kind of line (comment, blank, section header,
 * item), then the joining of numbered continuation items. Unrecognized lines
 * are skipped and remembered, never fatal. */
#include <errno.h>
#include <limits.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

#include "zoini/IniDocument_internal.h"
#include "zoini/IniLineSource_internal.h"

enum { kInitialLineBuffer = 256 };

typedef struct ReadState {
    struct zoini_Document* doc;
    zoini_Section* current;
    char* line;
    size_t capacity;
} ReadState;

static char* SkipSpaceIn(char* p, const char* end) {
    while (p < end && zoini_IsSpace(*p)) ++p;
    return p;
}

static char* TrimSpaceBefore(char* end, const char* start) {
    while (end > start && zoini_IsSpace(end[-1])) --end;
    return end;
}

static void NoteUnrecognized(struct zoini_Document* doc, int line) {
    if (doc->lineOfFirstUnrecognizedLine < 0) doc->lineOfFirstUnrecognizedLine = line;
}

/* "[ name ] anything": 0, 1 when not a header, or -12. */
static int ReadSectionHeader(ReadState* state, char* p, char* end, int line) {
    struct zoini_Document* doc = state->doc;
    p = SkipSpaceIn(p + 1, end);
    char* close = memchr(p, ']', (size_t)(end - p));
    if (!close) return 1;
    char* nameEnd = TrimSpaceBefore(close, p);
    if (nameEnd == p) return 1;
    *nameEnd = '\0';
    if (doc->duplicateChecking) {
        zoini_Section* existing = (zoini_Section*)zoini_IndexFind(doc, &doc->sectionIndex, &doc->sections, p);
        if (existing) {
            existing->line = line;
            state->current = existing;
            return 0;
        }
    }
    state->current = zoini_AppendSection(doc, p, (size_t)(nameEnd - p), line);
    return state->current ? 0 : kIniErrOutOfMemory;
}

/* The first "=", or with read option 8 the first ":" (":=" counting as one). */
static char* FindSeparator(const struct zoini_Document* doc, char* p, char* end, size_t* width) {
    char* equals = memchr(p, '=', (size_t)(end - p));
    *width = 1;
    if (!(doc->readOptions & kIniReadColonSeparatorAndImplicitSection)) return equals;
    char* colon = memchr(p, ':', (size_t)((equals ? equals : end) - p));
    if (!colon) return equals;
    if (colon + 1 < end && colon[1] == '=') *width = 2;
    return colon;
}

/* Strips a matching pair of quotes the read options ask for; returns the quote. */
static int StripQuotes(const struct zoini_Document* doc, char** value, size_t* length) {
    static const struct {
        int option;
        char quote;
    } kQuotes[] = {{kIniReadStripDoubleQuotes, '"'}, {kIniReadStripSingleQuotes, '\''}};
    for (size_t i = 0; i < sizeof kQuotes / sizeof kQuotes[0]; ++i) {
        const char quote = kQuotes[i].quote;
        if ((doc->readOptions & kQuotes[i].option) && *length >= 2 && (*value)[0] == quote &&
            (*value)[*length - 1] == quote) {
            ++*value;
            *length -= 2;
            return quote;
        }
    }
    return 0;
}

static int StoreItem(ReadState* state, const char* name, size_t nameLength, char* value, size_t valueLength,
                     int line) {
    struct zoini_Document* doc = state->doc;
    const int quote = StripQuotes(doc, &value, &valueLength);
    if (doc->duplicateChecking) {
        zoini_Item* existing = zoini_FindItem(doc, state->current, name);
        if (existing) {
            if (zoini_SetItemValue(existing, value, valueLength) < 0) return kIniErrOutOfMemory;
            existing->quote = quote;
            existing->line = line;
            return 0;
        }
    }
    zoini_Item* item = zoini_NewItem(name, nameLength, value, valueLength, line, quote);
    if (!item) return kIniErrOutOfMemory;
    return zoini_AppendItem(doc, state->current, item);
}

/* "name = value": 0, 1 when not an item, or -12. */
static int ReadItem(ReadState* state, char* p, char* end, int line) {
    struct zoini_Document* doc = state->doc;
    size_t width;
    char* separator = FindSeparator(doc, p, end, &width);
    if (!separator) return 1;
    char* nameEnd = TrimSpaceBefore(separator, p);
    if (nameEnd == p) return 1;
    char* value = SkipSpaceIn(separator + width, end);
    char* valueEnd = TrimSpaceBefore(end, value);
    if (valueEnd == value && !(doc->readOptions & kIniReadAllowEmptyValues)) return 1;
    if (!state->current) {
        if (!(doc->readOptions & kIniReadColonSeparatorAndImplicitSection)) return 0;
        state->current = zoini_AppendSection(doc, ZOINI_IMPLICIT_SECTION, strlen(ZOINI_IMPLICIT_SECTION), -1);
        if (!state->current) return kIniErrOutOfMemory;
    }
    *nameEnd = '\0';
    return StoreItem(state, p, (size_t)(nameEnd - p), value, (size_t)(valueEnd - value), line);
}

static int ReadLine(ReadState* state, char* line, size_t length, int number) {
    char* end = line + length;
    char* p = SkipSpaceIn(line, end);
    if (p < end && *p == ';') return 0;
    const int result = p == end ? 1 : *p == '[' ? ReadSectionHeader(state, p, end, number) : ReadItem(state, p, end, number);
    if (result == 1) NoteUnrecognized(state->doc, number);
    return result < 0 ? result : 0;
}

static int GrowLine(ReadState* state) {
    if (state->capacity > INT_MAX / 2) return kIniErrOutOfMemory;
    char* grown = realloc(state->line, state->capacity * 2);
    if (!grown) return kIniErrOutOfMemory;
    state->line = grown;
    state->capacity *= 2;
    return 0;
}

/* Gathers one whole line into state->line, doubling it while a line does not
 * fit: 1 when a line was read, 0 at the end of input, or a negative code. */
static int NextLine(ReadState* state, IniLineInputFunc lineInput, void* context, size_t* length, int* number) {
    int complete = 0, endOfInput = 0;
    *length = 0;
    for (;;) {
        if (state->capacity - *length < 2 && GrowLine(state) < 0) return kIniErrOutOfMemory;
        const int room = (int)(state->capacity - *length);
        const int got = lineInput(context, state->line + *length, room, &complete, &endOfInput, number);
        if (got < 0) return got;
        if (got >= room) return kIniErrInvalidArgument;
        *length += (size_t)got;
        if (complete) return 1;
        if (endOfInput) return *length ? 1 : 0;
        if (got == 0) return kIniErrReadFailed; /* a source that makes no progress */
    }
}

/* " LineNNNN" at the end of a name: the length of the base name, or 0. */
static size_t AnalyzeItemName(const char* name, int* number) {
    static const char kMarker[] = " Line";
    const size_t markerLength = sizeof kMarker - 1;
    const size_t length = strlen(name);
    size_t digits = length;
    while (digits > 0 && name[digits - 1] >= '0' && name[digits - 1] <= '9') --digits;
    if (digits == length || digits < markerLength || memcmp(name + digits - markerLength, kMarker, markerLength))
        return 0;
    int value = 0;
    for (size_t i = digits; i < length; ++i) {
        const int digit = name[i] - '0';
        if (value > (INT_MAX - digit) / 10) return 0;
        value = value * 10 + digit;
    }
    *number = value;
    return digits - markerLength + 1; /* +1 keeps "" apart from "no match" */
}

/* Joins the run of continuation items starting at items[first] into it;
 * returns the position after the run, or -12 (nothing changed). */
static int JoinRun(zoini_Section* section, int first) {
    zoini_Item** items = (zoini_Item**)section->items.elements;
    int number = 0;
    const size_t baseLength = AnalyzeItemName(items[first]->name, &number) - 1;
    int end = first + 1;
    size_t total = strlen(items[first]->value);
    while (end < section->items.count && AnalyzeItemName(items[end]->name, &number) && number != 1) {
        total += strlen(items[end]->value);
        ++end;
    }
    char* joined = malloc(total + 1);
    if (!joined) return kIniErrOutOfMemory;
    char* out = joined;
    for (int i = first; i < end; ++i) {
        const size_t length = strlen(items[i]->value);
        memcpy(out, items[i]->value, length);
        out += length;
    }
    *out = '\0';
    zoini_Item* head = items[first];
    if (zoini_SetItemName(head, head->name, baseLength) < 0) {
        free(joined);
        return kIniErrOutOfMemory;
    }
    if (!head->valueInline) free(head->value);
    head->value = joined;
    head->valueInline = 0;
    return end;
}

/* Replaces every run of "Base Line0001", "Base Line0002", ... by one item. */
static int JoinContinuations(zoini_Section* section) {
    zoini_Item** items = (zoini_Item**)section->items.elements;
    int kept = 0, result = 0, joinedAny = 0;
    int i = 0;
    while (i < section->items.count) {
        int number = 0;
        if (result == 0 && AnalyzeItemName(items[i]->name, &number) && number == 1) {
            const int end = JoinRun(section, i);
            if (end < 0) {
                result = end;
                continue;
            }
            for (int j = i + 1; j < end; ++j) zoini_DisposeItem(items[j]);
            items[kept++] = items[i];
            i = end;
            joinedAny = 1;
        } else {
            items[kept++] = items[i++];
        }
    }
    section->items.count = kept;
    if (joinedAny) zoini_IndexInvalidate(&section->itemIndex);
    return result;
}

int IniRead(IniHandle doc, IniLineInputFunc lineInput, void* context) {
    if (!doc || !lineInput) return kIniErrInvalidArgument;
    zoini_RemoveAllSections(doc);
    doc->lineOfFirstUnrecognizedLine = -1;
    ReadState state = {doc, NULL, malloc(kInitialLineBuffer), kInitialLineBuffer};
    if (!state.line) return kIniErrOutOfMemory;
    int result;
    size_t length;
    int number = 0;
    while ((result = NextLine(&state, lineInput, context, &length, &number)) == 1) {
        state.line[length] = '\0';
        result = ReadLine(&state, state.line, length, number);
        if (result < 0) break;
    }
    free(state.line);
    for (int i = 0; result == 0 && i < doc->sections.count; ++i) result = JoinContinuations(doc->sections.elements[i]);
    return result;
}

int IniReadFromFilePtr(IniHandle doc, FILE* stream) {
    if (!doc || !stream) return kIniErrInvalidArgument;
    zoini_LineSource source;
    zoini_LineSourceFromStream(&source, stream);
    const int encoding = zoini_LineSourceCheckEncoding(&source);
    if (encoding < 0) return encoding;
    return IniRead(doc, zoini_LineSourceRead, &source);
}

int IniReadFromMemory(IniHandle doc, const void* bytes, size_t size) {
    if (!doc || (!bytes && size)) return kIniErrInvalidArgument;
    zoini_LineSource source;
    zoini_LineSourceFromMemory(&source, bytes, size);
    const int encoding = zoini_LineSourceCheckEncoding(&source);
    if (encoding < 0) return encoding;
    return IniRead(doc, zoini_LineSourceRead, &source);
}

int zoini_RememberFile(struct zoini_Document* doc, const char* path, struct timespec modified) {
    char* copy = zoini_StrDup(path);
    if (!copy) return kIniErrOutOfMemory;
    free(doc->filePath);
    doc->filePath = copy;
    doc->fileTime = modified;
    return 0;
}

int IniReadFromFile(IniHandle doc, const char* path) {
    if (!doc || !path) return kIniErrInvalidArgument;
    FILE* stream = fopen(path, "rb");
    if (!stream) {
        struct stat status;
        return (errno != ENOENT && stat(path, &status) == 0) ? kIniErrCannotOpen : kIniErrInvalidArgument;
    }
    /* The time of the file opened, even if the path is replaced meanwhile. */
    struct stat status;
    const struct timespec modified = fstat(fileno(stream), &status) == 0 ? status.st_mtim : (struct timespec){0, 0};
    int result = IniReadFromFilePtr(doc, stream);
    fclose(stream);
    if (result >= 0) result = zoini_RememberFile(doc, path, modified);
    return result;
}
