/**
 * @file record_tables.h
 * The tables of fields, one per record type; see record_schema.h for what a row holds.
 */
#ifndef RECORD_CODEC_RECORD_TABLES_H
#define RECORD_CODEC_RECORD_TABLES_H

#include "record_codec/record_schema.h"

namespace record_codec {

/** The table of a record type, known at compile time to the readers and writers. */
template <typename T>
const Record &record_of();

#define RECORD_CODEC_TABLE(X, bytes) \
    template <>                      \
    const Record &record_of<X>();
RECORD_CODEC_RECORDS(RECORD_CODEC_TABLE)
#undef RECORD_CODEC_TABLE

}  // namespace record_codec

#endif
