#include "pbhost/large_blocks.h"

#include <malloc.h>

namespace pbhost {

void keepLargeBlocks() {
    constexpr int large = 1 << 30;
    mallopt(M_MMAP_THRESHOLD, large);
    mallopt(M_TRIM_THRESHOLD, large);
    mallopt(M_TOP_PAD, 64 << 20);
}

} // namespace pbhost
