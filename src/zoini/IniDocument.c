/* The document: records, options, lookups by name and position, editing. */
#include <stdlib.h>
#include <string.h>

#include "zoini/IniDocument_internal.h"

enum { kInitialScratchSize = 256 };

IniHandle IniNew(int reserved) {
    if (reserved != 0) return NULL;
    struct zoini_Document* doc = calloc(1, sizeof *doc);
    if (!doc) return NULL;
    doc->scratch = malloc(kInitialScratchSize);
    if (!doc->scratch) {
        free(doc);
        return NULL;
    }
    doc->scratch[0] = '\0';
    doc->scratchSize = kInitialScratchSize;
    doc->duplicateChecking = 1;
    doc->lineOfLastAccess = -1;
    doc->maxLineLength = 80;
    doc->writeFlags = kIniWriteSafeSave | kIniWriteTempFileMkstemp | kIniWriteSpacedSeparator | kIniWriteSync;
    doc->readOptions = kIniReadStripDoubleQuotes;
    doc->lineOfFirstUnrecognizedLine = -1;
    doc->indexGeneration = 1;
    return doc;
}

void IniDispose(IniHandle doc) {
    if (!doc) return;
    zoini_RemoveAllSections(doc);
    zoini_ListDispose(&doc->sections);
    free(doc->scratch);
    free(doc->filePath);
    free(doc);
}

int IniSetDuplicateChecking(IniHandle doc, int on) {
    if (!doc) return kIniErrInvalidArgument;
    const int previous = doc->duplicateChecking;
    doc->duplicateChecking = on;
    return previous;
}

int IniSetCaseAndWhitespaceSensitiveChecking(IniHandle doc, int on) {
    if (!doc) return kIniErrInvalidArgument;
    const int previous = doc->caseAndWhitespaceSensitive;
    doc->caseAndWhitespaceSensitive = on;
    zoini_IndexInvalidateAll(doc);
    doc->lastSection = NULL;
    return previous;
}

int IniSetReadOptions(IniHandle doc, int options) {
    if (!doc) return kIniErrInvalidArgument;
    doc->readOptions = options;
    return 1;
}

int IniSetWriteOptions(IniHandle doc, int maxLineLength, int breakCharacter, int writeFlags) {
    if (!doc) return kIniErrInvalidArgument;
    if (breakCharacter < 0 || breakCharacter > 127 || maxLineLength < -1) return kIniErrBadInteger;
    doc->maxLineLength = maxLineLength;
    doc->breakCharacter = breakCharacter;
    doc->writeFlags = writeFlags;
    return 1;
}

/* Records */

zoini_Section* zoini_NewSection(const char* name, size_t length, int line) {
    zoini_Section* section = calloc(1, sizeof *section + length + 1);
    if (!section) return NULL;
    section->name = (char*)(section + 1);
    memcpy(section->name, name, length);
    section->name[length] = '\0';
    section->nameInline = 1;
    section->line = line;
    return section;
}

/* Disposes every item of the section, keeping the section and its list. */
static void DisposeItems(zoini_Section* section) {
    for (int i = 0; i < section->items.count; ++i) zoini_DisposeItem(section->items.elements[i]);
    section->items.count = 0;
    zoini_IndexDispose(&section->itemIndex);
}

void zoini_DisposeSection(zoini_Section* section) {
    if (!section) return;
    DisposeItems(section);
    zoini_ListDispose(&section->items);
    if (!section->nameInline) free(section->name);
    free(section);
}

zoini_Item* zoini_NewItem(const char* name, size_t nameLength, const char* value, size_t valueLength, int line,
                          int quote) {
    zoini_Item* item = malloc(sizeof *item + nameLength + valueLength + 2);
    if (!item) return NULL;
    item->name = (char*)(item + 1);
    memcpy(item->name, name, nameLength);
    item->name[nameLength] = '\0';
    item->value = item->name + nameLength + 1;
    memcpy(item->value, value, valueLength);
    item->value[valueLength] = '\0';
    item->line = line;
    item->quote = quote;
    item->nameInline = item->valueInline = 1;
    return item;
}

void zoini_DisposeItem(zoini_Item* item) {
    if (!item) return;
    if (!item->nameInline) free(item->name);
    if (!item->valueInline) free(item->value);
    free(item);
}

/* Points *field at a fresh copy, freeing the old one unless it lives inline. */
static int ReplaceString(char** field, unsigned char* isInline, const char* text, size_t length) {
    char* copy = zoini_StrNDup(text, length);
    if (!copy) return kIniErrOutOfMemory;
    if (!*isInline) free(*field);
    *field = copy;
    *isInline = 0;
    return 0;
}

int zoini_SetItemValue(zoini_Item* item, const char* value, size_t length) {
    return ReplaceString(&item->value, &item->valueInline, value, length);
}

int zoini_SetItemName(zoini_Item* item, const char* name, size_t length) {
    return ReplaceString(&item->name, &item->nameInline, name, length);
}

int zoini_SetSectionName(zoini_Section* section, const char* name, size_t length) {
    return ReplaceString(&section->name, &section->nameInline, name, length);
}

void zoini_RemoveAllSections(struct zoini_Document* doc) {
    for (int i = 0; i < doc->sections.count; ++i) zoini_DisposeSection(doc->sections.elements[i]);
    doc->sections.count = 0;
    zoini_IndexDispose(&doc->sectionIndex);
    doc->lastSection = NULL;
}

/* Lookups */

