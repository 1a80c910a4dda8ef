// What the start of a C++ program costs: it does nothing, but needs the C++ library.

#include <iostream>

int main() {
    return std::cout.good() ? 0 : 1;
}
