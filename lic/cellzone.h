#ifndef VELK_LIC_CELLZONE_H
#define VELK_LIC_CELLZONE_H

#include <cstddef>
#include <cstdlib>

#include "forceinline.h"

namespace velk {

// The cells a thread of the tiled seeding may add to directly: its tile and
// the eight around it, in the tile-by-tile layout three ranges of cells, one
// per row of tiles (empty beyond the image).
struct CellZone {
    int first[3];
    unsigned count[3];

    VELK_ALWAYS_INLINE bool contains(int cell) const {
        return (static_cast<unsigned>(cell - first[0]) < count[0]) |
               (static_cast<unsigned>(cell - first[1]) < count[1]) |
               (static_cast<unsigned>(cell - first[2]) < count[2]);
    }
};

// Additions outside a thread's zone, kept until every thread has finished the
// phase: per output point its cell, its sub-pixel and one value per channel.
struct DeferredAdds {
    int* data = nullptr;
    std::size_t size = 0, capacity = 0;
    bool failed = false;  // an addition was lost for want of memory

    ~DeferredAdds() { std::free(data); }

    // Room for n more ints, zeroed; null (and `failed`) without memory.
    int* append(std::size_t n) {
        if (size + n > capacity) {
            const std::size_t grown = capacity < 1024 ? 4096 : 2 * capacity;
            int* bigger = static_cast<int*>(std::realloc(data, grown * sizeof(int)));
            if (!bigger) {
                failed = true;
                return nullptr;
            }
            data = bigger;
            capacity = grown;
        }
        int* room = data + size;
        for (std::size_t i = 0; i < n; i++) room[i] = 0;
        size += n;
        return room;
    }
};

}  // namespace velk

#endif
