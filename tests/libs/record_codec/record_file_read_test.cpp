#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#include "random_record.h"
#include "record_codec/record_codec.h"
#include "record_codec/record_json.h"
#include "temporary_folder.h"

namespace {

class RecordFileRead : public ::testing::Test {
protected:
    struct Outcome {
        int result;
        unsigned count;
        std::string line;  ///< what was written to standard error
    };

    /** Reads `content` as an array with room for four; checks that a failure changes nothing. */
    Outcome read_array(const std::string &content) {
        return read_array_at(folder_.write("file.json", content));
    }

    Outcome read_array_at(const std::string &path) {
        std::memset(records_, 0x5A, sizeof records_);
        const std::string before(reinterpret_cast<char *>(records_), sizeof records_);
        unsigned count = 4;
        testing::internal::CaptureStderr();
        const int result = f2s_array_WatermarkOSDParameter(path.c_str(), records_, &count);
        const std::string line = testing::internal::GetCapturedStderr();
        if (result != 0) {
            EXPECT_EQ(count, 4u);
            EXPECT_EQ(std::memcmp(records_, before.data(), before.size()), 0);
            EXPECT_NE(line, "");
        } else {
            EXPECT_EQ(line, "");
        }
        return {result, count, line};
    }

    Outcome read_object(const std::string &content) {
        const std::string path = folder_.write("file.json", content);
        std::memset(records_, 0x5A, sizeof records_);
        const std::string before(reinterpret_cast<char *>(records_), sizeof records_[0]);
        testing::internal::CaptureStderr();
        const int result = f2s_WatermarkOSDParameter(path.c_str(), &records_[0]);
        const std::string line = testing::internal::GetCapturedStderr();
        if (result != 0) {
            EXPECT_EQ(std::memcmp(records_, before.data(), before.size()), 0);
        }
        return {result, 1, line};
    }

    TemporaryFolder folder_;
    WatermarkOSDParameter records_[4];
};

TEST_F(RecordFileRead, FillsTheFieldsThatAreNamedAndZeroesTheOthers) {
    ASSERT_EQ(read_object(R"({"if_name": "HDMI1", "font": 3, "contet": "Grüße"})").result, 0);
    WatermarkOSDParameter expected{};
    std::strcpy(expected.if_name, "HDMI1");
    expected.font = 3;
    std::strcpy(expected.contet, "Grüße");
    EXPECT_EQ(std::memcmp(&records_[0], &expected, sizeof expected), 0);
}

TEST_F(RecordFileRead, SkipsMembersThatNoFieldHas) {
    const Outcome outcome =
        read_object(R"({"comment": {"by": ["me", [1.5, null]]}, "reserved_2": "zz", "font": 3})");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.line, "");
    EXPECT_EQ(records_[0].font, 3);
}

TEST_F(RecordFileRead, AcceptsAByteOrderMarkAndTheLastOfTwoEqualMembers) {
    ASSERT_EQ(read_object("\xEF\xBB\xBF{\"font\": 3, \"font\": 4}").result, 0);
    EXPECT_EQ(records_[0].font, 4);
}

TEST_F(RecordFileRead, LeavesRecordsPastTheRoomEvenIfMalformed) {
    const Outcome outcome =
        read_array(R"([{"font": 1}, {"font": 2}, {"font": 3}, {"font": 4}, {"font": "five"}, 6])");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.count, 4u);
    EXPECT_EQ(records_[3].font, 4);
}

TEST_F(RecordFileRead, ReadsNothingWithoutRoom) {
    const std::string path = folder_.write("file.json", R"([{"font": 1}])");
    unsigned count = 0;
    EXPECT_EQ(f2s_array_WatermarkOSDParameter(path.c_str(), nullptr, &count), 0);
    EXPECT_EQ(count, 0u);
    count = 0;
    records_[0].font = 77;
    EXPECT_EQ(f2s_array_WatermarkOSDParameter(path.c_str(), records_, &count), 0);
    EXPECT_EQ(records_[0].font, 77);
}

TEST_F(RecordFileRead, LeavesTheElementsPastTheCountAlone) {
    const Outcome outcome = read_array(R"([{"font": 1}])");
    EXPECT_EQ(outcome.count, 1u);
    EXPECT_EQ(records_[1].font, 0x5A5A5A5A);
}

