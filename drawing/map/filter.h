// Conditions on the fields of shapes.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

// A condition such as: pop > 1e6 and (kind = 'city' or kind in (town, village)) and not name is null
//
// Comparisons are = == != <> < <= > >=, is null, is not null and in (…). Names of fields and values may be quoted: 'single' for
// values, "double" for fields. An unquoted number is compared as a number, also with texts
// that are numbers; everything else is compared as text, as it is spelled. A comparison with a missing value is false. `and`
// binds closer than `or`.
class Filter {
public:
    // what: names the condition in messages. Throws Map_Error with the column of the error.
    Filter(const std::string& what, const std::string& text);
    ~Filter();
    Filter(Filter&&) noexcept;
    Filter& operator=(Filter&&) noexcept;

    // The fields whose values `accepts` needs, each once.
    const std::vector<std::string>& fields() const noexcept { return fields_; }
    bool accepts(std::span<const Value> values) const;

    struct Node;

private:
    std::vector<std::string> fields_;
    std::unique_ptr<Node> root_;
};

} // namespace vorna::drawing::map
