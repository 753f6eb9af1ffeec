/**
 * @file traffic.h
 * Random messages for a device: valid requests of every family, refused ones, and events.
 *
 * The same seed makes the same messages. Every request is one that is answered, with a result or an
 * error: notifications are left to the event sockets.
 *
 * Thread: each object is used by one thread at a time.
 */
#ifndef BENCH_SOAK_TRAFFIC_H
#define BENCH_SOAK_TRAFFIC_H

#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

namespace soak {

using Json = nlohmann::ordered_json;

class Traffic {
public:
    /** @param pictures  files that picture records and uploads name, as the device sees them. */
    Traffic(unsigned seed, std::vector<std::string> pictures)
        : m_random(seed), m_pictures(std::move(pictures)) {}

    /** A request: about seven of ten are well formed, of these most are carried out. */
    std::string request();
    /** What the codec process publishes: video and audio sources. */
    std::string codecEvent();
    /** What the streaming process publishes: names and addresses of streams. */
    std::string streamEvent();

private:
    struct Family;

    unsigned any(unsigned below);
    int between(int lowest, int highest);
    bool oneOf(unsigned times) { return any(times) == 0; }
    std::string text(unsigned longest);
    std::string color();

    std::string setRequest();
    std::string getRequest();
    std::string damaged(std::string message);
    Json record(const Family &family);
    Json value(const Family &family, const char *field);
    Json wildValue();

    std::mt19937 m_random;
    std::vector<std::string> m_pictures;
};

}  // namespace soak

#endif
