/// @file
/// How a function of the flat interface ends that cannot do what it should.
#pragma once

#include <string>

namespace flat {

/// Thrown within a function, and turned into its result and the thread's last error by `guarded`.
struct Failure {
    int code;         ///< `marvo_result`
    std::string text; ///< the sentence, UTF-8
};

/// Throws one.
[[noreturn]] inline void fail(int code, std::string text) {
    throw Failure{code, std::move(text)};
}

} // namespace flat