zoini_Section* zoini_FindSection(struct zoini_Document* doc, const char* name) {
    if (!doc || !name) return NULL;
    if (doc->lastSection && zoini_NameCompareOf(doc)(doc->lastSection->name, name) == 0) return doc->lastSection;
    zoini_Section* found = (zoini_Section*)zoini_IndexFind(doc, &doc->sectionIndex, &doc->sections, name);
    if (found) doc->lastSection = found;
    return found;
}

zoini_Item* zoini_FindItem(struct zoini_Document* doc, zoini_Section* section, const char* name) {
    if (!section || !name) return NULL;
    return (zoini_Item*)zoini_IndexFind(doc, &section->itemIndex, &section->items, name);
}

zoini_Section* zoini_AppendSection(struct zoini_Document* doc, const char* name, size_t length, int line) {
    zoini_Section* section = zoini_NewSection(name, length, line);
    if (!section) return NULL;
    if (zoini_ListInsertItem(&doc->sections, section) < 0) {
        zoini_DisposeSection(section);
        return NULL;
    }
    zoini_IndexAdded(doc, &doc->sectionIndex, (zoini_Named*)section);
    return section;
}

int zoini_AppendItem(struct zoini_Document* doc, zoini_Section* section, zoini_Item* item) {
    if (zoini_ListInsertItem(&section->items, item) < 0) {
        zoini_DisposeItem(item);
        return kIniErrOutOfMemory;
    }
    zoini_IndexAdded(doc, &section->itemIndex, (zoini_Named*)item);
    return 0;
}

int IniSectionExists(IniHandle doc, const char* section) { return zoini_FindSection(doc, section) != NULL; }

int IniItemExists(IniHandle doc, const char* section, const char* item) {
    return zoini_FindItem(doc, zoini_FindSection(doc, section), item) != NULL;
}

int IniNumberOfSections(IniHandle doc) { return doc ? doc->sections.count : 0; }

int IniNthSectionName(IniHandle doc, int n, const char** name) {
    const zoini_Section* section = doc ? zoini_ListGetItem(&doc->sections, n) : NULL;
    if (!section || !name) return 0;
    *name = section->name;
    return 1;
}

int IniNumberOfItems(IniHandle doc, const char* section) {
    const zoini_Section* found = zoini_FindSection(doc, section);
    return found ? found->items.count : 0;
}

static const zoini_Item* NthItem(IniHandle doc, const char* section, int n) {
    const zoini_Section* found = zoini_FindSection(doc, section);
    return found ? zoini_ListGetItem(&found->items, n) : NULL;
}

int IniNthItemName(IniHandle doc, const char* section, int n, const char** name) {
    const zoini_Item* item = NthItem(doc, section, n);
    if (!item || !name) return 0;
    *name = item->name;
    return 1;
}

int IniNthItemPointerToString(IniHandle doc, const char* section, int n, const char** value) {
    const zoini_Item* item = NthItem(doc, section, n);
    if (!item || !value) return 0;
    *value = item->value;
    return 1;
}

int IniLineOfLastAccess(IniHandle doc) { return doc ? doc->lineOfLastAccess : -1; }

int IniLineOfFirstUnrecognizedLine(IniHandle doc) { return doc ? doc->lineOfFirstUnrecognizedLine : -1; }

int IniLineOfSection(IniHandle doc, const char* section) {
    const zoini_Section* found = zoini_FindSection(doc, section);
    return found ? found->line : -1;
}

int IniLineOfItem(IniHandle doc, const char* section, const char* item) {
    const zoini_Item* found = zoini_FindItem(doc, zoini_FindSection(doc, section), item);
    return found ? found->line : -1;
}

/* Editing */

int IniRenameSection(IniHandle doc, const char* section, const char* newName) {
    if (!doc) return kIniErrInvalidArgument;
    if (!newName || !*newName) return kIniErrEmptyName;
    zoini_Section* found = zoini_FindSection(doc, section);
    if (!found) return 0;
    if (zoini_SetSectionName(found, newName, strlen(newName)) < 0) return kIniErrOutOfMemory;
    zoini_IndexInvalidate(&doc->sectionIndex);
    doc->lastSection = NULL;
    return 1;
}

void zoini_RemoveSectionRecord(struct zoini_Document* doc, zoini_Section* section) {
    const int position = zoini_ListPositionOf(&doc->sections, section);
    zoini_ListRemoveItem(&doc->sections, position);
    zoini_IndexRemoved(doc, &doc->sectionIndex, &doc->sections, (zoini_Named*)section, position);
    doc->lastSection = NULL;
    zoini_DisposeSection(section);
}

int IniRemoveSection(IniHandle doc, const char* section) {
    zoini_Section* found = zoini_FindSection(doc, section);
    if (!found) return 0;
    zoini_RemoveSectionRecord(doc, found);
    return 1;
}

int IniDisposeSection(IniHandle doc, const char* section) {
    zoini_Section* found = zoini_FindSection(doc, section);
    if (!found) return 0;
    DisposeItems(found);
    return 1;
}

int IniRemoveItem(IniHandle doc, const char* section, const char* item) {
    zoini_Section* owner = zoini_FindSection(doc, section);
    zoini_Item* found = zoini_FindItem(doc, owner, item);
    if (!found) return 0;
    const int position = zoini_ListPositionOf(&owner->items, found);
    zoini_ListRemoveItem(&owner->items, position);
    zoini_IndexRemoved(doc, &owner->itemIndex, &owner->items, (zoini_Named*)found, position);
    zoini_DisposeItem(found);
    return 1;
}
