// Errors that whoever asked can mend.
#pragma once

#include <stdexcept>

namespace vorna::drawing {

// Wrong usage or input; every other exception is a failure. The message is one line.
class Usage_Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace vorna::drawing
