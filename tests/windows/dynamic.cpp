// Needs the compiler's own run-time library.
#include <iostream>

int main() {
    std::cout << "nothing\n";
}
