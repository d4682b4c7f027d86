/// @file
/// How often a test of random input is repeated.
#pragma once

#include <cstdlib>

/// How many rounds a test of random input makes: on the guarded heap, where each block costs calls of the
/// system, the twelfth part of the usual.
inline int rounds(int usual) {
    return std::getenv("MARVO_GUARDED") ? usual / 12 : usual;
}
