// In place of libFuzzer: runs a fuzz target over files and folders of them. Takes libFuzzer's
// command line, of whose options it needs none.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz_target.h"

namespace fs = std::filesystem;

namespace {

/** The file itself, or the files of a folder in the order of their names. */
std::vector<fs::path> files_at(const fs::path &place) {
    if (!fs::is_directory(place)) return {place};
    std::vector<fs::path> files;
    for (const fs::directory_entry &entry : fs::directory_iterator(place)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

/** The file's bytes at their exact size, so that a read past them is seen. */
bool read_bytes(const fs::path &path, std::vector<uint8_t> *bytes) {
    std::ifstream file(path, std::ios::binary);
    bytes->assign(std::istreambuf_iterator<char>(file), {});
    bytes->shrink_to_fit();
    return file.good() || file.eof();
}

}  // namespace

int main(int argc, char **argv) {
    int ran = 0;
    for (int i = 1; i < argc; ++i) {
        if (argv[i][0] == '-') continue;
        for (const fs::path &path : files_at(argv[i])) {
            std::vector<uint8_t> bytes;
            std::fprintf(stderr, "Running: %s\n", path.c_str());
            if (!read_bytes(path, &bytes)) return 1;
            LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
            ++ran;
        }
    }
    if (ran == 0) std::fprintf(stderr, "no input to run\n");
    return ran > 0 ? 0 : 1;
}
