#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "random_record.h"
#include "record_codec/record_codec.h"
#include "temporary_folder.h"

namespace {

constexpr uid_t kNobody = 65534;

/** Runs `body` in a process of its own: its exit code (-1: it did not end by itself), its errors.
 */
std::pair<int, std::string> run_apart(const std::function<int()> &body) {
    testing::internal::CaptureStderr();
    const pid_t child = fork();
    if (child == 0) _exit(body());
    int status = 0;
    const bool ended = child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status);
    return {ended ? WEXITSTATUS(status) : -1, testing::internal::GetCapturedStderr()};
}

std::vector<VideoOutputOSDParameter> entries(unsigned count, const char *content) {
    std::vector<VideoOutputOSDParameter> records(count);
    for (unsigned i = 0; i < count; ++i) {
        records[i].Index = static_cast<int32_t>(i);
        std::strcpy(records[i].content, content);
    }
    return records;
}

class RecordFileWrite : public ::testing::Test {
protected:
    int save(const std::vector<VideoOutputOSDParameter> &records) const {
        return s2f_array_VideoOutputOSDParameter(path_.c_str(), records.data(),
                                                 static_cast<unsigned>(records.size()));
    }
    /** A save that has to fail with -7 and one error line. */
    void expect_failure(const std::vector<VideoOutputOSDParameter> &records,
                        const char *reason) const {
        testing::internal::CaptureStderr();
        EXPECT_EQ(save(records), -7);
        const std::string line = testing::internal::GetCapturedStderr();
        EXPECT_NE(line.find("s2f_array_VideoOutputOSDParameter>: " + path_ + ": " + reason),
                  std::string::npos)
            << line;
    }

    TemporaryFolder folder_;
    const std::string path_ = folder_.path("entries.json");
};

TEST_F(RecordFileWrite, WritesJsonThatEndsWithANewline) {
    for (const unsigned count : {0u, 1u, 3u}) {
        ASSERT_EQ(save(entries(count, "text")), 0);
        const std::string content = folder_.read("entries.json");
        EXPECT_EQ(content.back(), '\n');
        const auto json = nlohmann::json::parse(content);
        ASSERT_TRUE(json.is_array());
        EXPECT_EQ(json.size(), count);
    }
    EXPECT_EQ(folder_.names(), std::vector<std::string>{"entries.json"});
}

TEST_F(RecordFileWrite, WritesOneMemberPerLine) {
    const VideoOutputSourceParameter source[] = {{0, 4, 1, -1}, {1, -1, 0, 0}};
    ASSERT_EQ(s2f_array_VideoOutputSourceParameter(path_.c_str(), source, 2), 0);
    EXPECT_EQ(folder_.read("entries.json"), R"([
  {
    "Channel": 0,
    "index": 4,
    "type": 1,
    "cache": -1
  },
  {
    "Channel": 1,
    "index": -1,
    "type": 0,
    "cache": 0
  }
]
)");
    ASSERT_EQ(s2f_array_VideoOutputSourceParameter(path_.c_str(), source, 0), 0);
    EXPECT_EQ(folder_.read("entries.json"), "[]\n");
}

TEST_F(RecordFileWrite, KeepsTheModeOfTheFile) {
    for (const mode_t mode : {0600u, 0640u, 0444u, 0666u}) {
        folder_.write("entries.json", "[]");
        ASSERT_EQ(chmod(path_.c_str(), mode), 0);
        ASSERT_EQ(save(entries(1, "x")), 0);
        struct stat status {};
        ASSERT_EQ(stat(path_.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, mode);
        ASSERT_EQ(unlink(path_.c_str()), 0);
    }
}

TEST_F(RecordFileWrite, LeavesNoTemporaryFile) {
    ASSERT_EQ(save(entries(64, "x")), 0);
    ASSERT_EQ(save(entries(1, "y")), 0);
    EXPECT_EQ(folder_.names(), std::vector<std::string>{"entries.json"});
}

TEST_F(RecordFileWrite, ByTwoWritersAtOnceIsTheFileOfOneOfThem) {
    const auto write_often = [&](const char *text) {
        for (int i = 0; i < 100; ++i) {
            if (save(entries(64, text)) != 0) return false;
        }
        return true;
    };
    bool other_wrote = false;
    std::thread other([&] { other_wrote = write_often("other"); });
    EXPECT_TRUE(write_often("one"));
    other.join();
    EXPECT_TRUE(other_wrote);
    const std::string text = folder_.read("entries.json");
    EXPECT_NE(text.find("one") == std::string::npos, text.find("other") == std::string::npos);
    EXPECT_EQ(folder_.names(), std::vector<std::string>{"entries.json"});
}

TEST_F(RecordFileWrite, LeftoversOfKilledWritersAreRemovedAndNothingElse) {
    const std::vector<std::string> kept = {
        ".x4Tq0z.tmp",
        "X.XXXXXX.tmp",
        "entries.json",
        "entries.json.1-3456.tmp",
        "entries.json.123.tmp",
        "entries.json.1234567tmp",
        "entries.json.backup2.tmp",
        "entries.json.tmp",
        "entries.jsonx.x4Tq0z.tmp",
        "other.entries.json.x4Tq0z.tmp",
        "other.json.x4Tq0z.tmp",
    };
    for (const std::string &name : kept) {
        folder_.write(name, "kept");
    }
    folder_.write("entries.json.x4Tq0z.tmp", "[{");
    folder_.write("entries.json.ABC123.tmp", "");
    remove_temporary_files(path_.c_str());
    remove_temporary_files(folder_.path("").c_str());
    std::vector<std::string> names = folder_.names();
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, kept);
    remove_temporary_files("/nonexistent/folder/entries.json");
    remove_temporary_files("");
    remove_temporary_files(nullptr);
}

