// Kernel sets: the same kernels compiled for different instruction sets, one of which a renderer uses.
#pragma once

#include <cstdint>
#include <vector>

namespace krb {

// Declared by the families.
struct Line_Kernel_Table;
struct Smoothed_Kernel_Table;
struct Span_Kernel_Table;
struct Triangle_Kernel_Table;

struct Kernel_Set {
    const char* name;
    // Windows narrower than this many pixels are drawn by the portable set: short spans may be loaded and stored as a whole
    // vector that lies elsewhere in the same row.
    std::int32_t least_width;
    const Triangle_Kernel_Table* triangles;
    const Line_Kernel_Table* lines;
    const Smoothed_Kernel_Table* smoothed;
    const Span_Kernel_Table* spans;
};

// The best set that this processor runs, or the one that the environment variable KRB_KERNELS names: portable, on x86-64
// baseline, avx2 or avx512, on AArch64 neon. Throws std::invalid_argument for a name that does not exist here and for a set that
// the processor lacks.
const Kernel_Set& chosen_kernel_set();

const Kernel_Set& portable_kernel_set() noexcept;

// Every set that this processor runs, from the best to the portable one.
std::vector<const Kernel_Set*> supported_kernel_sets();

} // namespace krb
