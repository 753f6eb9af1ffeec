/**
 * @file record_schema.h
 * The tables of fields: what every record's fields are called, where they lie, what they hold.
 *
 * This is the only place that knows names. Files, commands, JSON schemas, the command-line client
 * and the documentation are all made from these tables.
 *
 * Thread: any; everything here is constant.
 */
#ifndef RECORD_CODEC_RECORD_SCHEMA_H
#define RECORD_CODEC_RECORD_SCHEMA_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "record_codec/record_codec.h"

namespace record_codec {

enum class FieldKind : uint8_t {
    kInt32,       ///< signed 32-bit number
    kUint32,      ///< unsigned 32-bit number
    kText,        ///< NUL-terminated UTF-8 in `size` bytes, so `size` - 1 bytes of text at most
    kInt32Array,  ///< `size` / 4 signed 32-bit numbers
};

/** One row of a record's table. Rows are in the order of their offsets. */
struct Field {
    const char *name;
    uint32_t offset;  ///< bytes from the start of the record
    uint32_t size;    ///< bytes
    FieldKind kind;
    const char *unit;           ///< "" where the value has none
    const char *range;          ///< what the device accepts or distinguishes, for people
    const char *default_value;  ///< as text; "" for an empty text
    const char *readers;        ///< which part of the device uses it; "carried" if none does
    const char *meaning;        ///< one phrase
};

/** One record type. */
struct Record {
    const char *name;
    uint32_t size;  ///< bytes
    const Field *fields;
    size_t field_count;
    const char *meaning;
};

/** A run of bytes that no field of a record names. */
struct Span {
    uint32_t offset;
    uint32_t size;
};

/** All record types, in the order of records.h. */
RECORD_CODEC_API const Record *all_records(size_t *count);

/** The record type of that name, or null. */
RECORD_CODEC_API const Record *find_record(std::string_view name);

/** The field of that name, or null. */
RECORD_CODEC_API const Field *find_field(const Record &record, std::string_view name);

/**
 * The unnamed span at or after `offset`, e.g. {64, 144} for VideoOutputInterface from 0.
 * @return false when none is left; `out` is then unchanged.
 */
RECORD_CODEC_API bool next_reserved_span(const Record &record, uint32_t offset, Span *out);

}  // namespace record_codec

#endif
