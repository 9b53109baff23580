/* Typed put and get: escaping of strings, the strict integer grammar, doubles
 * and the words "True" and "False". */
#include <ctype.h>
#include <errno.h>
#include <limits.h>
#include <math.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

#include "zoini/IniDocument_internal.h"

/* Put */

static int CheckNames(IniHandle doc, const char* section, const char* item) {
    if (!doc) return kIniErrInvalidArgument;
    if (!section || !*section || !item || !*item) return kIniErrEmptyName;
    return 0;
}

static int PutValue(IniHandle doc, const char* section, const char* item, const char* value, size_t length,
                    int quote) {
    zoini_Section* owner = zoini_FindSection(doc, section);
    const int created = owner == NULL;
    if (created && !(owner = zoini_AppendSection(doc, section, strlen(section), -1))) return kIniErrOutOfMemory;
    zoini_Item* existing = doc->duplicateChecking ? zoini_FindItem(doc, owner, item) : NULL;
    if (existing) {
        if (zoini_SetItemValue(existing, value, length) < 0) return kIniErrOutOfMemory;
        existing->quote = quote;
        return 1;
    }
    zoini_Item* added = zoini_NewItem(item, strlen(item), value, length, -1, quote);
    if (!added || zoini_AppendItem(doc, owner, added) < 0) {
        if (created) zoini_RemoveSectionRecord(doc, owner);
        return kIniErrOutOfMemory;
    }
    return 1;
}

int IniPut(IniHandle doc, const char* section, const char* item, const char* value, int quote) {
    const int names = CheckNames(doc, section, item);
    if (names < 0) return names;
    if (quote != 0 && quote != '"' && quote != '\'') return kIniErrInvalidArgument;
    if (!value) value = "";
    return PutValue(doc, section, item, value, strlen(value), quote);
}

/* Escapes into out (room for 4 * length + 1); returns the escaped length. */
static size_t Escape(const char* text, size_t length, char* out) {
    static const char kHex[] = "0123456789abcdef";
    char* p = out;
    for (size_t i = 0; i < length; ++i) {
        const unsigned char c = (unsigned char)text[i];
        switch (c) {
        case '\t': *p++ = '\\'; *p++ = 't'; break;
        case '\n': *p++ = '\\'; *p++ = 'n'; break;
        case '"': *p++ = '\\'; *p++ = '"'; break;
        case '\\': *p++ = '\\'; *p++ = '\\'; break;
        default:
            if (iscntrl(c)) {
                *p++ = '\\';
                *p++ = 'x';
                *p++ = kHex[c >> 4];
                *p++ = kHex[c & 15];
            } else {
                *p++ = (char)c;
            }
        }
    }
    *p = '\0';
    return (size_t)(p - out);
}

int IniPutStringWithOptions(IniHandle doc, const char* section, const char* item, const char* value, int quoted,
                            int escaped) {
    const int names = CheckNames(doc, section, item);
    if (names < 0) return names;
    if (!value) value = "";
    const int quote = quoted ? '"' : 0;
    const size_t length = strlen(value);
    if (!escaped) return PutValue(doc, section, item, value, length, quote);
    if (length > (SIZE_MAX - 1) / 4) return kIniErrOutOfMemory;
    char* escapedValue = malloc(length * 4 + 1);
    if (!escapedValue) return kIniErrOutOfMemory;
    const int result = PutValue(doc, section, item, escapedValue, Escape(value, length, escapedValue), quote);
    free(escapedValue);
    return result;
}

int IniPutString(IniHandle doc, const char* section, const char* item, const char* value) {
    return IniPutStringWithOptions(doc, section, item, value, 1, 1);
}

int IniPutRawString(IniHandle doc, const char* section, const char* item, const char* value) {
    return IniPutStringWithOptions(doc, section, item, value, 1, 0);
}

static int PutFormatted(IniHandle doc, const char* section, const char* item, const char* text) {
    return IniPut(doc, section, item, text, 0);
}

int IniPutInt(IniHandle doc, const char* section, const char* item, int value) {
    char text[16];
    snprintf(text, sizeof text, "%d", value);
    return PutFormatted(doc, section, item, text);
}

