// Which functions of the readers have been called.
#pragma once

// Functions are noted while it lives, in copies of this process too.
struct Reach_Notes {
    Reach_Notes() noexcept;
    Reach_Notes(const Reach_Notes&) = delete;
    Reach_Notes& operator=(const Reach_Notes&) = delete;
    ~Reach_Notes();

    // Their addresses, a line each, counted from the program's first byte.
    static void write(const char* file);
};
