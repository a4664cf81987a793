#pragma once

#include <cstdlib>

// What must hold, or the input is a finding.
inline void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}
