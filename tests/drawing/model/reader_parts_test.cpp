// What the model readers are made of: numbers, tables of shared vertices, memory.
#include <bit>
#include <charconv>
#include <cmath>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

#include "drawing/files/memory_allowance.h"
#include "drawing/model/text_cursor.h"
#include "drawing/model/tuple_table.h"

namespace vorna::drawing::model {
namespace {

// The library's function is right for every text.
TEST(Text_Cursor, reads_the_nearest_float_of_every_decimal_number) {
    std::mt19937_64 random(5);
    const auto digits = [&](std::size_t most) {
        std::string text;
        for (std::size_t i = random() % (most + 1); i > 0; --i) {
            text += static_cast<char>('0' + random() % 10);
        }
        return text;
    };
    const std::string file = "m";
    for (int round = 0; round < 300000; ++round) {
        std::string text = (random() % 2 ? "-" : "") + digits(12) + (random() % 4 ? "." : "") + digits(12);
        if (random() % 2) {
            // A float, the middle between it and the next one, or a place beside the middle.
            const float one = std::bit_cast<float>(static_cast<std::uint32_t>(0x30000000 + random() % 0x20000000));
            const double middle = (static_cast<double>(one) + std::nextafter(one, 1e30F)) / 2;
            std::ostringstream stream;
            stream.precision(static_cast<int>(7 + random() % 14));
            stream << (random() % 2 ? middle : static_cast<double>(one));
            text = stream.str();
        } else if (random() % 4 == 0) {
            text += (random() % 2 ? "e" : "E") + std::string(random() % 3 ? random() % 2 ? "-" : "+" : "") + digits(2);
        }
        float expected = 0, found = 0;
        const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), expected);
        if (error != std::errc{}) {
            continue;
        }
        Text_Cursor cursor(file, text);
        found = cursor.number("a number");
        ASSERT_EQ(std::bit_cast<std::uint32_t>(found), std::bit_cast<std::uint32_t>(expected)) << text;
        ASSERT_EQ(cursor.place(), stop) << text;
    }
}

TEST(Tuple_Table, numbers_blocks_as_it_numbers_single_tuples) {
    std::mt19937 random(9);
    Triple_Table one_by_one, in_blocks;
    std::vector<std::uint32_t> expected, found;
    for (int round = 0; round < 50; ++round) {
        std::vector<Triple_Table::Tuple> tuples(random() % 200);
        for (Triple_Table::Tuple& tuple : tuples) {
            tuple = {static_cast<std::uint32_t>(random() % 40), static_cast<std::uint32_t>(random() % 30), 7};
            expected.push_back(one_by_one.index_of(tuple));
        }
        in_blocks.append_indices(tuples, found);
        ASSERT_EQ(found, expected);
    }
    EXPECT_EQ(in_blocks.keys(), one_by_one.keys());
}

TEST(Memory_Allowance, takes_no_more_than_the_limits_allow) {
    const std::string file = "m";
    Load_Limits limits(1000);
    Memory_Allowance allowance(limits, file);
    for (int i = 0; i < 100; ++i) {
        allowance.take(10);
    }
    EXPECT_EQ(limits.memory_left(), 0U);
    EXPECT_THROW(allowance.take(1), Load_Error);
}

} // namespace
} // namespace vorna::drawing::model
