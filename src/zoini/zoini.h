/* zoini: an INI file held as an in-memory document of named sections, each an
 * ordered list of named items with string values; read from files, memory or
 * any line source, queried and edited by name, written back (safely) to files.
 * Plain C. Nothing throws: failures are negative result codes (below). Names
 * and values handed out stay owned by the document. A document must not be
 * used from two threads at once. */
#ifndef ZOINI_ZOINI_H
#define ZOINI_ZOINI_H

#include <stddef.h>
#include <stdio.h>

#include "qkdynam_platform.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct zoini_Document* IniHandle;

/* Result codes. */
enum {
    kIniErrUnsupportedEncoding = -3,   /* UTF-16 or UTF-32 byte-order mark */
    kIniErrLineTooShort = -2,          /* maxLineLength leaves no room to split a value */
    kIniErrNoFile = -4,                /* nothing read or written yet */
    kIniErrStreamUnusable = -5,
    kIniErrEmptyName = -6,
    kIniErrOutOfMemory = -12,
    kIniErrNotWritable = -13,          /* target not writable, or the rename failed */
    kIniErrInvalidArgument = -22,      /* also: file not found */
    kIniErrFlushFailed = -28,
    kIniErrCannotOpen = -5001,
    kIniErrReadFailed = -5002,
    kIniErrTempFileFailed = -5003,
    kIniErrOutputNotOpenable = -5004,
    kIniErrBadInteger = -5021,         /* also: write option out of range */
    kIniErrBadDouble = -5023,
    kIniErrBadBoolean = -5024
};

/* Read options (bit set, default 2). */
enum {
    kIniReadAllowEmptyValues = 1,
    kIniReadStripDoubleQuotes = 2,
    kIniReadStripSingleQuotes = 4,
    kIniReadColonSeparatorAndImplicitSection = 8 /* ":" separates; items before any header go to "(null)" */
};

/* Write flags (bit set, default 46). */
enum {
    kIniWriteByteOrderMark = 1,
    kIniWriteSafeSave = 2,        /* temporary file renamed over the target */
    kIniWriteTempFileMkstemp = 4, /* with safe save: mkstemp in the target's directory */
    kIniWriteSpacedSeparator = 8, /* " = " instead of "=" */
    kIniWriteBlankLinePolicy = 16,
    kIniWriteSync = 32            /* flush and fsync before closing */
};

/* The document. IniNew's argument must be 0. */
QKDYNAM_EXTERN_C QKDYNAM_API IniHandle IniNew(int reserved);
QKDYNAM_EXTERN_C QKDYNAM_API void IniDispose(IniHandle handle);

/* Options; each setter returns the previous flag (read options: 1). */
QKDYNAM_EXTERN_C QKDYNAM_API int IniSetDuplicateChecking(IniHandle handle, int on);
QKDYNAM_EXTERN_C QKDYNAM_API int IniSetCaseAndWhitespaceSensitiveChecking(IniHandle handle, int on);
QKDYNAM_EXTERN_C QKDYNAM_API int IniSetReadOptions(IniHandle handle, int options);
/* maxLineLength -1 is unlimited; breakCharacter 0 is none. 1, or -5021 and no change. */
QKDYNAM_EXTERN_C QKDYNAM_API int IniSetWriteOptions(IniHandle handle, int maxLineLength, int breakCharacter,
                                                     int writeFlags);

/* Lookups: 1 found / 0 not; positions n are 1-based. */
QKDYNAM_EXTERN_C QKDYNAM_API int IniSectionExists(IniHandle handle, const char* section);
QKDYNAM_EXTERN_C QKDYNAM_API int IniItemExists(IniHandle handle, const char* section, const char* item);
QKDYNAM_EXTERN_C QKDYNAM_API int IniNumberOfSections(IniHandle handle);
QKDYNAM_EXTERN_C QKDYNAM_API int IniNthSectionName(IniHandle handle, int n, const char** name);
QKDYNAM_EXTERN_C QKDYNAM_API int IniNumberOfItems(IniHandle handle, const char* section);
QKDYNAM_EXTERN_C QKDYNAM_API int IniNthItemName(IniHandle handle, const char* section, int n, const char** name);
QKDYNAM_EXTERN_C QKDYNAM_API int IniNthItemPointerToString(IniHandle handle, const char* section, int n,
                                                            const char** value);

/* Line numbers (1-based; -1 for none, or for what was created in memory). */
QKDYNAM_EXTERN_C QKDYNAM_API int IniLineOfLastAccess(IniHandle handle);
QKDYNAM_EXTERN_C QKDYNAM_API int IniLineOfFirstUnrecognizedLine(IniHandle handle);
QKDYNAM_EXTERN_C QKDYNAM_API int IniLineOfSection(IniHandle handle, const char* section);
QKDYNAM_EXTERN_C QKDYNAM_API int IniLineOfItem(IniHandle handle, const char* section, const char* item);

/* Editing: 1 done, 0 not found, or a negative code. */
QKDYNAM_EXTERN_C QKDYNAM_API int IniRenameSection(IniHandle handle, const char* section, const char* newName);
QKDYNAM_EXTERN_C QKDYNAM_API int IniRemoveSection(IniHandle handle, const char* section);
/* Removes every item of the section and keeps the (now empty) section. */
QKDYNAM_EXTERN_C QKDYNAM_API int IniDisposeSection(IniHandle handle, const char* section);
QKDYNAM_EXTERN_C QKDYNAM_API int IniRemoveItem(IniHandle handle, const char* section, const char* item);

