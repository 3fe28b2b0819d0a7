// What the tests of the C interface share.
#pragma once

#include <string>

#include <gtest/gtest.h>

#include "vorna/vorna.h"

// The status must be VORNA_OK; else the message is shown.
#define EXPECT_OK(call) EXPECT_EQ(call, VORNA_OK) << vorna_last_message()

// The status and the message of a call that fails.
#define EXPECT_FAILS(call, status, message)                                                                                      \
    EXPECT_EQ(call, status);                                                                                                     \
    EXPECT_STREQ(vorna_last_message(), message)

inline vorna_canvas_settings c_settings(int32_t width, int32_t height) {
    vorna_canvas_settings settings;
    EXPECT_OK(vorna_canvas_settings_init(&settings, sizeof settings));
    settings.width = width;
    settings.height = height;
    return settings;
}
