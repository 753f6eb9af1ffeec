/**
 * @file watched_screen.h
 * The framebuffer as somebody beside the drawing process sees it.
 */
#ifndef BENCH_FOOTPRINT_WATCHED_SCREEN_H
#define BENCH_FOOTPRINT_WATCHED_SCREEN_H

#include <sys/types.h>

#include <cstddef>
#include <string>

namespace footprint {

/** /dev/fb1, mapped. Thread: one. */
class WatchedScreen {
public:
    /** Throws std::runtime_error when there is no framebuffer to map. */
    explicit WatchedScreen(const char *device);
    ~WatchedScreen();
    WatchedScreen(const WatchedScreen &) = delete;
    WatchedScreen &operator=(const WatchedScreen &) = delete;

    void clear();
    /** The visible rows, padding left out. */
    std::string picture() const;
    /**
     * Whether the screen shows `wanted`, as picture() gave it. Cheap while it does not: the row
     * that was found missing is looked at first.
     */
    bool shows(const std::string &wanted);

    size_t frameBytes() const { return m_rowBytes * m_rows; }
    /** What /proc/PID/maps has for a mapping of the device. */
    dev_t device() const { return m_device; }
    ino_t inode() const { return m_inode; }

private:
    unsigned char *row(size_t y) const { return m_first + y * m_stride; }
    bool rowShows(const std::string &wanted, size_t y) const;

    unsigned char *m_memory;
    unsigned char *m_first;  ///< of the visible pixels
    size_t m_length, m_rowBytes, m_rows, m_stride;
    size_t m_missing = 0;
    dev_t m_device;
    ino_t m_inode;
};

}  // namespace footprint

#endif
