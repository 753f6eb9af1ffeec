#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <new>
#include <string_view>
#include <vector>

#include "error_line.h"
#include "record_codec/record_codec.h"
#include "record_codec/record_json.h"
#include "record_tables.h"

namespace record_codec {
namespace {

/** Deepest legal file: an array of objects with an array. */
constexpr unsigned kFileDepth = 16;

/** A file descriptor that closes itself. */
class Descriptor {
public:
    explicit Descriptor(int fd) : fd_(fd) {}
    ~Descriptor() {
        if (fd_ >= 0) ::close(fd_);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    int get() const { return fd_; }
    /** Closes now, so that an error the system kept for this moment is seen. */
    bool close() {
        const int fd = fd_;
        fd_ = -1;
        return ::close(fd) == 0;
    }

private:
    int fd_;
};

/** Failure of one call: which file, which exported function, and how its line is written. */
struct Call {
    const char *function;
    const char *path;

    int fail(int code, std::string_view reason) const {
        error_line(__FILE__, __LINE__, function, path, reason);
        return code;
    }
    int fail_errno(const char *what) const {
        const int number = errno;
        return fail(kRecordFileNotOpened, std::string(what) + ": " + std::strerror(number));
    }
};

// ---- reading ------------------------------------------------------------------------------------

int read_all(const Call &call, std::string *out) {
    // Not blocking: a pipe in the place of a file must not stop the process.
    const Descriptor file(::open(call.path, O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (file.get() < 0) return call.fail_errno("cannot be opened");
    struct stat status {};
    if (::fstat(file.get(), &status) != 0) return call.fail_errno("cannot be examined");
    if (!S_ISREG(status.st_mode)) return call.fail(kRecordFileNotOpened, "is not a file");
    char block[16384];
    for (;;) {
        const ssize_t size = ::read(file.get(), block, sizeof block);
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) return call.fail_errno("cannot be read");
        if (size == 0) return 0;
        out->append(block, static_cast<size_t>(size));
        if (out->size() > kRecordFileMaxBytes) {
            return call.fail(kRecordFileInvalid,
                             "more than " + std::to_string(kRecordFileMaxBytes) + " bytes");
        }
    }
}

int read_json(const Call &call, Json *out) {
    std::string text;
    const int result = read_all(call, &text);
    if (result != 0) return result;
    std::string reason;
    if (!parse_json(text.data(), text.size(), kFileDepth, out, &reason)) {
        return call.fail(kRecordFileInvalid, "not JSON: " + reason);
    }
    return 0;
}

/** Reads one record of the file over zeroes. `where` names it in an error, e.g. "record 3: ". */
int read_record(const Call &call, const Record &record, const Json &value, const std::string &where,
                char *bytes) {
    RecordError error;
    std::memset(bytes, 0, record.size);
    if (json_to_record(record, value, UnknownMembers::kSkip, bytes, &error)) return 0;
    const std::string field = error.field.empty() ? "" : error.field + ": ";
    return call.fail(kRecordFileInvalid, where + field + error.reason);
}

int read_one(const Call &call, const Record &record, void *out) {
    Json value;
    const int result = read_json(call, &value);
    if (result != 0) return result;
    std::vector<char> bytes(record.size);
    const int read = read_record(call, record, value, "", bytes.data());
    if (read == 0) std::memcpy(out, bytes.data(), bytes.size());
    return read;
}

int read_array(const Call &call, const Record &record, void *out, unsigned *count) {
    Json value;
    const int result = read_json(call, &value);
    if (result != 0) return result;
    if (!value.is_array()) {
        return call.fail(kRecordFileInvalid,
                         std::string("an array is expected, not ") + value.type_name());
    }
    const size_t length = std::min<size_t>(value.size(), *count);
    std::vector<char> bytes(length * record.size);
    for (size_t i = 0; i < length; ++i) {
        const int read = read_record(call, record, value[i], "record " + std::to_string(i) + ": ",
                                     bytes.data() + i * record.size);
        if (read != 0) return read;
    }
    if (length > 0) std::memcpy(out, bytes.data(), bytes.size());
    *count = static_cast<unsigned>(length);
    return 0;
}

// ---- writing ------------------------------------------------------------------------------------

std::string file_text(const Record &record, const char *records, unsigned count) {
    std::string text = "[";
    for (unsigned i = 0; i < count; ++i) {
        text += i == 0 ? "\n  " : ",\n  ";
        append_record(text, record, records + size_t{i} * record.size, "  ");
    }
    text += count == 0 ? "]\n" : "\n]\n";
    return text;
}

bool write_all(int fd, const std::string &text) {
    size_t done = 0;
    while (done < text.size()) {
        const ssize_t size = ::write(fd, text.data() + done, text.size() - done);
        if (size < 0 && errno == EINTR) continue;
        if (size == 0) errno = ENOSPC;  // or this would never end
        if (size <= 0) return false;
        done += static_cast<size_t>(size);
    }
    return true;
}

/** The part of a path in front of its name, with its slash; "" for a mere name. */
std::string_view folder_part(std::string_view path) {
    return path.substr(0, path.rfind('/') + 1);
}

/** The folder that a file lies in. */
std::string folder_of(std::string_view path) {
    const std::string_view folder = folder_part(path);
    return folder.empty() ? "." : std::string(folder);
}

/** The rename is on disk once its folder is. */
bool synchronise_folder_of(std::string_view path) {
    const std::string folder = folder_of(path);
    const Descriptor file(::open(folder.c_str(), O_RDONLY | O_CLOEXEC | O_DIRECTORY));
    if (file.get() < 0) return false;
    // Some file systems cannot synchronise a folder and say so; there is nothing more to do then.
    return ::fsync(file.get()) == 0 || errno == EINVAL;
}

/** Endings of the temporary files: ".", six characters that make the name unique, ".tmp". */
constexpr std::string_view kTemporaryPattern = ".XXXXXX.tmp";
constexpr int kTemporarySuffix = 4;

/** A temporary file beside a record file, which goes away unless it takes that file's place. */
class TemporaryFile {
public:
    /** Two writers of one file never share a name. */
    explicit TemporaryFile(const char *path)
        : path_(path),
          name_(path_ + std::string(kTemporaryPattern)),
          file_(::mkostemps(name_.data(), kTemporarySuffix, O_CLOEXEC)),
          exists_(file_.get() >= 0) {}
    ~TemporaryFile() {
        if (exists_) ::unlink(name_.c_str());
    }
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;

    /** Writes the text, puts it safely on disk and gives it the name; null, or what failed (errno).
     */
    const char *replace(const std::string &text) {
        if (!exists_) return "temporary file cannot be opened";
        // Where files have no mode of their own the setting is saved all the same.
        (void)::fchmod(file_.get(), mode());
        if (!write_all(file_.get(), text)) return "cannot be written";
        if (::fsync(file_.get()) != 0) return "cannot be synchronised";
        if (!file_.close()) return "cannot be closed";
        if (::rename(name_.c_str(), path_.c_str()) != 0) return "cannot be renamed";
        exists_ = false;
        return nullptr;
    }

private:
    /** The mode of the file that is replaced, or that of a new file. */
    mode_t mode() const {
        constexpr mode_t kNewFile = 0644;
        struct stat old {};
        return ::stat(path_.c_str(), &old) == 0 ? old.st_mode & 0777 : kNewFile;
    }

    std::string path_;
    std::string name_;
    Descriptor file_;
    bool exists_;
};

int write_array(const Call &call, const Record &record, const void *records, unsigned count) {
    const std::string text = file_text(record, static_cast<const char *>(records), count);
    TemporaryFile temporary(call.path);
    if (const char *failed = temporary.replace(text)) return call.fail_errno(failed);
    return synchronise_folder_of(call.path) ? 0 : call.fail_errno("folder cannot be synchronised");
}

/** True for a temporary file of the file of that name: "x.json.x4Tq0z.tmp" for "x.json". */
bool is_temporary(std::string_view name, std::string_view file) {
    if (name.substr(0, file.size()) != file) return false;
    name.remove_prefix(file.size());
    return name.size() == kTemporaryPattern.size() &&
           std::equal(name.begin(), name.end(), kTemporaryPattern.begin(), [](char c, char form) {
               return form == 'X' ? std::isalnum(static_cast<unsigned char>(c)) != 0 : c == form;
           });
}

int remove_temporaries(const Call &call) {
    const std::string_view file = std::string_view(call.path).substr(folder_part(call.path).size());
    DIR *const folder = file.empty() ? nullptr : ::opendir(folder_of(call.path).c_str());
    if (!folder) return 0;
    while (const dirent *entry = ::readdir(folder)) {
        if (is_temporary(entry->d_name, file)) ::unlinkat(::dirfd(folder), entry->d_name, 0);
    }
    ::closedir(folder);
    return 0;
}

/** Runs the body of an exported function: no exception leaves it. */
template <typename Body>
int guarded(const Call &call, Body body) {
    try {
        return body();
    } catch (const std::bad_alloc &) {
        return call.fail(kRecordNoMemory, "no memory");
    } catch (const std::exception &error) {
        return call.fail(kRecordFileInvalid, error.what());
    }
}

}  // namespace
}  // namespace record_codec

using namespace record_codec;

void remove_temporary_files(const char *path) {
    if (!path) return;
    const Call call{"remove_temporary_files", path};
    (void)guarded(call, [&] { return remove_temporaries(call); });
}

#define RECORD_CODEC_DEFINE(X, bytes)                                                            \
    int f2s_##X(const char *path, X *out) {                                                      \
        if (!path || !out) return kRecordFileInvalid;                                            \
        const Call call{"f2s_" #X, path};                                                        \
        return guarded(call, [&] { return read_one(call, record_of<X>(), out); });               \
    }                                                                                            \
    int f2s_array_##X(const char *path, X *out, unsigned *count) {                               \
        if (!path || !count || (!out && *count > 0)) return kRecordFileInvalid;                  \
        const Call call{"f2s_array_" #X, path};                                                  \
        return guarded(call, [&] { return read_array(call, record_of<X>(), out, count); });      \
    }                                                                                            \
    int s2f_array_##X(const char *path, const X *records, unsigned count) {                      \
        if (!path || (!records && count > 0)) return kRecordFileInvalid;                         \
        const Call call{"s2f_array_" #X, path};                                                  \
        return guarded(call, [&] { return write_array(call, record_of<X>(), records, count); }); \
    }
RECORD_CODEC_RECORDS(RECORD_CODEC_DEFINE)
