/* The writer: the document as lines, with long values split into numbered
 * continuation items that the reader joins again. */
#include <stdlib.h>
#include <string.h>

#include "zoini/IniDocument_internal.h"

/* " Line", four digits and a three-character separator, whatever the separator is. */
enum { kContinuationAllowance = 12 };

typedef struct LineWriter {
    IniLineOutputFunc output;
    void* context;
    char* line;
    size_t capacity;
    size_t length;
} LineWriter;

static int Reserve(LineWriter* writer, size_t extra) {
    if (writer->capacity - writer->length >= extra) return 0;
    size_t capacity = writer->capacity ? writer->capacity : 256;
    while (capacity - writer->length < extra) {
        if (capacity > SIZE_MAX / 2) return kIniErrOutOfMemory;
        capacity *= 2;
    }
    char* grown = realloc(writer->line, capacity);
    if (!grown) return kIniErrOutOfMemory;
    writer->line = grown;
    writer->capacity = capacity;
    return 0;
}

static void Append(LineWriter* writer, const char* text, size_t length) {
    memcpy(writer->line + writer->length, text, length);
    writer->length += length;
}

static void AppendChar(LineWriter* writer, int c) {
    if (c) writer->line[writer->length++] = (char)c;
}

static int Flush(LineWriter* writer) {
    writer->line[writer->length] = '\0';
    const int result = writer->output(writer->context, writer->line, writer->length);
    writer->length = 0;
    return result < 0 ? result : 0;
}

static int WriteEmptyLine(LineWriter* writer) {
    if (Reserve(writer, 1) < 0) return kIniErrOutOfMemory;
    return Flush(writer);
}

static int WriteHeader(LineWriter* writer, const char* name) {
    const size_t length = strlen(name);
    if (Reserve(writer, length + 3) < 0) return kIniErrOutOfMemory;
    AppendChar(writer, '[');
    Append(writer, name, length);
    AppendChar(writer, ']');
    return Flush(writer);
}

typedef struct ItemParts {
    const char* name;
    size_t nameLength;
    const char* separator;
    size_t separatorLength;
    int quote;
} ItemParts;

/* name, separator, then the value in its quotes; with a number, "name LineNNNN". */
static int WriteItemLine(LineWriter* writer, const ItemParts* parts, int number, const char* value,
                         size_t length) {
    if (Reserve(writer, parts->nameLength + parts->separatorLength + length + 32) < 0) return kIniErrOutOfMemory;
    Append(writer, parts->name, parts->nameLength);
    if (number > 0) {
        char suffix[24];
        const int suffixLength = snprintf(suffix, sizeof suffix, " Line%04d", number);
        Append(writer, suffix, (size_t)suffixLength);
    }
    Append(writer, parts->separator, parts->separatorLength);
    AppendChar(writer, parts->quote);
    Append(writer, value, length);
    AppendChar(writer, parts->quote);
    return Flush(writer);
}

/* Length of the next piece: at most `chunk`, ending after the last break character within it. */
static size_t PieceLength(const char* value, size_t remaining, size_t chunk, int breakCharacter) {
    if (remaining <= chunk) return remaining;
    if (breakCharacter) {
        for (size_t i = chunk; i > 0; --i) {
            if ((unsigned char)value[i - 1] == breakCharacter) return i;
        }
    }
    return chunk;
}

static int WriteItem(LineWriter* writer, const struct zoini_Document* doc, const zoini_Item* item) {
    const int spaced = doc->writeFlags & kIniWriteSpacedSeparator;
    const ItemParts parts = {item->name, strlen(item->name), spaced ? " = " : "=", spaced ? 3u : 1u, item->quote};
    const size_t valueLength = strlen(item->value);
    const size_t quotes = item->quote ? 2 : 0;
    const size_t lineLength = parts.nameLength + parts.separatorLength + valueLength + quotes;
    if (doc->maxLineLength == -1 || lineLength <= (size_t)doc->maxLineLength)
        return WriteItemLine(writer, &parts, 0, item->value, valueLength);
    const long long chunk =
        (long long)doc->maxLineLength - (long long)(parts.nameLength + kContinuationAllowance) - (long long)quotes;
    if (chunk < 1) return kIniErrLineTooShort;
    size_t offset = 0;
    int number = 1;
    do {
        const size_t piece =
            PieceLength(item->value + offset, valueLength - offset, (size_t)chunk, doc->breakCharacter);
        const int result = WriteItemLine(writer, &parts, number++, item->value + offset, piece);
        if (result < 0) return result;
        offset += piece;
    } while (offset < valueLength);
    return 0;
}

static int IsImplicit(const zoini_Section* section) { return strcmp(section->name, ZOINI_IMPLICIT_SECTION) == 0; }

static int WriteSection(LineWriter* writer, const struct zoini_Document* doc, const zoini_Section* section,
                        const zoini_Section* previous) {
    const int policy = doc->writeFlags & kIniWriteBlankLinePolicy;
    const int fromFile = section->line != -1;
    int result = 0;
    if (policy && !fromFile && previous && previous->line != -1) result = WriteEmptyLine(writer);
    if (result == 0 && !IsImplicit(section)) result = WriteHeader(writer, section->name);
    for (int i = 0; result == 0 && i < section->items.count; ++i)
        result = WriteItem(writer, doc, section->items.elements[i]);
    if (result == 0 && (!policy || (!fromFile && !IsImplicit(section)))) result = WriteEmptyLine(writer);
    return result;
}

int IniWrite(IniHandle doc, IniLineOutputFunc outputLine, void* context) {
    if (!doc || !outputLine) return kIniErrInvalidArgument;
    LineWriter writer = {outputLine, context, NULL, 0, 0};
    int result = 0;
    for (int i = 0; result == 0 && i < doc->sections.count; ++i)
        result = WriteSection(&writer, doc, doc->sections.elements[i], i ? doc->sections.elements[i - 1] : NULL);
    free(writer.line);
    return result;
}
