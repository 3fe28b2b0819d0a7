// Breaks down.
int main() {
    volatile int* volatile nowhere = nullptr;
    *nowhere = 1;
    return 0;
}
