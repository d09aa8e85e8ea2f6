#pragma once

#include <cstdlib>

// Ends the program where a promise is broken, in every kind of build; the fuzzer keeps the input that did it.
inline void require(bool promise) {
    if (!promise)
        std::abort();
}
