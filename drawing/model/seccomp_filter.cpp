// Limits by Linux's filters of system calls.
#include <cerrno>
#include <initializer_list>

#include <seccomp.h>
#include <sys/mman.h>
#include <unistd.h>

#include "drawing/model/system_calls.h"

namespace vorna::drawing::model {
namespace {

// On what is open, for memory, of libraries that wait and measure, and for the end, std::abort's too.
constexpr int calls[] = {
    SCMP_SYS(read),   SCMP_SYS(readv),         SCMP_SYS(pread64),        SCMP_SYS(write),        SCMP_SYS(recvmsg),
    SCMP_SYS(lseek),  SCMP_SYS(_llseek),       SCMP_SYS(close),          SCMP_SYS(brk),          SCMP_SYS(munmap),
    SCMP_SYS(mremap), SCMP_SYS(madvise),       SCMP_SYS(futex),          SCMP_SYS(sched_yield),  SCMP_SYS(getrandom),
    SCMP_SYS(time),   SCMP_SYS(clock_gettime), SCMP_SYS(gettimeofday),   SCMP_SYS(rt_sigaction), SCMP_SYS(rt_sigreturn),
    SCMP_SYS(getpid), SCMP_SYS(gettid),        SCMP_SYS(rt_sigprocmask), SCMP_SYS(exit),         SCMP_SYS(exit_group)};

} // namespace

void allow_only_computing() noexcept {
    // A refusal, not the end: C libraries try calls that they can do without.
    const scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ERRNO(EPERM));
    if (!filter) {
        return;
    }
    for (const int call : calls) {
        seccomp_rule_add(filter, SCMP_ACT_ALLOW, call, 0); // those that a processor lacks are passed over
    }
    const scmp_arg_cmp is_no_code{2, SCMP_CMP_MASKED_EQ, PROT_EXEC, 0};
    for (const int call : {SCMP_SYS(mmap), SCMP_SYS(mmap2), SCMP_SYS(mprotect)}) {
        seccomp_rule_add_array(filter, SCMP_ACT_ALLOW, call, 1, &is_no_code);
    }
    // Signals to itself only, by which std::abort ends it.
    const scmp_arg_cmp is_own{0, SCMP_CMP_EQ, static_cast<scmp_datum_t>(getpid()), 0};
    seccomp_rule_add_array(filter, SCMP_ACT_ALLOW, SCMP_SYS(tgkill), 1, &is_own);
    seccomp_load(filter);
    seccomp_release(filter);
}

} // namespace vorna::drawing::model
