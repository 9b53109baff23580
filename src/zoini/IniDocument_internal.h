/* zoini internals: the document, section and item records, the pointer lists
 * that keep them in file order and the hash indexes that find them by name.
 * Records own their strings; a list owns nothing (its users free records). */
#ifndef ZOINI_INIDOCUMENT_INTERNAL_H
#define ZOINI_INIDOCUMENT_INTERNAL_H

#include <stddef.h>
#include <stdint.h>
#include <time.h>

#include "zoini/zoini.h"

#define ZOINI_IMPLICIT_SECTION "(null)"

/* Growable array of pointers; positions are 1-based. */
typedef struct zoini_List {
    void** elements;
    int count;
    int capacity;
} zoini_List;

void* zoini_ListGetItem(const zoini_List* list, int position);
/* Appends; 0 or -12. */
int zoini_ListInsertItem(zoini_List* list, void* element);
void zoini_ListRemoveItem(zoini_List* list, int position);
/* 1-based position of `element` itself, or 0. */
int zoini_ListPositionOf(const zoini_List* list, const void* element);
void zoini_ListDispose(zoini_List* list);

/* Every record starts with its name, so that one index serves both kinds. */
typedef struct zoini_Named {
    char* name;
} zoini_Named;

typedef int (*zoini_NameCompare)(const char* a, const char* b);

/* Open-addressing hash set over the records of one list, holding for each
 * name the first record of that name in list order. Stale (generation
 * mismatch) indexes are rebuilt before use; lists shorter than a threshold are
 * scanned instead. */
typedef struct zoini_NameIndex {
    zoini_Named** slots;
    uint32_t* hashes;
    size_t capacity; /* power of two, or 0 */
    size_t used;
    size_t unindexed; /* records left out because an earlier one has the same name */
    unsigned generation; /* 0: not built */
} zoini_NameIndex;

/* An item is one block with its name and first value behind it; a name or
 * value set later is allocated on its own. */
typedef struct zoini_Item {
    char* name; /* first: see zoini_Named */
    char* value; /* never null */
    int line;
    int quote;
    unsigned char nameInline;
    unsigned char valueInline;
} zoini_Item;

typedef struct zoini_Section {
    char* name; /* first: see zoini_Named */
    zoini_List items;
    zoini_NameIndex itemIndex;
    uint32_t tag;
    int line;
    unsigned char nameInline;
} zoini_Section;

struct zoini_Document {
    zoini_List sections;
    zoini_NameIndex sectionIndex;
    zoini_Section* lastSection;
    int duplicateChecking;
    int caseAndWhitespaceSensitive;
    int lineOfLastAccess;
    char* scratch;
    size_t scratchSize;
    int maxLineLength;
    int breakCharacter;
    int writeFlags;
    int readOptions;
    int lineOfFirstUnrecognizedLine;
    char* filePath;
    struct timespec fileTime;
    /* Indexes built under another comparison (mode or locale) are stale. */
    unsigned indexGeneration;
    const void* indexLocale[2];
};

/* Names */
int zoini_StrICmpWithoutSurrWhiteSpace(const char* a, const char* b);
zoini_NameCompare zoini_NameCompareOf(const struct zoini_Document* doc);
char* zoini_StrDup(const char* text);
char* zoini_StrNDup(const char* text, size_t length);

/* Index: find the first record named `name` in `list`, keep it current. */
zoini_Named* zoini_IndexFind(struct zoini_Document* doc, zoini_NameIndex* index, const zoini_List* list,
                             const char* name);
/* After appending `record` to `list`: 0 or -12 (the index is then dropped). */
int zoini_IndexAdded(struct zoini_Document* doc, zoini_NameIndex* index, zoini_Named* record);
/* After removing `record` (still allocated) from `list` at `position`. */
void zoini_IndexRemoved(struct zoini_Document* doc, zoini_NameIndex* index, const zoini_List* list,
                        const zoini_Named* record, int position);
/* After renaming records or reordering the list. */
void zoini_IndexInvalidate(zoini_NameIndex* index);
/* After a change of the name comparison: every index of the document is stale. */
void zoini_IndexInvalidateAll(struct zoini_Document* doc);
void zoini_IndexDispose(zoini_NameIndex* index);

/* Records */
zoini_Section* zoini_NewSection(const char* name, size_t length, int line);
void zoini_DisposeSection(zoini_Section* section);
zoini_Item* zoini_NewItem(const char* name, size_t nameLength, const char* value, size_t valueLength, int line,
                          int quote);
void zoini_DisposeItem(zoini_Item* item);
/* Replace a record's string: 0 or -12 (nothing changed). */
int zoini_SetItemValue(zoini_Item* item, const char* value, size_t length);
int zoini_SetItemName(zoini_Item* item, const char* name, size_t length);
int zoini_SetSectionName(zoini_Section* section, const char* name, size_t length);
void zoini_RemoveAllSections(struct zoini_Document* doc);

/* Lookups with the document's name comparison; a found section is cached in lastSection. */
zoini_Section* zoini_FindSection(struct zoini_Document* doc, const char* name);
zoini_Item* zoini_FindItem(struct zoini_Document* doc, zoini_Section* section, const char* name);
/* Appends a section (line -1 when made in memory); null when memory runs out. */
zoini_Section* zoini_AppendSection(struct zoini_Document* doc, const char* name, size_t length, int line);
void zoini_RemoveSectionRecord(struct zoini_Document* doc, zoini_Section* section);
/* Appends an item record to a section: 0 or -12 (the item is then disposed). */
int zoini_AppendItem(struct zoini_Document* doc, zoini_Section* section, zoini_Item* item);

int zoini_IsSpace(int c);
/* The first character of `text` that is not white space. */
const char* zoini_SkipSpace(const char* text);

/* The file last read or written, for IniIsFileNewer: 0 or -12. */
int zoini_RememberFile(struct zoini_Document* doc, const char* path, struct timespec modified);

#endif