TEST_F(RecordFileRead, RefusesInvalidContent) {
    const std::string deep = std::string(17, '[') + std::string(17, ']');
    const std::string invalid[] = {
        "",
        "not JSON",
        "{}",
        "7",
        "null",
        R"("text")",
        "[7]",
        "[[]]",
        "[null]",
        R"([{"font": 1})",
        R"([{"font": 1}] x)",
        R"([{"font": 1.0}])",
        R"([{"font": true}])",
        R"([{"font": 2147483648}])",
        R"([{"font": -2147483649}])",
        R"([{"font": "1"}])",
        R"([{"contet": "a)"
        "\xFF"
        R"("}])",
        R"([{"contet": "a\u0000b"}])",
        std::string("[{\"contet\": \"a\0b\"}]", 19),
        std::string("[]\0", 3),
        R"([{"forecolor": ")" + std::string(64, '#') + R"("}])",
        R"([{"reserved_220": "xy"}])",
        R"([{"other": )" + deep + "}]",
        deep,
        std::string(100000, '['),
    };
    for (const std::string &content : invalid) {
        SCOPED_TRACE(content.substr(0, 60));
        EXPECT_EQ(read_array(content).result, -2);
    }
}

TEST_F(RecordFileRead, AcceptsNumbersAndTextsUpToTheirLimits) {
    const std::string longest(63, '#');
    const Outcome outcome = read_array(R"([{"font": 2147483647, "x": -2147483648, "y": -0,
        "forecolor": ")" + longest + R"("}])");
    ASSERT_EQ(outcome.result, 0) << outcome.line;
    EXPECT_EQ(records_[0].font, INT32_MAX);
    EXPECT_EQ(records_[0].x, INT32_MIN);
    EXPECT_EQ(records_[0].y, 0);
    EXPECT_EQ(records_[0].forecolor, longest);
}

TEST_F(RecordFileRead, RefusesAnArrayWhereOneRecordIsExpected) {
    EXPECT_EQ(read_object("[{}]").result, -2);
    EXPECT_EQ(read_object("[]").result, -2);
}

TEST_F(RecordFileRead, NamesFileFunctionRecordFieldAndReasonInOneLine) {
    const Outcome outcome = read_array(R"([{"font": 1}, {"font": 1, "size": 1.5}])");
    EXPECT_EQ(outcome.result, -2);
    EXPECT_EQ(outcome.line.rfind("\033[1;31m<ERROR! libs/record_codec/src/record_file.cpp:", 0), 0u)
        << outcome.line;
    const std::string end = ", f2s_array_WatermarkOSDParameter>: " + folder_.path("file.json") +
                            ": record 1: size: not an integer\n\033[0m";
    ASSERT_GE(outcome.line.size(), end.size());
    EXPECT_EQ(outcome.line.substr(outcome.line.size() - end.size()), end) << outcome.line;
}

TEST_F(RecordFileRead, SaysWhyAFileIsNoRecordFile) {
    const std::pair<const char *, const char *> cases[] = {
        {"{}", ": an array is expected, not object\n"},
        {"[1]", ": record 0: an object is expected, not number\n"},
        {"[\n{\n}", ": not JSON: line 3"},
        {R"([{"if_name": 5}])", ": record 0: if_name: a text is expected, not number\n"},
    };
    for (const auto &[content, reason] : cases) {
        const Outcome outcome = read_array(content);
        EXPECT_NE(outcome.line.find(folder_.path("file.json") + reason), std::string::npos)
            << outcome.line;
    }
    const Outcome missing = read_array_at(folder_.path("nowhere.json"));
    EXPECT_NE(missing.line.find("cannot be opened: No such file or directory\n"), std::string::npos)
        << missing.line;
}

