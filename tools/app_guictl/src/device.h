/** @file device.h The process at the other end: requests to it, events for it. */
#ifndef APP_GUICTL_DEVICE_H
#define APP_GUICTL_DEVICE_H

#include <string>
#include <string_view>

#include "record_codec/record_json.h"

namespace app_guictl {

using Json = record_codec::OrderedJson;

/** The text of a JSON-RPC 2.0 request with id 1, or of a notification. */
std::string request_text(std::string_view method, const Json &params);
std::string notification_text(std::string_view method, const Json &params);

/** A command socket. */
class Device {
public:
    /** @param timeout_ms how long each answer may take, in milliseconds. */
    Device(std::string address, int timeout_ms);

    /** Sends a text and returns the answer's text. Throws CtlError(kNoAnswer). */
    std::string exchange(std::string_view text) const;

    /** Calls a command and returns its result. Throws CtlError(kNoAnswer) or CtlError(kRefused). */
    Json call(std::string_view method, const Json &params) const;

private:
    std::string m_address;
    int m_timeout_ms;
};

/**
 * Publishes one message as an event process does: binds the address, waits for a subscriber, sends.
 * @param timeout_ms  how long to wait for the subscriber. Throws CtlError(kNoAnswer) after it.
 * @param linger_ms   how long to stay after sending. Closing the socket drops what is still on its
 *                    way and nothing tells when it has left, so this is a matter of time.
 */
void publish(const std::string &address, std::string_view text, int timeout_ms, int linger_ms);

}  // namespace app_guictl

#endif
