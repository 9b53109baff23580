/* Name comparison and the hash indexes that find records by name in large
 * documents. A hash agrees with the comparison it serves: the insensitive
 * hash skips white space and folds case through the locale's toupper, so
 * names the comparison calls equal always share a hash. */
#include <ctype.h>
#include <stdlib.h>
#include <string.h>

#include "zoini/IniDocument_internal.h"

/* Below this many records a scan is cheaper than an index. */
enum { kIndexThreshold = 8 };

int zoini_IsSpace(int c) { return isspace((unsigned char)c); }

const char* zoini_SkipSpace(const char* text) {
    while (*text && isspace((unsigned char)*text)) ++text;
    return text;
}

static const unsigned char* SkipSpace(const char* text) { return (const unsigned char*)zoini_SkipSpace(text); }

int zoini_StrICmpWithoutSurrWhiteSpace(const char* a, const char* b) {
    if (!a || !b) return a ? 1 : (b ? -1 : 0);
    const unsigned char* p = SkipSpace(a);
    const unsigned char* q = SkipSpace(b);
    for (;; ++p, ++q) {
        if (!*p) return *SkipSpace((const char*)q) ? -1 : 0;
        if (!*q) return *SkipSpace((const char*)p) ? 1 : 0;
        const int cp = toupper(*p), cq = toupper(*q);
        if (cp != cq) return cp < cq ? -1 : 1;
    }
}

static int ExactCompare(const char* a, const char* b) {
    if (!a || !b) return a ? 1 : (b ? -1 : 0);
    return strcmp(a, b);
}

zoini_NameCompare zoini_NameCompareOf(const struct zoini_Document* doc) {
    return doc->caseAndWhitespaceSensitive ? ExactCompare : zoini_StrICmpWithoutSurrWhiteSpace;
}

char* zoini_StrNDup(const char* text, size_t length) {
    char* copy = malloc(length + 1);
    if (!copy) return NULL;
    memcpy(copy, text, length);
    copy[length] = '\0';
    return copy;
}

char* zoini_StrDup(const char* text) { return zoini_StrNDup(text, strlen(text)); }

static const uint32_t kFnvBasis = 2166136261u;
static const uint32_t kFnvPrime = 16777619u;

static uint32_t HashName(const struct zoini_Document* doc, const char* name) {
    uint32_t hash = kFnvBasis;
    const unsigned char* p = (const unsigned char*)name;
    if (doc->caseAndWhitespaceSensitive) {
        for (; *p; ++p) hash = (hash ^ *p) * kFnvPrime;
    } else {
        for (; *p; ++p) {
            if (!isspace(*p)) hash = (hash ^ (uint32_t)toupper(*p)) * kFnvPrime;
        }
    }
    return hash;
}

/* The case tables of the current locale: an index built under others is stale. */
static void NoteLocale(struct zoini_Document* doc) {
    const void* upper = *__ctype_toupper_loc();
    const void* classes = *__ctype_b_loc();
    if (upper != doc->indexLocale[0] || classes != doc->indexLocale[1]) {
        doc->indexLocale[0] = upper;
        doc->indexLocale[1] = classes;
        zoini_IndexInvalidateAll(doc);
    }
}

void zoini_IndexInvalidate(zoini_NameIndex* index) { index->generation = 0; }

void zoini_IndexInvalidateAll(struct zoini_Document* doc) {
    if (++doc->indexGeneration == 0) doc->indexGeneration = 1; /* 0 marks an index never built */
}

void zoini_IndexDispose(zoini_NameIndex* index) {
    free(index->slots);
    free(index->hashes);
    memset(index, 0, sizeof *index);
}

static int IsCurrent(const struct zoini_Document* doc, const zoini_NameIndex* index) {
    return index->generation != 0 && index->generation == doc->indexGeneration;
}

/* Slot holding a record equal to `name`, or the empty slot where it would go. */
static size_t Probe(const struct zoini_Document* doc, const zoini_NameIndex* index, const char* name,
                    uint32_t hash) {
    const zoini_NameCompare compare = zoini_NameCompareOf(doc);
    const size_t mask = index->capacity - 1;
    size_t slot = hash & mask;
    while (index->slots[slot] &&
           (index->hashes[slot] != hash || compare(index->slots[slot]->name, name) != 0)) {
        slot = (slot + 1) & mask;
    }
    return slot;
}

