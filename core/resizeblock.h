#ifndef VELK_RESIZEBLOCK_H
#define VELK_RESIZEBLOCK_H

#include <cstddef>
#include <cstdlib>

namespace velk {

// realloc for a block that may be null; a failed resize releases the old block
// and returns null instead of leaking it.
inline void* resizeBlock(void* block, std::size_t bytes) {
    if (block == nullptr) return std::malloc(bytes);
    void* resized = std::realloc(block, bytes);
    if (resized == nullptr) std::free(block);
    return resized;
}

}  // namespace velk

#endif
