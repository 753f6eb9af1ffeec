#include "store_memory.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>

// A sanitizer brings an allocator of its own.
#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

#include <malloc.h>

namespace {
std::atomic<size_t> refused_size{SIZE_MAX};
}

extern "C" void *__libc_malloc(size_t size);
extern "C" __attribute__((visibility("default"))) void *malloc(size_t size) {
    return size == refused_size ? nullptr : __libc_malloc(size);
}

namespace store_test {

const bool kCanRefuseMemory = true;

RefusedMemory::RefusedMemory(size_t size) {
    refused_size = size;
}

RefusedMemory::~RefusedMemory() {
    refused_size = SIZE_MAX;
}

size_t heap_in_use() {
    return mallinfo2().uordblks;
}

}  // namespace store_test

#else

namespace store_test {

const bool kCanRefuseMemory = false;

RefusedMemory::RefusedMemory(size_t) {}

RefusedMemory::~RefusedMemory() = default;

size_t heap_in_use() {
    return 0;
}

}  // namespace store_test

#endif
