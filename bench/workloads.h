// What is measured: the workloads with their peers and goals.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bench/canvas.h"
#include "bench/measure.h"

namespace bench {

// What a rate counts.
enum class Counts { pixels, triangles, lines, circles, points, frames };

struct Unit {
    const char* title;
    double size;
};

// Of frames, the time of one counts and not their rate.
Unit unit_of(Counts counts);
double amount_of(const Subject& subject, Counts counts);

struct Peer {
    const char* who;
    std::unique_ptr<Canvas> (*make)(const Surface&, const Subject&);
    double edge_share; // largest difference in the number of painted pixels
};

// A rate, for the kernel set avx512 only; or a share of the rate that is measured for something else.
struct Goal {
    enum class Of { none, rate, memset, memcpy, reference, best_peer } of = Of::none;
    double value = 0;
    // Shares of the best peer's rate with narrower kernel sets; value is that of avx512.
    double avx2 = 0, baseline = 0;

    // 0 = none.
    double value_for(std::string_view kernel_set) const noexcept;
};

struct Workload {
    std::string group, name, title;
    std::function<Subject(const Variation&)> make;
    // For the check: so little that its pixels lie apart. Empty where all is compared.
    std::function<Subject()> make_sparse;
    Surface surface;
    Clears clears;
    Counts counts;
    std::vector<Peer> peers;
    Goal goal{};
    // The 32-bit member beside an 8-bit one, the open one beside a masked one.
    std::optional<Surface> reference{};
};

struct Model_Files {
    std::string bunny;  // of W11
    std::string dragon; // empty = no rows of it
};

std::vector<Workload> workloads(const Model_Files& models);

// Bytes of cache lines that a frame cannot but touch: clears, the depths of all pixels and the colours of those that pass (half
// of them), and for lines and circles every cache line that has a pixel.
double bytes_touched(const Workload& workload, const Subject& subject);

} // namespace bench
