// Thresholds and stock patterns against the model's, which counts them out by their rules.
#include <gtest/gtest.h>

#include "host/object.h"
#include "tests/support/model/model.h"

TEST(Shared_Data, Thresholds_And_Stock_Patterns_Follow_Their_Rules) {
    for (std::int32_t b = 0; b < 8; ++b) {
        for (std::int32_t a = 0; a < 8; ++a) {
            EXPECT_EQ(SHARED.thresholds[a + 8 * b], model::threshold(static_cast<std::uintptr_t>(a), b));
            VT_Face_Attributes face;
            for (face.pattern = 0; face.pattern < vorna::face_pattern::bitmap; ++face.pattern) {
                EXPECT_EQ(SHARED.stock_patterns[face.pattern][b] >> (7 - a) & 1, model::is_pattern_set(face, a, b))
                    << "pattern " << face.pattern << " cell " << a << ", " << b;
            }
        }
    }
}
