/**
 * @file record_json.h
 * Records as JSON in memory: what files and messages share.
 *
 * Thread: any; no state. The functions throw only std::bad_alloc.
 */
#ifndef RECORD_CODEC_RECORD_JSON_H
#define RECORD_CODEC_RECORD_JSON_H

#include <nlohmann/json.hpp>
#include <string>

#include "record_codec/record_schema.h"

namespace record_codec {

/** JSON that came from outside. Sorted members: a hostile object of many members stays cheap. */
using Json = nlohmann::json;
/** JSON made here, members in the order of their writing. */
using OrderedJson = nlohmann::ordered_json;

/** Why a JSON value is no record. */
struct RecordError {
    std::string
        field;  ///< the member at fault, e.g. "font" or "PictureLevel[2]"; "" for the record
    std::string reason;  ///< e.g. "70 bytes do not fit into 63"
};

/** What becomes of a member that the record has no field for. */
enum class UnknownMembers { kSkip, kRefuse };

/**
 * Appends the record as a JSON object to `out`: every field in order, then the unnamed spans that
 * are not all zero. Bytes that are not UTF-8 become U+FFFD where that still fits the field, else
 * "?".
 * @param bytes   the record, `record.size` bytes.
 * @param indent  null for one line; else the line prefix of the object's closing brace, members
 *                standing two blanks deeper.
 */
RECORD_CODEC_API void append_record(std::string &out, const Record &record, const void *bytes,
                                    const char *indent = nullptr);

/** The same as a JSON value. */
RECORD_CODEC_API OrderedJson record_to_json(const Record &record, const void *bytes);

/**
 * Sets the fields that `value` names in the record at `bytes` and leaves all others as they are
 * (zero the record first to read a whole one). Numbers must be integers within their type, texts
 * must fit with their NUL and contain none, an array must have exactly its length; an unnamed span
 * may be given from any offset inside it as far as it reaches.
 * @return false with `error` filled; `bytes` is then unchanged.
 */
RECORD_CODEC_API bool json_to_record(const Record &record, const Json &value,
                                     UnknownMembers unknown, void *bytes, RecordError *error);

/**
 * The same for one member, which the caller has found by itself: sets the field of that name, or
 * the unnamed span.
 * @return false with `error` filled; what the field holds is then undefined.
 */
RECORD_CODEC_API bool json_to_member(const Record &record, const std::string &name,
                                     const Json &value, UnknownMembers unknown, void *bytes,
                                     RecordError *error);

/**
 * Parses JSON text from outside: at most `max_depth` levels of nesting, UTF-8, nothing behind the
 * value but white space.
 * @return false with `reason` filled, e.g. "line 3: unexpected end of input"; never throws for
 *         malformed text.
 */
RECORD_CODEC_API bool parse_json(const char *text, size_t length, unsigned max_depth, Json *out,
                                 std::string *reason);

/** Appends `text` (any bytes) as a JSON string with its quotes. */
RECORD_CODEC_API void append_json_string(std::string &out, std::string_view text);

/** JSON Schema (draft 2020-12) of one record, e.g. to validate a file with it. */
RECORD_CODEC_API OrderedJson record_json_schema(const Record &record);

}  // namespace record_codec

#endif
