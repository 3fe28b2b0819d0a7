// How the documents of two recordings differ.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "drawing/recording/recording.h"

namespace vorna::drawing::recording {

// A value that differs: its path from the document or the call, and both values in short.
struct Value_Difference {
    std::string path;
    std::string first, second;
};

struct Document_Difference {
    // A call, and the first value in which it differs from the other recording's call of the same number.
    struct Of_Call {
        std::size_t call = 0;
        Value_Difference value; // its path is `call` for calls of different kinds, and where the other recording has no such call
    };

    std::vector<Value_Difference> setup; // before the calls: all values that differ
    std::optional<Of_Call> call;         // the first call that differs
    // Of each call that one of both has, whether it differs.
    std::vector<bool> differing;
};

// Recordings are compared as they were read: forms, compression, compact lists, and whether renditions are shared make no
// difference. A key that is given differs from one that is left out.
Document_Difference compare_documents(const Recording& a, const Recording& b);

} // namespace vorna::drawing::recording
