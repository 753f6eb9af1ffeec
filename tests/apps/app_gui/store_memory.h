/**
 * @file store_memory.h
 * A C allocator that refuses blocks of one size, for tests of what happens then.
 *
 * Thread: any.
 */
#ifndef TESTS_APP_GUI_STORE_MEMORY_H
#define TESTS_APP_GUI_STORE_MEMORY_H

#include <cstddef>

namespace store_test {

/** False in builds whose allocator cannot be made to fail, e.g. under a sanitizer. */
extern const bool kCanRefuseMemory;

/** While it lives, `malloc` gives no block of `size` bytes and `new` throws for one. */
class RefusedMemory {
public:
    explicit RefusedMemory(size_t size);
    ~RefusedMemory();
    RefusedMemory(const RefusedMemory &) = delete;
    RefusedMemory &operator=(const RefusedMemory &) = delete;
};

/** Bytes of the heap that are in use; 0 where kCanRefuseMemory is false. */
size_t heap_in_use();

}  // namespace store_test

#endif
