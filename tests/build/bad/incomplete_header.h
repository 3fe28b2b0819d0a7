// A header that does not include what it uses.
#pragma once

inline std::string name_of_nothing() {
    return {};
}
