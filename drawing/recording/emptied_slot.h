// Disables a slot of the renderer during its own lifetime, so that the host draws.
#pragma once

#include <cstdint>

namespace vorna::drawing::recording {

class Emptied_Slot {
public:
    // enabled: the slot's switch. Without is_emptied it keeps its value.
    Emptied_Slot(std::int32_t& enabled, bool is_emptied) noexcept : enabled_(enabled), before_(enabled) {
        enabled_ = is_emptied ? 0 : before_;
    }
    Emptied_Slot(const Emptied_Slot&) = delete;
    Emptied_Slot& operator=(const Emptied_Slot&) = delete;
    ~Emptied_Slot() { enabled_ = before_; }

private:
    std::int32_t& enabled_;
    std::int32_t before_;
};

} // namespace vorna::drawing::recording
