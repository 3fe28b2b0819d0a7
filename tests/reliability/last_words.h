// What a test was doing when the process comes to its end.
#pragma once

#include <string>

// Ends the wait for new words when a test that says some is over.
struct End_Of_Words {
    End_Of_Words() = default;
    End_Of_Words(const End_Of_Words&) = delete;
    End_Of_Words& operator=(const End_Of_Words&) = delete;
    ~End_Of_Words();
};

// Written to standard error when a signal or a sanitizer ends the process, or nothing is said anew for a minute.
void set_last_words(const std::string& text);
