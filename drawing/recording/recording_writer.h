// Recordings as documents.
#pragma once

#include <string>

#include "drawing/recording/recording.h"

namespace vorna::drawing::recording {

// The document as JSON; read_recording gives the same recording again. Points are numbers in a row, colours and pixels
// hexadecimal digits; lists and renditions that several places share are written once. Throws std::runtime_error for numbers that
// are not finite.
std::string json_of(const Recording& recording);

// The same keys as CBOR (RFC 8949), by which documents are smaller and read faster: lists of points, parameters and clip points
// are byte strings of little-endian numbers of the type that the host's points have, whole ones as differences from the point
// before, which wrap; what is hexadecimal digits in JSON is the bytes. Throws likewise.
std::string cbor_of(const Recording& recording);

} // namespace vorna::drawing::recording
