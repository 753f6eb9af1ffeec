/**
 * @file temporary_folder.h
 * A folder of files for one test.
 */
#ifndef TESTS_RECORD_CODEC_TEMPORARY_FOLDER_H
#define TESTS_RECORD_CODEC_TEMPORARY_FOLDER_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

/** A new empty folder; it goes with its content when the object does. */
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name =
            (std::filesystem::temp_directory_path() / "record_codec_XXXXXX").string();
        if (!mkdtemp(name.data())) throw std::runtime_error("no temporary folder: " + name);
        path_ = name;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    std::string path(const std::string &name) const { return path_ / name; }

    /** Writes a file and returns its path. */
    std::string write(const std::string &name, const std::string &content) const {
        std::ofstream(path(name), std::ios::binary) << content;
        return path(name);
    }

    std::string read(const std::string &name) const {
        std::ifstream file(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto &entry : std::filesystem::directory_iterator(path_)) {
            names.push_back(entry.path().filename());
        }
        return names;
    }

private:
    std::filesystem::path path_;
};

#endif
