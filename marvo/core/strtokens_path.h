/// @file
/// Splitting a path into its components.
#pragma once

#include "marvo/core/strtokens.h"

namespace vcore {

/// The pieces of a path between "\\" and "/". Empty pieces are kept (a//b has three), except behind a
/// trailing separator.
class MARVO_API strtokens_path : public strtokens {
public:
    strtokens_path() = default;
    /// The tokens of `text`.
    strtokens_path(const str& text) { splitStr(text); }
    /// A copy of the views.
    strtokens_path(const strtokens_path&) = default;
    /// Takes over a copy of the views.
    strtokens_path& operator=(const strtokens_path&) = default;

    int splitStr(const str& text) override;
    int splitStr(str& text) override;
};

} // namespace vcore