TEST_F(RecordFileRead, DoesNotOpenWhatIsNoFile) {
    const std::string pipe = folder_.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string loop = folder_.path("loop");
    ASSERT_EQ(symlink(loop.c_str(), loop.c_str()), 0);
    const std::string paths[] = {
        folder_.path("missing.json"),
        folder_.path("no/such/folder.json"),
        folder_.path(""),
        pipe,
        loop,
        "/dev/null",
        "",
        std::string(5000, 'x'),
    };
    for (const std::string &path : paths) {
        SCOPED_TRACE(path.substr(0, 60));
        EXPECT_EQ(read_array_at(path).result, -7);
    }
}

TEST_F(RecordFileRead, NeedsThePermissionToRead) {
    const std::string path = folder_.write("file.json", "[]");
    ASSERT_EQ(chmod(folder_.path("").c_str(), 0755), 0);
    ASSERT_EQ(chmod(path.c_str(), 0000), 0);
    testing::internal::CaptureStderr();
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        constexpr uid_t kNobody = 65534;
        if (geteuid() == 0 && setuid(kNobody) != 0) _exit(2);
        unsigned count = 4;
        _exit(f2s_array_WatermarkOSDParameter(path.c_str(), records_, &count) == -7 ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    const std::string line = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    EXPECT_NE(line.find("cannot be opened: Permission denied"), std::string::npos) << line;
}

TEST_F(RecordFileRead, ReadsFilesOfUpToFourMebibytes) {
    std::string content = "[]";
    content.append((4u << 20) - content.size(), ' ');
    EXPECT_EQ(read_array(content).result, 0);
    content += '\n';
    const Outcome outcome = read_array(content);
    EXPECT_EQ(outcome.result, -2);
    EXPECT_NE(outcome.line.find("more than 4194304 bytes"), std::string::npos) << outcome.line;
}

TEST_F(RecordFileRead, SurvivesTenThousandRandomChanges) {
    Random random(4711);
    WatermarkOSDParameter originals[2];
    for (WatermarkOSDParameter &one : originals) {
        fill_with_random(random, *record_codec::find_record("WatermarkOSDParameter"), &one);
    }
    const std::string path = folder_.path("file.json");
    ASSERT_EQ(s2f_array_WatermarkOSDParameter(path.c_str(), originals, 2), 0);
    const std::string valid = folder_.read("file.json");

    // In memory: what is tested is the reader, not the disk.
    const int memory = memfd_create("mutation", MFD_CLOEXEC);
    ASSERT_GE(memory, 0);
    const std::string mutated = "/proc/self/fd/" + std::to_string(memory);
    int refused = 0;
    testing::internal::CaptureStderr();
    for (int round = 0; round < 10000; ++round) {
        std::string content = valid;
        for (uint32_t changes = 1 + random_below(random, 4); changes > 0; --changes) {
            const uint32_t at = random_below(random, static_cast<uint32_t>(content.size()));
            switch (random_below(random, 4)) {
                case 0:
                    content[at] = static_cast<char>(random());
                    break;
                case 1:
                    content.erase(at, 1 + random_below(random, 20));
                    break;
                case 2:
                    content.insert(at, 1, "[]{}\",:-0\\"[random_below(random, 10)]);
                    break;
                default:
                    content.insert(at, content.substr(random_below(random, at + 1), 30));
            }
        }
        ASSERT_EQ(ftruncate(memory, 0), 0);
        ASSERT_EQ(pwrite(memory, content.data(), content.size(), 0),
                  static_cast<ssize_t>(content.size()));
        std::memset(records_, 0x5A, sizeof records_);
        unsigned count = 4;
        const int result = f2s_array_WatermarkOSDParameter(mutated.c_str(), records_, &count);
        ASSERT_TRUE(result == 0 || result == -2) << result;
        if (result == 0) continue;
        ++refused;
        ASSERT_EQ(count, 4u);
        ASSERT_EQ(records_[0].font, 0x5A5A5A5A);
    }
    testing::internal::GetCapturedStderr();
    close(memory);
    EXPECT_GT(refused, 1000);
    EXPECT_LT(refused, 10000);
}

TEST_F(RecordFileRead, ReadsAFileOfMillionsOfElementsWithoutTrouble) {
    std::string content = "[";
    while (content.size() < (4u << 20) - 16) {
        content += "{},";
    }
    content += "{}]";
    const Outcome outcome = read_array(content);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.count, 4u);
}

}  // namespace
