/**
 * @file main.cpp
 * A program of another project: reads an interface file with the installed record library, and
 * hands the installed protocol library a command that this process has no handler for.
 */
#include <command_protocol/command_protocol.h>
#include <record_codec/record_codec.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

int main(int argc, char **argv) {
    VideoOutputInterface interfaces[2] = {};
    unsigned count = 2;
    if (argc < 2 || f2s_array_VideoOutputInterface(argv[1], interfaces, &count) != 0) return 1;
    std::printf("%.*s\n", static_cast<int>(sizeof interfaces[0].if_name), interfaces[0].if_name);

    const char request[] =
        R"({"jsonrpc": "2.0", "id": 1, "method": "GetVideoOutputDisplayParameter"})";
    char *response = nullptr;
    const int length = static_cast<int>(std::strlen(request));
    if (parse_command_and_get_response_with_len(request, length, 1, &response) != 0) return 1;
    std::printf("%s\n", response == nullptr ? "" : response);
    std::free(response);
    return 0;
}