TEST_F(RecordFileWrite, LeftoversOfAFileWithoutAFolderPartAreThoseInTheCurrentFolder) {
    folder_.write("entries.json.x4Tq0z.tmp", "[{");
    folder_.write("other.json.x4Tq0z.tmp", "[{");
    const auto [code, line] = run_apart([&] {
        if (chdir(folder_.path("").c_str()) != 0) return 1;
        remove_temporary_files("entries.json");
        return 0;
    });
    EXPECT_EQ(code, 0);
    EXPECT_EQ(line, "");
    EXPECT_EQ(folder_.names(), std::vector<std::string>{"other.json.x4Tq0z.tmp"});
}

TEST_F(RecordFileWrite, ReplacesASymbolicLinkByAPlainFile) {
    folder_.write("elsewhere.json", "[]");
    ASSERT_EQ(symlink("elsewhere.json", path_.c_str()), 0);
    ASSERT_EQ(save(entries(1, "x")), 0);
    struct stat status {};
    ASSERT_EQ(lstat(path_.c_str(), &status), 0);
    EXPECT_TRUE(S_ISREG(status.st_mode));
    EXPECT_EQ(folder_.read("elsewhere.json"), "[]");
}

TEST_F(RecordFileWrite, FailsWithoutAFolderToWriteTo) {
    unsigned count = 1;
    VideoOutputOSDParameter one{};
    testing::internal::CaptureStderr();
    EXPECT_EQ(s2f_array_VideoOutputOSDParameter(folder_.path("no/file.json").c_str(), &one, count),
              -7);
    EXPECT_EQ(s2f_array_VideoOutputOSDParameter("", &one, count), -7);
    const std::string lines = testing::internal::GetCapturedStderr();
    EXPECT_NE(lines.find("No such file or directory"), std::string::npos) << lines;
}

TEST_F(RecordFileWrite, KeepsAFolderOfTheSameName) {
    ASSERT_EQ(mkdir(path_.c_str(), 0755), 0);
    expect_failure(entries(1, "x"), "cannot be renamed: Is a directory");
    EXPECT_EQ(folder_.names(), std::vector<std::string>{"entries.json"});
}

TEST_F(RecordFileWrite, KeepsTheOldFileInAFolderThatIsNotWritable) {
    ASSERT_EQ(save(entries(2, "old")), 0);
    const std::string old = folder_.read("entries.json");
    ASSERT_EQ(chmod(folder_.path("").c_str(), 0555), 0);
    const auto [code, line] = run_apart([&] {
        if (geteuid() == 0 && setuid(kNobody) != 0) return 2;
        return save(entries(2, "new")) == -7 ? 0 : 1;
    });
    EXPECT_EQ(code, 0);
    EXPECT_NE(line.find("temporary file cannot be opened: Permission denied"), std::string::npos)
        << line;
    EXPECT_EQ(folder_.read("entries.json"), old);
    ASSERT_EQ(chmod(folder_.path("").c_str(), 0755), 0);
    EXPECT_EQ(folder_.names(), std::vector<std::string>{"entries.json"});
}

TEST_F(RecordFileWrite, KeepsTheOldFileWhenTheNewOneCannotBeWrittenWhole) {
    ASSERT_EQ(save(entries(64, "old")), 0);
    const std::string old = folder_.read("entries.json");
    const auto [code, line] = run_apart([&] {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{4096, 4096};
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0) return 2;
        return save(entries(64, "new")) == -7 ? 0 : 1;
    });
    EXPECT_EQ(code, 0);
    EXPECT_NE(line.find("cannot be written: File too large"), std::string::npos) << line;
    EXPECT_EQ(folder_.read("entries.json"), old);
    EXPECT_EQ(folder_.names(), std::vector<std::string>{"entries.json"});
}

TEST_F(RecordFileWrite, RandomBytesInEveryTextAreReadBack) {
    Random random(99);
    for (int round = 0; round < 50; ++round) {
        VideoOutputOSDParameter record;
        auto *bytes = reinterpret_cast<char *>(&record);
        for (size_t i = 0; i < sizeof record; ++i) {
            bytes[i] = static_cast<char>(random() | 1);  // no NUL anywhere
        }
        ASSERT_EQ(save({record}), 0);
        VideoOutputOSDParameter back{};
        unsigned count = 1;
        ASSERT_EQ(f2s_array_VideoOutputOSDParameter(path_.c_str(), &back, &count), 0);
        EXPECT_EQ(back.y, record.y);
        EXPECT_GE(std::strlen(back.content), 252u);
        EXPECT_LT(std::strlen(back.content), sizeof back.content);
    }
}

TEST_F(RecordFileWrite, IsOldOrNewWheneverTheProcessIsKilled) {
    const auto small = entries(2, "the old content");
    const auto large = entries(64, "the new content");
    ASSERT_EQ(save(large), 0);
    const std::string large_text = folder_.read("entries.json");
    ASSERT_EQ(save(small), 0);
    const std::string small_text = folder_.read("entries.json");

    Random random(1234);
    for (int round = 0; round < 200; ++round) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            for (;;) {
                save(large);
                save(small);
            }
        }
        const timespec moment{0, 1000L * static_cast<long>(random_below(random, 3000))};
        nanosleep(&moment, nullptr);
        ASSERT_EQ(kill(child, SIGKILL), 0);
        ASSERT_EQ(waitpid(child, nullptr, 0), child);
        const std::string content = folder_.read("entries.json");
        ASSERT_TRUE(content == small_text || content == large_text) << content.substr(0, 200);
    }
    remove_temporary_files(path_.c_str());
    EXPECT_EQ(folder_.names(), std::vector<std::string>{"entries.json"});
}

}  // namespace
