// Destroys JSON documents where there is no memory left.
#pragma once

#include <utility>

#include "drawing/files/json_memory.h"

namespace vorna::drawing {

// Removes the elements of a list or object, innermost first. The library's destructor asks for memory to hold the elements of
// what it destroys, and ends the process when there is none; lists and objects that are empty need none.
template <class Json> void release_json(Json& value, int depth = 0) noexcept {
    // What is deeper is left to the library, since recursion would need too much stack.
    if (depth == int{deepest_json} || !value.is_structured()) {
        return;
    }
    for (Json& element : value) {
        release_json(element, depth + 1);
    }
    value.clear();
}

// Owns a document.
template <class Json> class Released_Json {
public:
    Released_Json() = default;
    explicit Released_Json(Json document) noexcept : document_(std::move(document)) {}
    Released_Json(const Released_Json&) = delete;
    Released_Json& operator=(const Released_Json&) = delete;
    ~Released_Json() { release_json(document_); }

    Json& operator*() noexcept { return document_; }
    const Json& operator*() const noexcept { return document_; }

private:
    Json document_;
};

} // namespace vorna::drawing
