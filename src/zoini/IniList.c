/* Growable pointer arrays with 1-based positions. */
#include <stdlib.h>
#include <string.h>

#include "zoini/IniDocument_internal.h"

void* zoini_ListGetItem(const zoini_List* list, int position) {
    if (position < 1 || position > list->count) return NULL;
    return list->elements[position - 1];
}

int zoini_ListInsertItem(zoini_List* list, void* element) {
    if (list->count == list->capacity) {
        if (list->capacity > (int)(0x7FFFFFFF / 2)) return kIniErrOutOfMemory;
        const int capacity = list->capacity ? list->capacity * 2 : 4;
        void** grown = realloc(list->elements, (size_t)capacity * sizeof *grown);
        if (!grown) return kIniErrOutOfMemory;
        list->elements = grown;
        list->capacity = capacity;
    }
    list->elements[list->count++] = element;
    return 0;
}

void zoini_ListRemoveItem(zoini_List* list, int position) {
    if (position < 1 || position > list->count) return;
    memmove(list->elements + position - 1, list->elements + position,
            (size_t)(list->count - position) * sizeof *list->elements);
    --list->count;
}

int zoini_ListPositionOf(const zoini_List* list, const void* element) {
    for (int i = 0; i < list->count; ++i) {
        if (list->elements[i] == element) return i + 1;
    }
    return 0;
}

void zoini_ListDispose(zoini_List* list) {
    free(list->elements);
    list->elements = NULL;
    list->count = list->capacity = 0;
}
