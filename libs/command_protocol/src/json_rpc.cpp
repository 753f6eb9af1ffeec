#include "json_rpc.h"

#include <new>

#include "command_service.h"
#include "failure.h"
#include "json_scan.h"
#include "record_codec/record_json.h"

namespace command_protocol {
namespace {

constexpr char kOutOfMemoryReason[] = "out of memory";

/** Room for most replies that are no records, so that they are made without another allocation. */
constexpr size_t kShortReply = 256;

/** The members of a request as JSON texts, "" where one is left out. */
struct Request {
    std::string_view jsonrpc;
    std::string_view id;
    std::string_view method;
    std::string_view params;
};

struct RequestMember {
    std::string_view name;
    std::string_view Request::*value;
};

constexpr RequestMember kRequestMembers[] = {
    {"jsonrpc", &Request::jsonrpc},
    {"id", &Request::id},
    {"method", &Request::method},
    {"params", &Request::params},
};

/** Takes the members that JSON-RPC knows; others are nobody's business. */
Request read_request(std::string_view object) {
    Request request;
    for (ObjectWalk walk(object); walk.next();) {
        for (const RequestMember &member : kRequestMembers) {
            if (walk.name() == member.name) request.*member.value = walk.value();
        }
    }
    return request;
}

bool is_id(std::string_view value) {
    const JsonType type = json_type(value);
    return type == JsonType::kString || type == JsonType::kNumber || type == JsonType::kNull;
}

/** Why the members are no request, or null. */
const char *request_fault(const Request &request) {
    if (request.jsonrpc.empty() || json_type(request.jsonrpc) != JsonType::kString ||
        json_string(request.jsonrpc) != "2.0") {
        return "jsonrpc must be \"2.0\"";
    }
    if (request.method.empty() || json_type(request.method) != JsonType::kString) {
        return "method must be a string";
    }
    if (!request.id.empty() && !is_id(request.id)) return "id must be a string, a number or null";
    if (!request.params.empty() && json_type(request.params) != JsonType::kObject &&
        json_type(request.params) != JsonType::kArray) {
        return "params must be an object";
    }
    return nullptr;
}

void append_member(std::string *out, std::string_view name, std::string_view text) {
    out->append("\"").append(name).append("\":");
    record_codec::append_json_string(*out, text);
}

void append_head(std::string *out, std::string_view id) {
    out->append("{\"jsonrpc\":\"2.0\",\"id\":").append(id);
}

void append_failure(std::string *out, std::string_view id, const Failure &failure) {
    append_head(out, id);
    out->append(",\"error\":{\"code\":").append(std::to_string(failure.code)).append(",");
    append_member(out, "message", failure.message);
    if (!failure.field.empty() || !failure.reason.empty()) {
        out->append(",\"data\":{");
        append_member(out, "field", failure.field);
        out->append(",");
        append_member(out, "reason", failure.reason);
        out->append("}");
    }
    out->append("}}");
}

/** Serves a well-formed request; a notification leaves nothing in `out`. */
void answer_request(const Request &request, std::string *out) {
    const size_t start = out->size();
    const std::string method = json_string(request.method);
    if (request.id.empty() && only_answers(method)) return;
    Failure failure;
    append_head(out, request.id);
    out->append(",\"result\":");
    const bool served = serve_command(method, request.params, out, &failure);
    if (served && !request.id.empty()) {
        out->append("}");
        return;
    }
    out->resize(start);
    if (!request.id.empty()) append_failure(out, request.id, failure);
}

/** Serves one object of a message. What is no request is always answered. */
void answer_value(std::string_view value, std::string *out) {
    if (json_type(value) != JsonType::kObject) {
        append_failure(out, "null", rpc_failure(kInvalidRequest, "a request is an object"));
        return;
    }
    const Request request = read_request(value);
    if (const char *fault = request_fault(request)) {
        const bool id_is_known = !request.id.empty() && is_id(request.id);
        append_failure(out, id_is_known ? request.id : "null", rpc_failure(kInvalidRequest, fault));
        return;
    }
    answer_request(request, out);
}

/** Answers a request that is not, or not wholly, carried out. */
void refuse_object(std::string_view value, const std::string &reason, std::string *out) {
    const std::string_view id =
        json_type(value) == JsonType::kObject ? read_request(value).id : "null";
    if (id.empty()) return;
    append_failure(out, is_id(id) ? id : "null", rpc_failure(kInternalError, reason));
}

void answer_object(std::string_view value, std::string *out) {
    const size_t start = out->size();
    try {
        answer_value(value, out);
    } catch (const std::bad_alloc &) {
        out->resize(start);
        refuse_object(value, kOutOfMemoryReason, out);
    }
}

/** Why an array is no batch, "" when it is one. */
std::string batch_fault(std::string_view array) {
    size_t count = 0;
    for (ArrayWalk walk(array); walk.next();)
        ++count;
    if (count == 0) return "an empty batch";
    if (count > kMaxBatch) {
        return "a batch of " + std::to_string(count) + " exceeds " + std::to_string(kMaxBatch);
    }
    return "";
}

void answer_batch(std::string_view array, std::string *out) {
    const std::string fault = batch_fault(array);
    if (!fault.empty()) {
        append_failure(out, "null", rpc_failure(kInvalidRequest, fault));
        return;
    }
    for (ArrayWalk walk(array); walk.next();) {
        const size_t start = out->size();
        out->push_back(start == 0 ? '[' : ',');
        if (start < kMaxBatchReply) {
            answer_object(walk.value(), out);
        } else {
            refuse_object(walk.value(),
                          "reply of more than " + std::to_string(kMaxBatchReply) + " bytes", out);
        }
        if (out->size() == start + 1) out->resize(start);
    }
    if (!out->empty()) out->push_back(']');
}

}  // namespace

std::string answer_message(std::string_view message) {
    std::string out;
    out.reserve(kShortReply);
    std::string reason;
    if (message.size() > kMaxMessage) {
        append_failure(
            &out, "null",
            rpc_failure(kInvalidRequest, "message of " + std::to_string(message.size()) +
                                             " bytes exceeds " + std::to_string(kMaxMessage)));
    } else if (!check_json(message, kMaxDepth, &reason)) {
        append_failure(&out, "null", rpc_failure(kParseError, reason));
    } else if (const std::string_view value = trim_json(message);
               json_type(value) == JsonType::kArray) {
        answer_batch(value, &out);
    } else {
        answer_object(value, &out);
    }
    return out;
}

std::string answer_out_of_memory(std::string_view message) {
    std::string out;
    const std::string_view value = trim_json(message);
    const bool known = message.size() <= kMaxMessage && check_json(message, kMaxDepth, &out) &&
                       json_type(value) == JsonType::kObject;
    out.clear();
    refuse_object(known ? value : "null", kOutOfMemoryReason, &out);
    return out;
}

}  // namespace command_protocol