int IniPutUInt(IniHandle doc, const char* section, const char* item, unsigned int value) {
    char text[16];
    snprintf(text, sizeof text, "%u", value);
    return PutFormatted(doc, section, item, text);
}

int IniPutDouble(IniHandle doc, const char* section, const char* item, double value) {
    char text[40];
    snprintf(text, sizeof text, "%.14e", value);
    return PutFormatted(doc, section, item, text);
}

int IniPutBoolean(IniHandle doc, const char* section, const char* item, int value) {
    return PutFormatted(doc, section, item, value ? "True" : "False");
}

/* Get */

/* The stored value of a present, non-blank item, or null; notes the item's line. */
static const char* Lookup(IniHandle doc, const char* section, const char* item) {
    const zoini_Item* found = zoini_FindItem(doc, zoini_FindSection(doc, section), item);
    doc->lineOfLastAccess = found ? found->line : -1;
    return (found && *zoini_SkipSpace(found->value)) ? found->value : NULL;
}

static int HexDigit(int c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

/* Unescapes into out (null: only measure); returns the length. */
static size_t Unescape(const char* p, char* out) {
    size_t length = 0;
    while (*p) {
        char c = *p++;
        if (c == '\\') {
            if (!*p) break;
            c = *p++;
            if (c == 'n') {
                c = '\n';
            } else if (c == 't') {
                c = '\t';
            } else if (c == 'x' && HexDigit(p[0]) >= 0 && HexDigit(p[1]) >= 0) {
                c = (char)(HexDigit(p[0]) * 16 + HexDigit(p[1]));
                p += 2;
            }
        }
        if (out) out[length] = c;
        ++length;
    }
    if (out) out[length] = '\0';
    return length;
}

/* The scratch block, kept while it is neither too small nor 1 KB too large. */
static int ReserveScratch(IniHandle doc, size_t needed) {
    if (doc->scratchSize >= needed && doc->scratchSize <= needed + 1024) return 0;
    const size_t size = needed > 256 ? needed : 256;
    char* resized = realloc(doc->scratch, size);
    if (!resized) return kIniErrOutOfMemory;
    doc->scratch = resized;
    doc->scratchSize = size;
    return 0;
}

int IniGetPointerToString(IniHandle doc, const char* section, const char* item, const char** value) {
    if (!doc || !value) return kIniErrInvalidArgument;
    const char* raw = Lookup(doc, section, item);
    if (!raw) return 0;
    if (ReserveScratch(doc, Unescape(raw, NULL) + 1) < 0) return kIniErrOutOfMemory;
    Unescape(raw, doc->scratch);
    *value = doc->scratch;
    return 1;
}

int IniGetPointerToRawString(IniHandle doc, const char* section, const char* item, const char** value) {
    if (!doc || !value) return kIniErrInvalidArgument;
    const char* raw = Lookup(doc, section, item);
    if (!raw) return 0;
    *value = raw;
    return 1;
}

typedef int (*PointerGetter)(IniHandle, const char*, const char*, const char**);

static int CopyOut(PointerGetter get, IniHandle doc, const char* section, const char* item, char** value) {
    if (!value) return kIniErrInvalidArgument;
    const char* text;
    const int found = get(doc, section, item, &text);
    if (found != 1) return found;
    char* copy = zoini_StrDup(text);
    if (!copy) return kIniErrOutOfMemory;
    *value = copy;
    return 1;
}

static int CopyInto(PointerGetter get, IniHandle doc, const char* section, const char* item, char* buffer,
                    size_t size) {
    if (!buffer || size == 0) return kIniErrInvalidArgument;
    const char* text;
    const int found = get(doc, section, item, &text);
    if (found != 1) return found;
    const size_t length = strlen(text);
    const size_t copied = length < size ? length : size - 1;
    memcpy(buffer, text, copied);
    buffer[copied] = '\0';
    return copied == length ? 1 : kIniErrInvalidArgument;
}

int IniGetStringCopy(IniHandle doc, const char* section, const char* item, char** value) {
    return CopyOut(IniGetPointerToString, doc, section, item, value);
}

int IniGetRawStringCopy(IniHandle doc, const char* section, const char* item, char** value) {
    return CopyOut(IniGetPointerToRawString, doc, section, item, value);
}

int IniGetStringIntoBuffer(IniHandle doc, const char* section, const char* item, char* buffer, size_t size) {
    return CopyInto(IniGetPointerToString, doc, section, item, buffer, size);
}

int IniGetRawStringIntoBuffer(IniHandle doc, const char* section, const char* item, char* buffer, size_t size) {
    return CopyInto(IniGetPointerToRawString, doc, section, item, buffer, size);
}

/* Blanks, at most one sign, decimal digits, blanks; the magnitude must fit 32
 * bits. 0 or -5021. */
static int ConvertNumStrToUint(const char* text, unsigned int* magnitude, int* negative) {
    const char* p = zoini_SkipSpace(text);
    *negative = *p == '-';
    if (*p == '-' || *p == '+') ++p;
    if (*p < '0' || *p > '9') return kIniErrBadInteger;
    unsigned int value = 0;
    for (; *p >= '0' && *p <= '9'; ++p) {
        const unsigned int digit = (unsigned int)(*p - '0');
        if (value > (UINT_MAX - digit) / 10) return kIniErrBadInteger;
        value = value * 10 + digit;
    }
    if (*zoini_SkipSpace(p)) return kIniErrBadInteger;
    *magnitude = value;
    return 0;
}

static int zoini_StrToInt(const char* text, int* value) {
    unsigned int magnitude;
    int negative;
    if (ConvertNumStrToUint(text, &magnitude, &negative) < 0) return kIniErrBadInteger;
    if (magnitude > (negative ? (unsigned int)INT_MAX + 1u : (unsigned int)INT_MAX)) return kIniErrBadInteger;
    *value = negative ? (int)(0u - magnitude) : (int)magnitude;
    return 0;
}

static int zoini_StrToUInt(const char* text, unsigned int* value) {
    unsigned int magnitude;
    int negative;
    if (ConvertNumStrToUint(text, &magnitude, &negative) < 0 || negative) return kIniErrBadInteger;
    *value = magnitude;
    return 0;
}

int IniGetInt(IniHandle doc, const char* section, const char* item, int* value) {
    if (!doc || !value) return kIniErrInvalidArgument;
    const char* raw = Lookup(doc, section, item);
    if (!raw) return 0;
    return zoini_StrToInt(raw, value) < 0 ? kIniErrBadInteger : 1;
}

int IniGetUInt(IniHandle doc, const char* section, const char* item, unsigned int* value) {
    if (!doc || !value) return kIniErrInvalidArgument;
    const char* raw = Lookup(doc, section, item);
    if (!raw) return 0;
    return zoini_StrToUInt(raw, value) < 0 ? kIniErrBadInteger : 1;
}

/* True when the text, without surrounding blanks, is `word` in any case. */
static int IsWord(const char* text, const char* word) {
    const char* p = zoini_SkipSpace(text);
    const size_t length = strlen(word);
    return strncasecmp(p, word, length) == 0 && *zoini_SkipSpace(p + length) == '\0';
}

int IniGetDouble(IniHandle doc, const char* section, const char* item, double* value) {
    if (!doc || !value) return kIniErrInvalidArgument;
    const char* raw = Lookup(doc, section, item);
    if (!raw) return 0;
    if (IsWord(raw, "+Inf") || IsWord(raw, "Inf")) {
        *value = HUGE_VAL;
        return 1;
    }
    if (IsWord(raw, "-Inf")) {
        *value = -HUGE_VAL;
        return 1;
    }
    char* end;
    errno = 0;
    const double parsed = strtod(raw, &end);
    if (end == raw || *end || errno == ERANGE) return kIniErrBadDouble;
    *value = parsed;
    return 1;
}

int IniGetBoolean(IniHandle doc, const char* section, const char* item, int* value) {
    if (!doc || !value) return kIniErrInvalidArgument;
    const char* raw = Lookup(doc, section, item);
    if (!raw) return 0;
    if (IsWord(raw, "True")) {
        *value = 1;
    } else if (IsWord(raw, "False")) {
        *value = 0;
    } else {
        return kIniErrBadBoolean;
    }
    return 1;
}
