// A plug-in for QEMU's user mode that counts the instructions that a program executes, and says how many at its end on standard
// error: g++ -shared -fPIC -o counter.so instruction_counter.cpp; qemu-aarch64 -plugin ./counter.so PROGRAM.
//
// Declares what it needs of QEMU's interface for plug-ins (version 1), whose header Debian does not install.
#include <cstddef>
#include <cstdint>
#include <cstdio>

struct qemu_plugin_tb;

#define EXPORTED extern "C" __attribute__((visibility("default")))

extern "C" {
std::size_t qemu_plugin_tb_n_insns(const qemu_plugin_tb* block);
void qemu_plugin_register_vcpu_tb_trans_cb(std::uint64_t id, void (*translated)(std::uint64_t id, qemu_plugin_tb* block));
// operation 0 adds the summand.
void qemu_plugin_register_vcpu_tb_exec_inline(qemu_plugin_tb* block, int operation, void* sum, std::uint64_t summand);
void qemu_plugin_register_atexit_cb(std::uint64_t id, void (*ended)(std::uint64_t id, void* context), void* context);
}

namespace {

std::uint64_t executed = 0;

void count_block(std::uint64_t, qemu_plugin_tb* block) {
    qemu_plugin_register_vcpu_tb_exec_inline(block, 0, &executed, qemu_plugin_tb_n_insns(block));
}

void report(std::uint64_t, void*) {
    std::fprintf(stderr, "instructions: %llu\n", static_cast<unsigned long long>(executed));
}

} // namespace

EXPORTED int qemu_plugin_version;
int qemu_plugin_version = 1;

EXPORTED int qemu_plugin_install(std::uint64_t id, const void*, int, char**) {
    qemu_plugin_register_vcpu_tb_trans_cb(id, count_block);
    qemu_plugin_register_atexit_cb(id, report, nullptr);
    return 0;
}
