// Gives test programs that break down a status of their own: the system's own way now and then ends with 0.
#include <windows.h>

namespace {

LONG WINAPI end_at_once(EXCEPTION_POINTERS*) {
    TerminateProcess(GetCurrentProcess(), 99);
    return EXCEPTION_EXECUTE_HANDLER;
}

[[maybe_unused]] const LPTOP_LEVEL_EXCEPTION_FILTER before = SetUnhandledExceptionFilter(end_at_once);

} // namespace
