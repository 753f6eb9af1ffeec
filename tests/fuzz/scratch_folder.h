/**
 * @file scratch_folder.h
 * A folder in memory for the files of a fuzz target; removed when the process ends.
 */
#ifndef TESTS_FUZZ_SCRATCH_FOLDER_H
#define TESTS_FUZZ_SCRATCH_FOLDER_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "fuzz_target.h"

namespace fuzz {

class ScratchFolder {
public:
    ScratchFolder() {
        std::string name = "/dev/shm/app_gui_fuzz.XXXXXX";
        require(mkdtemp(name.data()) != nullptr, "a folder can be made in /dev/shm");
        mPath = name;
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
    ScratchFolder(const ScratchFolder &) = delete;
    ScratchFolder &operator=(const ScratchFolder &) = delete;

    const std::filesystem::path &path() const { return mPath; }

    /** Writes a file of that name; returns its path. */
    std::string write(const std::string &name, const std::string &content) const {
        const std::filesystem::path path = mPath / name;
        std::ofstream file(path, std::ios::binary | std::ios::trunc);
        file << content;
        require(file.flush().good(), "a scratch file can be written");
        return path;
    }

private:
    std::filesystem::path mPath;
};

}  // namespace fuzz

#endif
