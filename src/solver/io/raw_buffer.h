/* raw_buffer.h - bytes that are about to be overwritten: a vector that does not clear what it grows by, so that a small
 * file touches no more of a large buffer than it fills. */
#pragma once

#include <memory>
#include <new>
#include <vector>

struct raw_allocator : std::allocator<char> {
    template <class> struct rebind {
        typedef raw_allocator other;
    };
    // NOLINTBEGIN(readability-non-const-parameter): placement new writes there
    void construct(char *place) { ::new (static_cast<void *>(place)) char; }
    void construct(char *place, char value) { ::new (static_cast<void *>(place)) char(value); }
    // NOLINTEND(readability-non-const-parameter)
};

typedef std::vector<char, raw_allocator> raw_buffer;
