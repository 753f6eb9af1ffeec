/**
 * @file record_codec.h
 * Record files: JSON on disk, fixed-layout records in memory.
 *
 * A file of one record is a JSON object, a file of several is a JSON array of objects. A member's
 * name is the field's name; numbers are integers, texts UTF-8. Bytes that no field names are
 * carried as `"reserved_<offset>": "<hexadecimal>"` when they are not all zero.
 *
 * Conventions: paths are NUL-terminated; results are 0 on success, kRecordFileNotOpened when a file
 * cannot be opened, read or written, kRecordFileInvalid when its content (or an argument) is not
 * usable, kRecordNoMemory when memory ran out.
 * Every failure is told in one line on standard error that names file, record, field and reason.
 * Thread: any; the functions keep no state. No exception leaves them.
 */
#ifndef RECORD_CODEC_RECORD_CODEC_H
#define RECORD_CODEC_RECORD_CODEC_H

#include "record_codec/records.h"

#define RECORD_CODEC_API __attribute__((visibility("default")))

/** The file cannot be opened, read or written. */
constexpr int kRecordFileNotOpened = -7;
/** Not JSON, another shape, a number out of range, a text that does not fit; or a null argument. */
constexpr int kRecordFileInvalid = -2;
/** Memory ran out; nothing was changed. */
constexpr int kRecordNoMemory = -6;
/** Larger files are refused as invalid: the largest legal one has some 40 KiB. */
constexpr unsigned kRecordFileMaxBytes = 4u << 20;

extern "C" {

/**
 * For every record type X of records.h:
 *
 * `int f2s_X(const char *path, X *out)` reads a file of one record.
 *   A field that the file leaves out is zero, a member that no field has is skipped.
 *   On failure nothing is written to `out`.
 *
 * `int f2s_array_X(const char *path, X *out, unsigned *count)` reads a file of several.
 *   @param count  in: how many records `out` has room for; out: how many were read. Records of the
 *                 file past the room are not looked at. Unchanged on failure, like `out`.
 *
 * `int s2f_array_X(const char *path, const X *records, unsigned count)` replaces a file.
 *   The file that was there stays whole until the new one is safely on disk: the text goes to a
 *   temporary file in the same folder, which is synchronised, renamed over the old one, and the
 *   folder synchronised. `records` may be null when `count` is 0.
 */
#define RECORD_CODEC_DECLARE(X, bytes)                                             \
    RECORD_CODEC_API int f2s_##X(const char *path, X *out);                        \
    RECORD_CODEC_API int f2s_array_##X(const char *path, X *out, unsigned *count); \
    RECORD_CODEC_API int s2f_array_##X(const char *path, const X *records, unsigned count);
RECORD_CODEC_RECORDS(RECORD_CODEC_DECLARE)
#undef RECORD_CODEC_DECLARE

/**
 * Removes what writers of the file at `path` that were killed have left beside it
 * ("<path>.??????.tmp", letters and digits). Other files stay: their writers may be at work.
 * Requires: nobody writes this file now. A file or a folder that is not there is fine.
 */
RECORD_CODEC_API void remove_temporary_files(const char *path);

}  // extern "C"

#endif
