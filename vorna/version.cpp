// The release, as the library knows it.
#include "vorna/version.h"

const char* vorna::version() noexcept {
    return VORNA_VERSION_TEXT;
}
