// Shared objects, and options with copy-on-write values.
#include <gtest/gtest.h>

#include "host/options.h"
#include "host/renderer_data.h"

namespace {

struct Counted_Thing final : VT_Counted {
    explicit Counted_Thing(int* alive) : alive_(alive) { ++*alive_; }
    Counted_Thing(const Counted_Thing& other) : VT_Counted(other), value(other.value), alive_(other.alive_) { ++*alive_; }
    ~Counted_Thing() override { --*alive_; }
    VT_Counted* clone() const override { return new Counted_Thing(*this); }

    int value = 0;

private:
    int* alive_;
};

TEST(Counted, Make_Unique_Clones_What_Others_Hold_And_Stamps_What_Nobody_Else_Does) {
    int alive = 0;
    {
        VT_Reference<Counted_Thing> held(new Counted_Thing(&alive));
        const std::uint32_t serial = held->serial();
        Counted_Thing* const original = held.get();
        vorna::make_unique(held).value = 1;
        EXPECT_EQ(held.get(), original);
        EXPECT_NE(held->serial(), serial);

        const VT_Reference<Counted_Thing> other = held;
        EXPECT_EQ(held->reference_count(), 2U);
        vorna::make_unique(held).value = 2;
        EXPECT_NE(held.get(), other.get());
        EXPECT_NE(held->serial(), other->serial());
        EXPECT_EQ(other->value, 1);
        EXPECT_EQ(held->reference_count(), 1U);
        EXPECT_EQ(other->reference_count(), 1U);
        EXPECT_EQ(alive, 2);
    }
    EXPECT_EQ(alive, 0);
}

TEST(Option, Writing_Leaves_Shared_Values_Alone) {
    VT_Option option("Width", 0, 3);
    VT_Option sharing("Width", 0, 0);
    sharing.set_value(option.value());
    option.set(4);
    EXPECT_EQ(option.as_int(), 4);
    EXPECT_EQ(sharing.as_int(), 3);
    EXPECT_FALSE(option.as_bool()) << "an option of another kind reads as a neutral value";
}

TEST(Option_Table, Handles_Survive_Growth_And_Replacement) {
    VT_Option_Table table;
    VT_Option* const first = table.add({"First", 0, 1});
    for (int i = 0; i < 100; ++i) {
        table.add({"Number " + std::to_string(i), 0, i});
    }
    EXPECT_EQ(table.add({"First", 1, 7}), first);
    EXPECT_EQ(table.size(), 101U);
    EXPECT_EQ(table.find("First")->as_int(), 7);
    EXPECT_EQ(first->scope(), 1);
    EXPECT_EQ(table[57].name(), "Number 56");
    EXPECT_EQ(table.find("Last"), nullptr);

    const VT_Option_Table copy = table;
    first->set(8);
    EXPECT_EQ(copy.find("First")->as_int(), 7);
    EXPECT_NE(copy.find("First"), first);
}

TEST(Option_Table, Only_Changes_Are_Carried_Over_And_Only_Once) {
    VT_Renderer_Data renderer;
    VT_Option* const requested = renderer.requested_table.add({"Width", 2, 1});
    VT_Option* const current = renderer.current_table.add({"Width", 2, 5});
    renderer.requested_table.add({"New", 0, true});

    renderer.update_current_options();
    EXPECT_EQ(current->as_int(), 5) << "the default of a requested option is no request";
    ASSERT_NE(renderer.current_table.find("New"), nullptr);
    EXPECT_TRUE(renderer.current_table.find("New")->as_bool());

    requested->set(2);
    renderer.update_current_options();
    EXPECT_EQ(current->as_int(), 2);
    EXPECT_EQ(current->value(), requested->value());

    current->set(9);
    renderer.update_current_options();
    EXPECT_EQ(current->as_int(), 9) << "what has been carried over once does not come again";
    EXPECT_EQ(requested->as_int(), 2);

    requested->set_value(VT_Reference<VT_Option_Value>(new VT_Option_Value(3)));
    renderer.update_current_options();
    EXPECT_EQ(current->as_int(), 3);
}

TEST(Option_Table, A_Renderer_Made_From_A_Prototype_Carries_What_The_Prototype_Had_Not) {
    VT_Renderer_Data prototype;
    prototype.current_table.add({"Width", 0, 1});
    prototype.requested_table.add({"Width", 0, 1})->set(2);
    VT_Renderer_Data renderer(prototype);
    renderer.update_current_options();
    EXPECT_EQ(renderer.current_table.find("Width")->as_int(), 2);
    EXPECT_EQ(prototype.current_table.find("Width")->as_int(), 1);
}

} // namespace
