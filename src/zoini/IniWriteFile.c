/* Writing documents to files. Safe save writes a temporary file beside the
 * target, syncs it and renames it over the target, so that the target is at
 * every moment either the complete old or the complete new document. */
#define _GNU_SOURCE
#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "zoini/IniDocument_internal.h"

static const unsigned char kByteOrderMark[] = {0xEF, 0xBB, 0xBF};

static int WriteLineToStream(void* context, const char* line, size_t length) {
    FILE* stream = context;
    if (fwrite(line, 1, length, stream) != length || fputc('\n', stream) == EOF) return kIniErrFlushFailed;
    return 0;
}

/* Mark, lines, flush and (flag 32) fsync: 0 or a negative code. */
static int WriteStream(IniHandle doc, FILE* stream, int sync) {
    if ((doc->writeFlags & kIniWriteByteOrderMark) &&
        fwrite(kByteOrderMark, 1, sizeof kByteOrderMark, stream) != sizeof kByteOrderMark)
        return kIniErrFlushFailed;
    const int result = IniWrite(doc, WriteLineToStream, stream);
    if (result < 0) return result;
    if (fflush(stream) != 0) return kIniErrFlushFailed;
    if (sync && fsync(fileno(stream)) != 0) return kIniErrFlushFailed;
    return 0;
}

/* Writes the whole file at `path`, removing it again on failure. */
static int WriteFile(IniHandle doc, const char* path) {
    FILE* stream = fopen(path, "wb");
    if (!stream) return kIniErrOutputNotOpenable;
    int result = WriteStream(doc, stream, doc->writeFlags & kIniWriteSync);
    if (fclose(stream) != 0 && result == 0) result = kIniErrFlushFailed;
    if (result < 0) remove(path);
    return result;
}

static int ProveWritable(const char* path) {
    struct stat status;
    const int exists = stat(path, &status) == 0;
    FILE* probe = fopen(path, exists ? "r+b" : "wb");
    if (!probe) return kIniErrNotWritable;
    fclose(probe);
    if (!exists) remove(path);
    return 0;
}

static size_t DirectoryLength(const char* path) {
    const char* slash = strrchr(path, '/');
    return slash ? (size_t)(slash - path) + 1 : 0;
}

/* "dir/ini$$.TMPXXXXXX" made unique by mkstemp, closed, mode 0644; null on failure. */
static char* MakeUniqueTempFile(const char* path) {
    static const char kPattern[] = "ini$$.TMPXXXXXX";
    const size_t directory = DirectoryLength(path);
    char* name = malloc(directory + sizeof kPattern);
    if (!name) return NULL;
    memcpy(name, path, directory);
    memcpy(name + directory, kPattern, sizeof kPattern);
    const int descriptor = mkstemp(name);
    if (descriptor < 0) {
        free(name);
        return NULL;
    }
    close(descriptor);
    chmod(name, 0644);
    return name;
}

/* `path` with its extension replaced by "TMP", or ".TMP" appended when it has
 * none, has no directory, or has that extension already. */
static char* DeriveTempName(const char* path) {
    const size_t length = strlen(path);
    const char* slash = strrchr(path, '/');
    const char* dot = slash ? strrchr(slash, '.') : NULL;
    const size_t keep = (dot && strcmp(dot + 1, "TMP") != 0) ? (size_t)(dot - path) : length;
    char* name = malloc(keep + sizeof ".TMP");
    if (!name) return NULL;
    memcpy(name, path, keep);
    memcpy(name + keep, ".TMP", sizeof ".TMP");
    return name;
}

static int SafeSave(IniHandle doc, const char* path) {
    if (ProveWritable(path) < 0) return kIniErrNotWritable;
    const int unique = doc->writeFlags & kIniWriteTempFileMkstemp;
    char* temp = unique ? MakeUniqueTempFile(path) : DeriveTempName(path);
    if (!temp) return unique ? kIniErrTempFileFailed : kIniErrOutOfMemory;
    int result = WriteFile(doc, temp);
    if (result == 0) {
        /* The new file takes the old one's mode and owner before it replaces it. */
        struct stat status;
        if (stat(path, &status) == 0) {
            chmod(temp, status.st_mode & 07777);
            if (chown(temp, status.st_uid, status.st_gid) != 0) {
                /* Only the owner's privileges allow it; the content matters more. */
            }
        }
        if (rename(temp, path) != 0) {
            remove(temp);
            result = kIniErrNotWritable;
        }
    } else if (unique && result == kIniErrOutputNotOpenable) {
        remove(temp);
    }
    free(temp);
    return result;
}

int IniWriteToFile(IniHandle doc, const char* path) {
    if (!doc || !path || !*path) return kIniErrInvalidArgument;
    const int result = (doc->writeFlags & kIniWriteSafeSave) ? SafeSave(doc, path) : WriteFile(doc, path);
    if (result < 0) return result;
    struct stat status;
    return zoini_RememberFile(doc, path, stat(path, &status) == 0 ? status.st_mtim : (struct timespec){0, 0});
}

static int IsAccessError(int error) {
    return error == EACCES || error == EPERM || error == EBADF || error == EROFS;
}

int IniWriteToFilePtr(IniHandle doc, FILE* stream, int keepContents) {
    if (!doc || !stream) return kIniErrInvalidArgument;
    if (doc->writeFlags & kIniWriteSafeSave) return kIniErrStreamUnusable;
    if (!keepContents) {
        if (fflush(stream) != 0) return kIniErrStreamUnusable;
        if (ftruncate(fileno(stream), 0) != 0) return IsAccessError(errno) ? kIniErrNotWritable : kIniErrStreamUnusable;
        if (fseek(stream, 0, SEEK_SET) != 0) return kIniErrStreamUnusable;
    }
    return WriteStream(doc, stream, 0);
}

int IniIsFileNewer(IniHandle doc) {
    if (!doc) return kIniErrInvalidArgument;
    if (!doc->filePath) return kIniErrNoFile;
    struct stat status;
    if (stat(doc->filePath, &status) != 0) return kIniErrInvalidArgument;
    return status.st_mtim.tv_sec != doc->fileTime.tv_sec || status.st_mtim.tv_nsec != doc->fileTime.tv_nsec;
}
