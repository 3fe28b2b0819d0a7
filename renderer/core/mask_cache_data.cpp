// The masks of complex clips, as renderers share them.
#include "renderer/core/mask_cache_data.h"

#include <memory>

namespace krb {

Mask_Cache_Data::~Mask_Cache_Data() {
    empty_mask_cache(*this);
}

VT_Counted* Mask_Cache_Data::clone() const {
    auto copy = std::make_unique<Mask_Cache_Data>(*this);
    copy->owns_list_ = false;
    return copy.release();
}

void empty_mask_cache(Mask_Cache_Data& cache) noexcept {
    while (cache.owns_list_ && cache.newest) {
        Frame_Buffer_Mask* const mask = cache.newest;
        cache.newest = mask->older;
        delete mask;
    }
    cache.newest = nullptr;
    cache.oldest = nullptr;
    cache.count = 0;
    cache.owns_list_ = true;
}

} // namespace krb
