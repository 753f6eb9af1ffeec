/**
 * @file fb_calls.h
 * The kernel calls that a framebuffer needs, behind an interface, so that a test can stand in for
 * the driver; and owners for what the calls give out.
 *
 * Every call fails with -1 (`map` with MAP_FAILED) and `errno`.
 *
 * Thread: the display thread.
 */
#ifndef WINDOW_SERVER_FB_CALLS_H
#define WINDOW_SERVER_FB_CALLS_H

#include <cstddef>

namespace qws {

class FbCalls {
public:
    virtual ~FbCalls() = default;

    /** For reading and writing, closed on exec. */
    virtual int open(const char *path);
    virtual int ioctl(int descriptor, unsigned long request, void *argument);
    /** Shared, readable and writable, from the start of the memory. */
    virtual void *map(int descriptor, size_t length);
    virtual void unmap(void *memory, size_t length);
    /** Has the driver take over at once what is drawn; not every one needs or knows it. */
    virtual void sync(int descriptor);
    virtual void close(int descriptor);

    /** What the platform plugin uses: the kernel, unless a test has set something else. */
    static FbCalls &current();
    /** @param calls  must outlive its use; null for the kernel again. */
    static void setCurrent(FbCalls *calls);
};

/** Owns an open descriptor, or none. */
class FbDescriptor {
public:
    FbDescriptor() = default;
    FbDescriptor(FbCalls &calls, int descriptor) : m_calls(&calls), m_descriptor(descriptor) {}
    FbDescriptor(FbDescriptor &&other) noexcept { swap(other); }
    FbDescriptor &operator=(FbDescriptor other) noexcept {
        swap(other);
        return *this;
    }
    ~FbDescriptor() {
        if (isOpen()) m_calls->close(m_descriptor);
    }

    bool isOpen() const { return m_descriptor >= 0; }
    int get() const { return m_descriptor; }

private:
    void swap(FbDescriptor &other) noexcept;

    FbCalls *m_calls = nullptr;
    int m_descriptor = -1;
};

/** Owns mapped memory, or none. */
class FbMap {
public:
    FbMap() = default;
    FbMap(FbCalls &calls, void *memory, size_t length)
        : m_calls(&calls), m_memory(memory), m_length(length) {}
    FbMap(FbMap &&other) noexcept { swap(other); }
    FbMap &operator=(FbMap other) noexcept {
        swap(other);
        return *this;
    }
    ~FbMap() {
        if (m_memory) m_calls->unmap(m_memory, m_length);
    }

    unsigned char *bytes() const { return static_cast<unsigned char *>(m_memory); }

private:
    void swap(FbMap &other) noexcept;

    FbCalls *m_calls = nullptr;
    void *m_memory = nullptr;
    size_t m_length = 0;
};

}  // namespace qws

#endif
