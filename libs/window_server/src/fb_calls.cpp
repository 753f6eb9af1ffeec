#include "fb_calls.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace qws {
namespace {

FbCalls *chosen = nullptr;

}  // namespace

int FbCalls::open(const char *path) {
    int descriptor;
    do {
        descriptor = ::open(path, O_RDWR | O_CLOEXEC);
    } while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

int FbCalls::ioctl(int descriptor, unsigned long request, void *argument) {
    int result;
    do {
        result = ::ioctl(descriptor, request, argument);
    } while (result < 0 && errno == EINTR);
    return result;
}

void *FbCalls::map(int descriptor, size_t length) {
    return ::mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
}

void FbCalls::unmap(void *memory, size_t length) {
    ::munmap(memory, length);
}

void FbCalls::sync(int descriptor) {
    ::fsync(descriptor);
}

void FbCalls::close(int descriptor) {
    ::close(descriptor);
}

FbCalls &FbCalls::current() {
    static FbCalls kernel;
    return chosen ? *chosen : kernel;
}

void FbCalls::setCurrent(FbCalls *calls) {
    chosen = calls;
}

void FbDescriptor::swap(FbDescriptor &other) noexcept {
    std::swap(m_calls, other.m_calls);
    std::swap(m_descriptor, other.m_descriptor);
}

void FbMap::swap(FbMap &other) noexcept {
    std::swap(m_calls, other.m_calls);
    std::swap(m_memory, other.m_memory);
    std::swap(m_length, other.m_length);
}

}  // namespace qws
