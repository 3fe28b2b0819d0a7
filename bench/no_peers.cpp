// The peers of a program that draws without them: workloads name them, and nobody makes one.
#include "bench/canvas.h"

namespace bench {

#define BENCH_NO_PEER(make)                                                                                                      \
    std::unique_ptr<Canvas> make(const Surface&, const Subject&) {                                                               \
        return nullptr;                                                                                                          \
    }

BENCH_NO_PEER(make_llvmpipe_canvas)
BENCH_NO_PEER(make_sdl_canvas)
BENCH_NO_PEER(make_cairo_canvas)
BENCH_NO_PEER(make_agg_canvas)
BENCH_NO_PEER(make_pixman_canvas)
BENCH_NO_PEER(make_memcpy_canvas)

} // namespace bench
