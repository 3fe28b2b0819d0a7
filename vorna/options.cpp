// Option tables.
#include "host/options.h"

#include <algorithm>
#include <utility>

VT_Option_Table::VT_Option_Table(const VT_Option_Table& other) {
    options_.reserve(other.options_.size());
    for (const auto& option : other.options_) {
        options_.push_back(std::make_unique<VT_Option>(*option));
    }
}

VT_Option* VT_Option_Table::add(VT_Option option) {
    if (VT_Option* present = find(option.name())) {
        *present = std::move(option);
        return present;
    }
    options_.push_back(std::make_unique<VT_Option>(std::move(option)));
    return options_.back().get();
}

VT_Option* VT_Option_Table::find(const VT_String& name) noexcept {
    return const_cast<VT_Option*>(std::as_const(*this).find(name));
}

const VT_Option* VT_Option_Table::find(const VT_String& name) const noexcept {
    const auto found =
        std::find_if(options_.begin(), options_.end(), [&name](const auto& option) { return option->name() == name; });
    return found == options_.end() ? nullptr : found->get();
}
