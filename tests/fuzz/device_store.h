/**
 * @file device_store.h
 * A loaded parameter store and the main window that shows it, for fuzz targets: what an input did
 * to them is undone before the next one.
 */
#ifndef TESTS_FUZZ_DEVICE_STORE_H
#define TESTS_FUZZ_DEVICE_STORE_H

#include <string>

#include "scratch_folder.h"

namespace fuzz {

/** One per process. */
class DeviceStore {
public:
    /** Copies the sample device's configuration and shows it. */
    DeviceStore();

    /** Puts the store back to what it was after loading, and shows that. */
    void restore();

    /** Loads the store from its files as they are now; shows it when that succeeds. */
    void reload();

    /** Puts another content into a configuration file, e.g. "capability_sets/X.json". */
    void replaceFile(const std::string &file, const std::string &content) const;
    /** Puts the sample device's file back. */
    void restoreFile(const std::string &file) const;

    /** Lets the main window see all that was posted, tick four times and paint. */
    void display();

private:
    ScratchFolder mFolder;
    std::string mLoaded;  ///< the store's arrays after loading
};

}  // namespace fuzz

#endif
