// Copies of the renditions of kept calls.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <vector>

#include "host/rendition.h"

namespace vorna {

// Copies are made where values differ: a rendition that keeps its values has one copy for all calls.
class Kept_Renditions {
public:
    static constexpr std::size_t most = 4096;

    // Whether one more copy can be made.
    bool has_room() const noexcept { return count_ < most; }
    // The copy of a rendition; there must be room. Throws std::bad_alloc.
    const VT_Rendition& kept(const VT_Rendition& rendition) {
        const Known& known = known_of(rendition);
        return known.given == &rendition && have_same_values(*known.kept, rendition) ? *known.kept : copied(rendition);
    }
    // Forgets all copies, and lets go of what they refer to.
    void clear() noexcept;

private:
    struct Known {
        const VT_Rendition* given = nullptr;
        const VT_Rendition* kept = nullptr;
    };

    static bool have_same_values(const VT_Rendition& a, const VT_Rendition& b) noexcept;
    // Applications draw with one rendition that they change, or with a few by turns.
    Known& known_of(const VT_Rendition& rendition) noexcept {
        return known_[reinterpret_cast<std::uintptr_t>(&rendition) / sizeof(VT_Rendition) % std::size(known_)];
    }
    const VT_Rendition& copied(const VT_Rendition& rendition);

    // Made once and used again; the first count_ are in use.
    std::vector<VT_Reference<VT_Rendition>> copies_;
    std::size_t count_ = 0;
    Known known_[8];
};

} // namespace vorna
