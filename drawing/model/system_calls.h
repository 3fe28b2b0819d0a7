// What a process asks the system for.
#pragma once

namespace vorna::drawing::model {

// From now on this process can compute, use memory, read and write what it has open, take files from others, and end. Everything
// else is refused to it. Nothing happens where the system or the build knows no such limits.
void allow_only_computing() noexcept;

} // namespace vorna::drawing::model
