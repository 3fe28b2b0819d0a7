// Pictures as JSON documents.
#pragma once

#include <string>

#include "drawing/recording/picture.h"

namespace vorna::drawing::recording {

// The document that read_picture reads as the same picture. Points are numbers in a row, colours and pixels hexadecimal digits;
// lists and renditions that several places share are written once. Throws std::runtime_error for numbers that are not finite.
std::string json_of(const Picture& picture);

} // namespace vorna::drawing::recording
