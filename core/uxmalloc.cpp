#include "uxmalloc.h"

#include <cstdlib>

void* uxmalloc(std::size_t size) {
    return std::malloc(size);
}

void uxfree(void* p) {
    std::free(p);
}
