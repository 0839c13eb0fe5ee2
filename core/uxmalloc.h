#ifndef VELK_UXMALLOC_H
#define VELK_UXMALLOC_H

#include <cstddef>

// Scratch allocation of the host's support library; velk's own stand-in.
// uxmalloc returns null when the allocation fails.
void* uxmalloc(std::size_t size);
void uxfree(void* p);

#endif
