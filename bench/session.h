// Measures workloads with each kernel set.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "bench/report.h"
#include "vorna/module.h"

namespace bench {

// Chooses the kernel set of renderers that are made while it lives.
class Kernel_Choice {
public:
    explicit Kernel_Choice(const std::string& kernel_set);
    Kernel_Choice(const Kernel_Choice&) = delete;
    Kernel_Choice& operator=(const Kernel_Choice&) = delete;
    ~Kernel_Choice();
};

// Those of the names that the module knows and this processor runs.
std::vector<std::string> runnable(const vorna::Module& module, const std::vector<std::string>& kernel_sets);

struct Session_Settings {
    std::string module, beside; // beside: another build, empty = none
    std::vector<std::string> kernel_sets;
    std::int32_t rounds = 9;
    std::uint32_t vary = 0; // a seed, 0 = not varied
    bool with_peers = true;
    bool with_portable = false; // also the kernel set of plain C++, as a measure
};

class Session {
public:
    explicit Session(const Session_Settings& settings);

    // A result for each kernel set: all of them, the peers and the measures take turns in one run. A workload that does not paint
    // what it should is not timed: the result of each kernel set holds the failure.
    std::vector<Result> run(const Workload& workload);

    const vorna::Module& module() const { return module_; }

private:
    void check(const Workload& workload, const Subject& subject) const;
    void time(const Workload& workload, const Subject& subject, std::vector<Result>& results);

    Session_Settings settings_;
    vorna::Module module_;
    std::unique_ptr<vorna::Module> beside_;
};

} // namespace bench
