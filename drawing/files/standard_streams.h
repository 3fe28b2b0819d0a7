// Standard input and output as files of bytes.
#pragma once

#include <cstdio>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#else
#include <unistd.h>
#endif

namespace vorna::drawing {

// Windows changes line ends in streams unless it is told not to.
inline void set_binary([[maybe_unused]] std::FILE* stream) {
#if defined(_WIN32)
    _setmode(_fileno(stream), _O_BINARY);
#endif
}

// The number that the system knows it by.
inline int number_of(std::FILE* stream) {
#if defined(_WIN32)
    return _fileno(stream);
#else
    return fileno(stream);
#endif
}

inline bool is_terminal(std::FILE* stream) {
#if defined(_WIN32)
    return _isatty(_fileno(stream)) != 0;
#else
    return isatty(fileno(stream)) != 0;
#endif
}

} // namespace vorna::drawing
