#pragma once

#include <cstdlib>

// Whether the seeded fault of this number is to be at work in this process.
inline bool seededFault(int number) {
    static const int chosen = [] {
        const char *text = std::getenv("LUMO_SEEDED_FAULT");
        return text != nullptr ? std::atoi(text) : 0;
    }();
    return chosen == number;
}