/* A line source stores up to room - 1 bytes of the current line and a zero,
 * and returns how many bytes it stored (or a negative code). *lineComplete is
 * set when the line ended within them; a longer line continues on the next
 * call. *endOfInput is set, with nothing stored, once no line is left.
 * *lineNumber is the 1-based number of the line delivered. */
typedef int (*IniLineInputFunc)(void* context, char* buffer, int room, int* lineComplete, int* endOfInput,
                                int* lineNumber);

/* Reading replaces the whole document: 0 or a negative code. */
QKDYNAM_EXTERN_C QKDYNAM_API int IniRead(IniHandle handle, IniLineInputFunc lineInput, void* context);
QKDYNAM_EXTERN_C QKDYNAM_API int IniReadFromFile(IniHandle handle, const char* path);
QKDYNAM_EXTERN_C QKDYNAM_API int IniReadFromFilePtr(IniHandle handle, FILE* stream);
/* The bytes as the content of a file (byte-order marks included). */
QKDYNAM_EXTERN_C QKDYNAM_API int IniReadFromMemory(IniHandle handle, const void* bytes, size_t size);

/* 1 when the file last read or written changed since, 0 when not, -4 when
 * there is none, -22 when it cannot be examined. */
QKDYNAM_EXTERN_C QKDYNAM_API int IniIsFileNewer(IniHandle handle);

/* Put: a non-negative value, or a negative code (-6 for an empty name). A
 * missing section is appended; an existing item is replaced only while
 * duplicate checking is on (otherwise another item of the name is added). */
QKDYNAM_EXTERN_C QKDYNAM_API int IniPut(IniHandle handle, const char* section, const char* item, const char* value,
                                         int quote);
QKDYNAM_EXTERN_C QKDYNAM_API int IniPutString(IniHandle handle, const char* section, const char* item,
                                               const char* value);
QKDYNAM_EXTERN_C QKDYNAM_API int IniPutStringWithOptions(IniHandle handle, const char* section, const char* item,
                                                          const char* value, int quoted, int escaped);
QKDYNAM_EXTERN_C QKDYNAM_API int IniPutRawString(IniHandle handle, const char* section, const char* item,
                                                  const char* value);
QKDYNAM_EXTERN_C QKDYNAM_API int IniPutInt(IniHandle handle, const char* section, const char* item, int value);
QKDYNAM_EXTERN_C QKDYNAM_API int IniPutUInt(IniHandle handle, const char* section, const char* item,
                                             unsigned int value);
QKDYNAM_EXTERN_C QKDYNAM_API int IniPutDouble(IniHandle handle, const char* section, const char* item,
                                               double value);
QKDYNAM_EXTERN_C QKDYNAM_API int IniPutBoolean(IniHandle handle, const char* section, const char* item, int value);

/* Get: 1 found, 0 when the item is missing or its value is blank (output
 * untouched), or a negative code for a value of the wrong form. */
/* Unescaped value in the document's scratch block, valid until the next call. */
QKDYNAM_EXTERN_C QKDYNAM_API int IniGetPointerToString(IniHandle handle, const char* section, const char* item,
                                                        const char** value);
QKDYNAM_EXTERN_C QKDYNAM_API int IniGetPointerToRawString(IniHandle handle, const char* section, const char* item,
                                                           const char** value);
/* Copies from malloc, released by the caller with free(). */
QKDYNAM_EXTERN_C QKDYNAM_API int IniGetStringCopy(IniHandle handle, const char* section, const char* item,
                                                   char** value);
QKDYNAM_EXTERN_C QKDYNAM_API int IniGetRawStringCopy(IniHandle handle, const char* section, const char* item,
                                                      char** value);
/* A buffer too small gets the zero-terminated prefix that fits and -22. */
QKDYNAM_EXTERN_C QKDYNAM_API int IniGetStringIntoBuffer(IniHandle handle, const char* section, const char* item,
                                                         char* buffer, size_t size);
QKDYNAM_EXTERN_C QKDYNAM_API int IniGetRawStringIntoBuffer(IniHandle handle, const char* section,
                                                            const char* item, char* buffer, size_t size);
QKDYNAM_EXTERN_C QKDYNAM_API int IniGetInt(IniHandle handle, const char* section, const char* item, int* value);
QKDYNAM_EXTERN_C QKDYNAM_API int IniGetUInt(IniHandle handle, const char* section, const char* item,
                                             unsigned int* value);
QKDYNAM_EXTERN_C QKDYNAM_API int IniGetDouble(IniHandle handle, const char* section, const char* item,
                                               double* value);
QKDYNAM_EXTERN_C QKDYNAM_API int IniGetBoolean(IniHandle handle, const char* section, const char* item,
                                                int* value);

/* A line sink receives each output line without its terminator; a negative
 * result stops the write and is returned by it. */
typedef int (*IniLineOutputFunc)(void* context, const char* line, size_t length);

/* Writing: 0 or a negative code. */
QKDYNAM_EXTERN_C QKDYNAM_API int IniWrite(IniHandle handle, IniLineOutputFunc outputLine, void* context);
QKDYNAM_EXTERN_C QKDYNAM_API int IniWriteToFile(IniHandle handle, const char* path);
QKDYNAM_EXTERN_C QKDYNAM_API int IniWriteToFilePtr(IniHandle handle, FILE* stream, int keepContents);

#ifdef __cplusplus
}
#endif

#endif
