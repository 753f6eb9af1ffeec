/**
 * @file configuration_doc.cpp
 * Writes the configuration's documentation: `configuration_doc TEMPLATE FOLDER` makes
 * FOLDER/configuration.md and FOLDER/schemas/, one JSON Schema per record file.
 */
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>

#include "configuration_files.h"
#include "configuration_markdown.h"
#include "configuration_schema.h"

namespace {

namespace fs = std::filesystem;

std::string read_file(const fs::path &path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error(path.string() + ": cannot be opened");
    return {std::istreambuf_iterator<char>(file), {}};
}

void write_file(const fs::path &path, const std::string &text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) throw std::runtime_error(path.string() + ": cannot be written");
}

void write_documentation(const fs::path &text_template, const fs::path &folder) {
    const fs::path schemas = folder / "schemas";
    fs::create_directories(schemas);
    write_file(folder / "configuration.md",
               configuration_doc::configuration_markdown(read_file(text_template)));
    size_t count = 0;
    const auto *files = configuration_doc::configuration_files(&count);
    for (size_t i = 0; i < count; ++i) {
        const fs::path name = fs::path(files[i].name).stem().string() + ".schema.json";
        write_file(schemas / name, configuration_doc::file_schema(files[i]));
    }
}

}  // namespace

int main(int argc, char *argv[]) {
    if (argc != 3) {
        std::cerr << "usage: configuration_doc TEMPLATE FOLDER\n";
        return 2;
    }
    try {
        write_documentation(argv[1], argv[2]);
        return 0;
    } catch (const std::exception &error) {
        std::cerr << "configuration_doc: " << error.what() << "\n";
        return 1;
    }
}
