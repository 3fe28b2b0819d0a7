// The masks of complex clips, as renderers share them.
#pragma once

#include <cstdint>

#include "host/frame_buffer.h"
#include "host/object.h"

namespace krb {

// The most recently used masks in a list from newest to oldest, shared between the renderers of an application. A clone shares
// the list and does not own it, until it is emptied: then it begins a list of its own.
class Mask_Cache_Data final : public VT_Counted {
public:
    Mask_Cache_Data() = default;
    Mask_Cache_Data(const Mask_Cache_Data&) = default;
    Mask_Cache_Data& operator=(const Mask_Cache_Data&) = delete;
    ~Mask_Cache_Data() override;
    VT_Counted* clone() const override;

    Frame_Buffer_Mask* newest = nullptr;
    Frame_Buffer_Mask* oldest = nullptr;
    std::int32_t count = 0;
    std::int32_t capacity = 4;

private:
    friend void empty_mask_cache(Mask_Cache_Data& cache) noexcept;

    bool owns_list_ = true;
};

// Forgets every mask; masks of the cache's own are deleted.
void empty_mask_cache(Mask_Cache_Data& cache) noexcept;

} // namespace krb