/* Adds `record` unless an equal name is indexed already; grows as needed. */
static int Insert(struct zoini_Document* doc, zoini_NameIndex* index, zoini_Named* record);

static int Resize(struct zoini_Document* doc, zoini_NameIndex* index, size_t capacity) {
    zoini_NameIndex grown = {calloc(capacity, sizeof(zoini_Named*)), malloc(capacity * sizeof(uint32_t)),
                             capacity, 0, index->unindexed, index->generation};
    if (!grown.slots || !grown.hashes) {
        zoini_IndexDispose(&grown);
        return kIniErrOutOfMemory;
    }
    for (size_t slot = 0; slot < index->capacity; ++slot) {
        if (index->slots[slot]) Insert(doc, &grown, index->slots[slot]);
    }
    zoini_IndexDispose(index);
    *index = grown;
    return 0;
}

static int Insert(struct zoini_Document* doc, zoini_NameIndex* index, zoini_Named* record) {
    if ((index->used + 1) * 2 > index->capacity) {
        const int result = Resize(doc, index, index->capacity ? index->capacity * 2 : 16);
        if (result < 0) return result;
    }
    const uint32_t hash = HashName(doc, record->name);
    const size_t slot = Probe(doc, index, record->name, hash);
    if (index->slots[slot]) {
        ++index->unindexed;
        return 0;
    }
    index->slots[slot] = record;
    index->hashes[slot] = hash;
    ++index->used;
    return 0;
}

static int Rebuild(struct zoini_Document* doc, zoini_NameIndex* index, const zoini_List* list) {
    zoini_IndexDispose(index);
    size_t capacity = 16;
    while (capacity < (size_t)list->count * 2) capacity *= 2;
    index->generation = doc->indexGeneration;
    int result = Resize(doc, index, capacity);
    for (int i = 0; result == 0 && i < list->count; ++i) result = Insert(doc, index, list->elements[i]);
    if (result < 0) zoini_IndexDispose(index);
    return result;
}

static zoini_Named* ScanFrom(const struct zoini_Document* doc, const zoini_List* list, int start,
                             const char* name) {
    const zoini_NameCompare compare = zoini_NameCompareOf(doc);
    for (int i = start; i < list->count; ++i) {
        zoini_Named* record = list->elements[i];
        if (compare(record->name, name) == 0) return record;
    }
    return NULL;
}

zoini_Named* zoini_IndexFind(struct zoini_Document* doc, zoini_NameIndex* index, const zoini_List* list,
                             const char* name) {
    if (!name) return NULL;
    NoteLocale(doc);
    if (list->count < kIndexThreshold) return ScanFrom(doc, list, 0, name);
    if (!IsCurrent(doc, index) && Rebuild(doc, index, list) < 0) return ScanFrom(doc, list, 0, name);
    return index->slots[Probe(doc, index, name, HashName(doc, name))];
}

int zoini_IndexAdded(struct zoini_Document* doc, zoini_NameIndex* index, zoini_Named* record) {
    if (!IsCurrent(doc, index)) return 0;
    const int result = Insert(doc, index, record);
    if (result < 0) zoini_IndexDispose(index);
    return result;
}

void zoini_IndexRemoved(struct zoini_Document* doc, zoini_NameIndex* index, const zoini_List* list,
                        const zoini_Named* record, int position) {
    if (!IsCurrent(doc, index)) return;
    const size_t mask = index->capacity - 1;
    size_t slot = Probe(doc, index, record->name, HashName(doc, record->name));
    if (index->slots[slot] != record) {
        if (index->unindexed) --index->unindexed;
        return;
    }
    /* Backward-shift deletion keeps every probe chain unbroken. */
    index->slots[slot] = NULL;
    --index->used;
    for (size_t next = (slot + 1) & mask; index->slots[next]; next = (next + 1) & mask) {
        const size_t home = index->hashes[next] & mask;
        if (((next - home) & mask) >= ((next - slot) & mask)) {
            index->slots[slot] = index->slots[next];
            index->hashes[slot] = index->hashes[next];
            index->slots[next] = NULL;
            slot = next;
        }
    }
    if (index->unindexed == 0) return;
    zoini_Named* successor = ScanFrom(doc, list, position - 1, record->name);
    if (!successor) return;
    --index->unindexed;
    if (Insert(doc, index, successor) < 0) zoini_IndexDispose(index);
}
