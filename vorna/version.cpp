// The version of the loaded library.
#include "vorna/version.h"

const char* vorna::version() noexcept {
    return VORNA_VERSION_TEXT;
}
