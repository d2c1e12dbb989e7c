// SPDX-License-Identifier: MIT
#pragma once

#include <malloc.h>

#include <cstdio>

namespace orvane::benchmarks {

/// Bytes that are allocated at the moment, whatever the allocator keeps besides.
inline double heapInUse() {
    const struct mallinfo2 info = mallinfo2();
    return double(info.uordblks + info.hblkhd);
}

inline void printHeapRatio(const char *name, double after, double before) {
    std::printf("%-44s %12.1f KiB %11.1f KiB   ratio %.3f\n", name, after / 1024, before / 1024,
                after / before);
}

} // namespace orvane::benchmarks
