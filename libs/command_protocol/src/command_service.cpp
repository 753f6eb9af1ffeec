#include "command_service.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "command_call.h"
#include "discovery.h"
#include "json_scan.h"
#include "params.h"
#include "record_codec/record_json.h"

namespace command_protocol {
namespace {

using record_codec::Record;

/** More members than any record has; keeps a hostile object from costing more than its length. */
constexpr int kMaxMembers = 256;
/** More elements than any field's array has. */
constexpr size_t kMaxElements = 16;

const auto g_loaded_at = std::chrono::steady_clock::now();

/** `count` zeroed records of one type, one after another. */
class Records {
public:
    Records(const Record &type, size_t count) : m_type(type), m_bytes(count * type.size) {}
    const Record &type() const { return m_type; }
    unsigned char *at(size_t i) { return m_bytes.data() + i * m_type.size; }
    void zero() { std::fill(m_bytes.begin(), m_bytes.end(), 0); }

private:
    const Record &m_type;
    std::vector<unsigned char> m_bytes;
};

bool too_many_members(std::string_view object) {
    int members = 0;
    for (ObjectWalk walk(object); walk.next();) {
        if (++members > kMaxMembers) return true;
    }
    return false;
}

/** Reads one value. What it has beyond its own level is nobody's business: no field takes it. */
bool parse_value(std::string_view text, record_codec::Json *out, std::string *reason) {
    switch (json_type(text)) {
        case JsonType::kObject:
            *out = record_codec::Json::object();
            return true;
        case JsonType::kArray:
            *out = record_codec::Json::array();
            return true;
        default:
            return record_codec::parse_json(text.data(), text.size(), 0, out, reason);
    }
}

/** Ends with the elements of an array before the array ends: an array that ends with elements
 * allocates, which is the end of the process when there is no memory. */
class EmptiedArray {
public:
    explicit EmptiedArray(record_codec::Json &value) : m_value(value) {}
    EmptiedArray(const EmptiedArray &) = delete;
    EmptiedArray &operator=(const EmptiedArray &) = delete;
    ~EmptiedArray() {
        if (m_value.is_array()) m_value.clear();
    }

private:
    record_codec::Json &m_value;
};

bool decode_member(const Record &type, const std::string &name, std::string_view text, void *bytes,
                   record_codec::RecordError *error) {
    record_codec::Json value;
    const EmptiedArray emptied(value);
    if (!parse_value(text, &value, &error->reason)) return false;
    if (value.is_array()) {
        for (ArrayWalk walk(text); walk.next() && value.size() < kMaxElements;) {
            record_codec::Json element;
            if (!parse_value(walk.value(), &element, &error->reason)) return false;
            value.push_back(std::move(element));
        }
    }
    return record_codec::json_to_member(type, name, value, record_codec::UnknownMembers::kRefuse,
                                        bytes, error);
}

/**
 * Puts the fields that `text` names over the record at `bytes`. Member by member, without a tree of
 * the whole: a tree that is given up allocates.
 */
bool decode_record(const Record &type, std::string_view text, void *bytes,
                   record_codec::RecordError *error) {
    if (json_type(text) != JsonType::kObject) {
        error->reason = "must be an object";
        return false;
    }
    if (too_many_members(text)) {
        error->reason = "more than " + std::to_string(kMaxMembers) + " members";
        return false;
    }
    for (ObjectWalk walk(text); walk.next();) {
        if (!decode_member(type, std::string(walk.name()), walk.value(), bytes, error))
            return false;
    }
    return true;
}

bool decode_records(const Params &params, Records *records, Failure *failure) {
    for (size_t i = 0; i < params.records.size(); ++i) {
        record_codec::RecordError error;
        if (decode_record(records->type(), params.records[i], records->at(i), &error)) continue;
        std::string where = "records[" + std::to_string(i) + "]";
        if (!error.field.empty()) where += "." + shown(error.field);
        *failure = invalid_params(std::move(where), std::move(error.reason));
        return false;
    }
    return true;
}

Key key_of(const Params &params) {
    return {params.if_name.c_str(), params.channel};
}

/** How many records the key has, 0 to kMaxRecords. */
bool count_records(const Command &get, const Key &key, size_t *count, Failure *failure) {
    const int size = call_size(get, key);
    if (size > kMaxRecords) {
        *failure = rpc_failure(kInternalError, std::to_string(size) + " records exceed " +
                                                   std::to_string(kMaxRecords));
        return false;
    }
    *count = static_cast<size_t>(std::max(size, 0));
    return true;
}

bool status_to_result(int status, std::string *out, Failure *failure) {
    if (status < 0) {
        *failure = handler_failure(status);
        return false;
    }
    out->push_back('0');
    return true;
}

/** Enough for most records, so that the text seldom grows. */
size_t expected_length(const Record &type) {
    return type.size / 2 + 24 * type.field_count;
}

bool serve_get(const Command &command, const Params &params, std::string *out, Failure *failure) {
    const Key key = key_of(params);
    size_t count = 0;
    if (!count_records(command, key, &count, failure)) return false;
    Records records(*record_codec::find_record(command.record), std::max<size_t>(count, 1));
    // Also called for no record at all: its status tells why there is none.
    const int status = call_get(command, key, records.at(0));
    if (status < 0) {
        *failure = handler_failure(status);
        return false;
    }
    out->reserve(out->size() + count * expected_length(records.type()));
    out->push_back('[');
    for (size_t i = 0; i < count; ++i) {
        if (i > 0) out->push_back(',');
        record_codec::append_record(*out, records.type(), records.at(i));
    }
    out->push_back(']');
    return true;
}

bool serve_set(const Command &command, const Params &params, std::string *out, Failure *failure) {
    const Command &get = *find_command(command.companion);
    const Key key = key_of(params);
    const size_t given = params.records.size();
    size_t needed = 0;
    if (!count_records(get, key, &needed, failure)) return false;
    Records records(*record_codec::find_record(command.record),
                    std::max({needed, given, size_t{1}}));
    if (call_get(get, key, records.at(0)) < 0) {
        // Nothing to keep: the Set says by itself why it refuses this key.
        records.zero();
    } else if (given != needed) {
        *failure = invalid_params(
            "records", std::to_string(given) + " given, " + std::to_string(needed) + " needed");
        return false;
    }
    return decode_records(params, &records, failure) &&
           status_to_result(call_set(command, key, records.at(0)), out, failure);
}

bool serve_event(const Command &command, const Params &params, std::string *out, Failure *failure) {
    const size_t given = params.records.size();
    if (given != 1) {
        *failure = invalid_params("records", std::to_string(given) + " given, 1 needed");
        return false;
    }
    Records records(*record_codec::find_record(command.record), 1);
    return decode_records(params, &records, failure) &&
           status_to_result(call_set(command, Key(), records.at(0)), out, failure);
}

bool serve_upload(const Command &command, const Params &params, std::string *out,
                  Failure *failure) {
    return status_to_result(call_upload(command, key_of(params)), out, failure);
}

bool serve_keepalive(const Command &, const Params &, std::string *out, Failure *) {
    using std::chrono::duration_cast;
    using std::chrono::seconds;
    const auto uptime = std::chrono::steady_clock::now() - g_loaded_at;
    out->append("{\"process\":\"app_gui\",\"pid\":")
        .append(std::to_string(getpid()))
        .append(",\"uptime_s\":")
        .append(std::to_string(duration_cast<seconds>(uptime).count()))
        .append("}");
    return true;
}

bool serve_discover(const Command &, const Params &, std::string *out, Failure *) {
    out->append(discovery_document());
    return true;
}

using Serve = bool (*)(const Command &, const Params &, std::string *, Failure *);

/** In the order of Direction. */
constexpr Serve kServe[] = {serve_get,    serve_set,       serve_event,
                            serve_upload, serve_keepalive, serve_discover};

}  // namespace

bool only_answers(std::string_view method) {
    const Command *command = find_command(method);
    return command != nullptr && (command->direction == Direction::kKeepalive ||
                                  command->direction == Direction::kDiscover);
}

bool serve_command(std::string_view method, std::string_view params_text, std::string *out,
                   Failure *failure) {
    const Command *command = find_command(method);
    if (command == nullptr || !is_served(*command)) {
        *failure = rpc_failure(kMethodNotFound, shown(method));
        return false;
    }
    Params params;
    return read_params(*command, params_text, &params, failure) &&
           kServe[static_cast<size_t>(command->direction)](*command, params, out, failure);
}

}  // namespace command_protocol
