#include "failure.h"

namespace command_protocol {
namespace {

struct CodeName {
    int code;
    const char *name;
};

constexpr CodeName kRpcErrors[] = {
    {kParseError, "Parse error"},          {kInvalidRequest, "Invalid Request"},
    {kMethodNotFound, "Method not found"}, {kInvalidParams, "Invalid params"},
    {kInternalError, "Internal error"},
};

constexpr CodeName kStatusMeanings[] = {
    {-1, "not found"},
    {-2, "invalid argument or rejected request"},
    {-4, "feature not supported by this device"},
    {-6, "out of memory"},
    {-7, "file or command could not be opened"},
    {-8, "socket or interface enumeration failed"},
};

template <size_t N>
const char *name_of(const CodeName (&names)[N], int code) {
    for (const CodeName &row : names) {
        if (row.code == code) return row.name;
    }
    return "failed";
}

}  // namespace

std::string shown(std::string_view name) {
    constexpr size_t kShownBytes = 64;
    return std::string(name.substr(0, kShownBytes));
}

Failure rpc_failure(ErrorCode code, const std::string &reason) {
    return {code, std::string(name_of(kRpcErrors, code)) + ": " + reason, "", ""};
}

Failure invalid_params(std::string field, std::string reason) {
    Failure failure = rpc_failure(kInvalidParams, field + ": " + reason);
    failure.field = std::move(field);
    failure.reason = std::move(reason);
    return failure;
}

Failure handler_failure(int status) {
    return {status, status_meaning(status), "", ""};
}

const char *status_meaning(int status) {
    return name_of(kStatusMeanings, status);
}

}  // namespace command_protocol
