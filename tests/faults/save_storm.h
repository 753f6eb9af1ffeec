/**
 * @file save_storm.h
 * The two versions of every parameter file that the storm of saves writes in turn.
 */
#ifndef TESTS_FAULTS_SAVE_STORM_H
#define TESTS_FAULTS_SAVE_STORM_H

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "record_codec/record_codec.h"

namespace save_storm {

/** A file, its records, and the field that tells the versions apart. */
template <typename Record, unsigned kCount, size_t kSize, char (Record::*kField)[kSize],
          int (*kWrite)(const char *, const Record *, unsigned),
          int (*kRead)(const char *, Record *, unsigned *)>
struct File {
    static void fill(Record (&records)[kCount], unsigned version) {
        std::memset(records, 0, sizeof records);
        for (unsigned i = 0; i < kCount; ++i) {
            std::snprintf(records[i].*kField, kSize, "version %u of entry %u", version, i);
        }
    }
    static bool save(const std::string &path, unsigned version) {
        static Record records[kCount];
        fill(records, version);
        return kWrite(path.c_str(), records, kCount) == 0;
    }
    /** Whether the file is one of the versions, byte for byte of every record. */
    static bool isWhole(const std::string &path) {
        static Record read[kCount], expected[kCount];
        unsigned count = kCount;
        if (kRead(path.c_str(), read, &count) != 0 || count != kCount) return false;
        for (unsigned version = 0; version < 2; ++version) {
            fill(expected, version);
            if (std::memcmp(read, expected, sizeof read) == 0) return true;
        }
        return false;
    }
};

using OsdFile = File<VideoOutputOSDParameter, 64, sizeof(VideoOutputOSDParameter::head),
                     &VideoOutputOSDParameter::head, s2f_array_VideoOutputOSDParameter,
                     f2s_array_VideoOutputOSDParameter>;
using TextFile = File<WatermarkOSDParameter, 2, sizeof(WatermarkOSDParameter::contet),
                      &WatermarkOSDParameter::contet, s2f_array_WatermarkOSDParameter,
                      f2s_array_WatermarkOSDParameter>;
using PictureFile = File<WatermarkPictureParameter, 2, sizeof(WatermarkPictureParameter::file),
                         &WatermarkPictureParameter::file, s2f_array_WatermarkPictureParameter,
                         f2s_array_WatermarkPictureParameter>;
using DotmatrixFile =
    File<WatermarkDotmatrixParameter, 2, sizeof(WatermarkDotmatrixParameter::text),
         &WatermarkDotmatrixParameter::text, s2f_array_WatermarkDotmatrixParameter,
         f2s_array_WatermarkDotmatrixParameter>;

struct Row {
    const char *file;
    bool (*save)(const std::string &path, unsigned version);
    bool (*isWhole)(const std::string &path);
};

constexpr Row kFiles[] = {
    {"VideoOutputOSDParameters.json", OsdFile::save, OsdFile::isWhole},
    {"WatermarkOSDParameters.json", TextFile::save, TextFile::isWhole},
    {"WatermarkPictureParameters.json", PictureFile::save, PictureFile::isWhole},
    {"WatermarkDotmatrixParameters.json", DotmatrixFile::save, DotmatrixFile::isWhole},
};

/** Saves every file in its version 0 or 1. */
inline bool save(const std::string &folder, unsigned version) {
    return std::all_of(std::begin(kFiles), std::end(kFiles),
                       [&](const Row &row) { return row.save(folder + "/" + row.file, version); });
}

}  // namespace save_storm

#endif
