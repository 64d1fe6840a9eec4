#include "tests/render/conformance/HeapInUse.h"

#include <malloc.h>

namespace tarvo::render::conformance {

std::size_t heapInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

} // namespace tarvo::render::conformance
