// Lists of many elements.
#pragma once

#include <cstddef>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include "drawing/files/large_pages.h"

namespace vorna::drawing {

// Large blocks lie in large pages. Elements without an initial value have none: they are not cleared first by one thread when
// several threads are going to fill them.
template <class Element> struct Long_List_Allocator {
    static_assert(std::is_trivially_copyable_v<Element>);

    using value_type = Element;
    using is_always_equal = std::true_type;

    Long_List_Allocator() = default;
    template <class Other> Long_List_Allocator(const Long_List_Allocator<Other>&) noexcept {}

    Element* allocate(std::size_t count) {
        if (count > static_cast<std::size_t>(-1) / sizeof(Element)) {
            throw std::bad_array_new_length();
        }
        const std::size_t bytes = count * sizeof(Element);
        if (!is_large(count)) {
            return static_cast<Element*>(::operator new(bytes));
        }
        void* const memory = ::operator new (bytes, std::align_val_t{large_page});
        map_in_large_pages(memory, bytes);
        return static_cast<Element*>(memory);
    }
    void deallocate(Element* memory, std::size_t count) noexcept {
        if (is_large(count)) {
            ::operator delete (memory, std::align_val_t{large_page});
        } else {
            ::operator delete(memory);
        }
    }

    void construct(Element*) noexcept {}
    template <class... Values> void construct(Element* place, Values&&... values) {
        ::new (static_cast<void*>(place)) Element(std::forward<Values>(values)...);
    }

    friend bool operator==(const Long_List_Allocator&, const Long_List_Allocator&) noexcept { return true; }

private:
    static bool is_large(std::size_t count) noexcept { return count >= 2 * large_page / sizeof(Element); }
};

template <class Element> using Long_List = std::vector<Element, Long_List_Allocator<Element>>;

// Room for so many elements in a list that is empty, in large pages.
template <class Element> void reserve_in_large_pages(std::vector<Element>& list, std::size_t count) {
    list.reserve(count);
    map_in_large_pages(list.data(), count * sizeof(Element));
}

} // namespace vorna::drawing
