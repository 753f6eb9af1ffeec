/**
 * @file json_scan.h
 * Finds the parts of a JSON text (RFC 8259) in place, without building a tree of it.
 *
 * Messages come from processes that are not trusted. Everything here takes time in proportion to
 * the text and no memory, whatever the text holds; a value stays the sender's own characters, so
 * that a request's `id` can be answered exactly as it was given.
 *
 * Values are views into the message. Except for check_json(), the functions rely on a text that
 * check_json() has accepted.
 *
 * Thread: any; no state.
 */
#ifndef COMMAND_PROTOCOL_JSON_SCAN_H
#define COMMAND_PROTOCOL_JSON_SCAN_H

#include <cstdint>
#include <string>
#include <string_view>

namespace command_protocol {

enum class JsonType { kNull, kBoolean, kNumber, kString, kArray, kObject };

/**
 * Checks that `text` is one JSON value in UTF-8 with nothing but white space around it.
 * @param max_depth  levels of arrays and objects that are allowed, e.g. 2 for `[[1]]`.
 * @return false with `reason` filled, e.g. "line 1: ',' or '}' expected".
 */
bool check_json(std::string_view text, unsigned max_depth, std::string *reason);

/** The value of `text` without the white space around it. */
std::string_view trim_json(std::string_view text);

/** What a trimmed value is. */
JsonType json_type(std::string_view value);

/** The characters that a string literal such as `"a\u0042"` stands for, here `aB`. */
std::string json_string(std::string_view literal);

/** Reads a number that is written as an integer; false when it is another number or too large. */
bool json_int32(std::string_view number, int32_t *out);

/** Walks the elements of an array: `while (walk.next()) use(walk.value());` */
class ArrayWalk {
public:
    explicit ArrayWalk(std::string_view array) : m_rest(array.substr(1)) {}
    bool next();
    std::string_view value() const { return m_value; }

private:
    std::string_view m_rest;
    std::string_view m_value;
};

/** Walks the members of an object in their order, repeated names included. */
class ObjectWalk {
public:
    explicit ObjectWalk(std::string_view object) : m_rest(object.substr(1)) {}
    bool next();
    /** The member's name; valid until the next step. */
    std::string_view name() const { return m_name; }
    std::string_view value() const { return m_value; }

private:
    std::string_view m_rest;
    std::string_view m_name;
    std::string_view m_value;
    std::string m_unescaped;
};

}  // namespace command_protocol

#endif
