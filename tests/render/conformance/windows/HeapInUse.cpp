#include "tests/render/conformance/HeapInUse.h"

#include <malloc.h>

namespace tarvo::render::conformance {

std::size_t heapInUse() {
    std::size_t bytes = 0;
    _HEAPINFO entry{};
    while (_heapwalk(&entry) == _HEAPOK) {
        bytes += entry._useflag == _USEDENTRY ? entry._size : 0;
    }
    return bytes;
}

} // namespace tarvo::render::conformance
