// Every reader of record files on any content: it succeeds or leaves its output alone, and what was
// read, written and read again is the same. An input is a letter for the record's place in
// RECORD_CODEC_RECORDS ('a' is the first), then the file's content.

#include <algorithm>
#include <vector>

#include "record_codec/record_codec.h"
#include "scratch_folder.h"

namespace {

constexpr unsigned kRoom = 70;
constexpr unsigned char kUntouched = 0xA5;

const fuzz::ScratchFolder &folder() {
    static const fuzz::ScratchFolder made;
    return made;
}

/** Functions and size of one record type. */
struct Family {
    size_t size;
    int (*read_one)(const char *path, void *out);
    int (*read_many)(const char *path, void *out, unsigned *count);
    int (*write)(const char *path, const void *records, unsigned count);
};

#define FAMILY(X, bytes)                                                                          \
    {sizeof(X), [](const char *path, void *out) { return f2s_##X(path, static_cast<X *>(out)); }, \
     [](const char *path, void *out, unsigned *count) {                                           \
         return f2s_array_##X(path, static_cast<X *>(out), count);                                \
     },                                                                                           \
     [](const char *path, const void *records, unsigned count) {                                  \
         return s2f_array_##X(path, static_cast<const X *>(records), count);                      \
     }},
constexpr Family kFamilies[] = {RECORD_CODEC_RECORDS(FAMILY)};
#undef FAMILY

using Bytes = std::vector<unsigned char>;

bool untouched(const Bytes &bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](unsigned char b) { return b == kUntouched; });
}

/** Writes `count` records and expects that reading them gives the same bytes. */
void expect_stable(const Family &family, const Bytes &records, unsigned count) {
    const std::string path = folder().path() / "written.json";
    fuzz::require(family.write(path.c_str(), records.data(), count) == 0,
                  "what was read can be written");
    Bytes again(records.size(), kUntouched);
    unsigned found = kRoom;
    fuzz::require(family.read_many(path.c_str(), again.data(), &found) == 0 && found == count,
                  "what was written can be read");
    fuzz::require(std::memcmp(again.data(), records.data(), count * family.size) == 0,
                  "reading gives what was written");
}

void read_array(const Family &family, const std::string &path) {
    Bytes records(kRoom * family.size, kUntouched);
    unsigned count = kRoom;
    if (family.read_many(path.c_str(), records.data(), &count) == 0) {
        fuzz::require(count <= kRoom, "no more records are read than there is room for");
        expect_stable(family, records, count);
    } else {
        fuzz::require(count == kRoom && untouched(records), "a failed reading writes nothing");
    }
}

void read_object(const Family &family, const std::string &path) {
    Bytes record(family.size, kUntouched);
    if (family.read_one(path.c_str(), record.data()) != 0) {
        fuzz::require(untouched(record), "a failed reading writes nothing");
        return;
    }
    record.resize(kRoom * family.size, kUntouched);
    expect_stable(family, record, 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::Input input(data, size);
    const Family &family =
        kFamilies[static_cast<uint8_t>(input.byte() - 'a') % std::size(kFamilies)];
    const std::string path = folder().write("input.json", input.rest());
    read_object(family, path);
    read_array(family, path);
    return 0;
}
