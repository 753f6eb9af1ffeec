#include "diagnostics.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <thread>
#include <vector>

namespace {

/** While it lives, what goes to a standard stream goes into a pipe. */
class CapturedStream {
public:
    explicit CapturedStream(FILE *stream) : stream_(stream), saved_(dup(fileno(stream))) {
        std::fflush(stream_);
        int ends[2] = {-1, -1};
        EXPECT_EQ(pipe(ends), 0);
        EXPECT_GE(dup2(ends[1], fileno(stream_)), 0);
        close(ends[1]);
        reader_ = ends[0];
    }
    ~CapturedStream() {
        restore();
        close(reader_);
    }
    CapturedStream(const CapturedStream &) = delete;
    CapturedStream &operator=(const CapturedStream &) = delete;

    /** What has reached the pipe, without asking the stream to write out what it still holds. */
    std::string arrived() {
        char bytes[4096];
        const ssize_t count = read(reader_, bytes, sizeof(bytes));
        return count > 0 ? std::string(bytes, static_cast<size_t>(count)) : std::string();
    }

    /** Everything from here to the end; the stream is itself again afterwards. */
    std::string rest() {
        restore();
        std::string all;
        for (std::string part = arrived(); !part.empty(); part = arrived()) {
            all += part;
        }
        return all;
    }

private:
    void restore() {
        if (saved_ >= 0) {
            std::fflush(stream_);
            dup2(saved_, fileno(stream_));
            close(saved_);
            saved_ = -1;
        }
    }

    FILE *stream_;
    int saved_;
    int reader_ = -1;
};

TEST(Diagnostics, ADebugLineNamesFileAndLineBeforeTheMessage) {
    CapturedStream output(stdout);
    CapturedStream errors(stderr);
    diagnostics::debug_line("apps/a.cpp", 12, "mode %d of %s\n", 3, "HDMI1");
    EXPECT_EQ(output.rest(), "<DEBUG file apps/a.cpp, line 12>: mode 3 of HDMI1\n");
    EXPECT_EQ(errors.rest(), "");
}

TEST(Diagnostics, AnErrorLineIsRedAndNamesFileLineAndFunction) {
    CapturedStream output(stdout);
    CapturedStream errors(stderr);
    diagnostics::error_line("apps/a.cpp", 7, "set_x", "mode=%s\n", "bad");
    EXPECT_EQ(errors.rest(), "\033[1;31m<ERROR! apps/a.cpp:7, set_x>: mode=bad\n\033[0m");
    EXPECT_EQ(output.rest(), "");
}

TEST(Diagnostics, ADebugLineReachesAPipeAtOnce) {
    CapturedStream output(stdout);
    diagnostics::debug_line("f", 1, "now\n");
    EXPECT_EQ(output.arrived(), "<DEBUG file f, line 1>: now\n");
}

TEST(Diagnostics, AMessageNeedsNoArgumentAndMayBeEmpty) {
    const char *const nothing = "";
    CapturedStream errors(stderr);
    diagnostics::error_line("f", 1, "g", "%s", nothing);
    EXPECT_EQ(errors.rest(), "\033[1;31m<ERROR! f:1, g>: \033[0m");
}

TEST(Diagnostics, PercentSignsAmongTheArgumentsAreText) {
    CapturedStream errors(stderr);
    diagnostics::error_line("f%s", 1, "g%n", "mode=%s\n", "%d%n");
    EXPECT_EQ(errors.rest(), "\033[1;31m<ERROR! f%s:1, g%n>: mode=%d%n\n\033[0m");
}

TEST(Diagnostics, TheDebugMacroTellsWhereItStands) {
    CapturedStream output(stdout);
    const int line = __LINE__ + 1;
    DEBUG_LINE("here %d\n", 5);
    EXPECT_EQ(output.rest(),
              "<DEBUG file " __FILE__ ", line " + std::to_string(line) + ">: here 5\n");
}

void function_that_fails() {
    ERROR_LINE("invalid para\n");
}

TEST(Diagnostics, TheErrorMacroNamesItsFunction) {
    CapturedStream errors(stderr);
    function_that_fails();
    const std::string text = errors.rest();
    EXPECT_EQ(text.rfind("\033[1;31m<ERROR! " __FILE__ ":", 0), 0U) << text;
    EXPECT_NE(text.find(", function_that_fails>: invalid para\n\033[0m"), std::string::npos)
        << text;
}

TEST(Diagnostics, TheErrorMacroTakesAnotherName) {
    CapturedStream errors(stderr);
    const int line = __LINE__ + 1;
    ERROR_LINE_AS("set_other", "count %u\n", 4U);
    EXPECT_EQ(errors.rest(), "\033[1;31m<ERROR! " __FILE__ ":" + std::to_string(line) +
                                 ", set_other>: count 4\n\033[0m");
}

TEST(Diagnostics, LinesOfTwoThreadsAreNotMixed) {
    constexpr int kLines = 200;
    const std::string line = "\033[1;31m<ERROR! f:1, g>: abcdefghij\n\033[0m";
    CapturedStream errors(stderr);
    const auto write_lines = [] {
        for (int i = 0; i < kLines; ++i) {
            diagnostics::error_line("f", 1, "g", "%s\n", "abcdefghij");
        }
    };
    std::thread one(write_lines), two(write_lines);
    one.join();
    two.join();
    std::string expected;
    for (int i = 0; i < 2 * kLines; ++i) {
        expected += line;
    }
    EXPECT_EQ(errors.rest(), expected);
}

}  // namespace
