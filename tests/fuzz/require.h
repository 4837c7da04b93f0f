#pragma once

#include <cstdio>
#include <cstdlib>

/// What must hold for every input; the fuzzer keeps an input for which it does not. In every build type.
inline void require(bool holds, const char *what = "something that always does")
{
    if (holds)
        return;
    fprintf(stderr, "does not hold: %s\n", what);
    abort();
}
