// What a test was doing when the process comes to its end.
#pragma once

#include <string>

// Written to standard error when a signal or a sanitizer ends the process, or nothing is said anew for a minute.
void set_last_words(const std::string& text);
