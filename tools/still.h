/// @file
/// What a still is made of a picture with two fields and oblong pixels.
#pragma once

#include "marvo/picture/picture.h"

namespace dvrec {

/// Keeps one field of the picture, that with the topmost line or the other: the lines between are made of
/// those above and below. A picture of fast motion has no combs then.
void keepField(dvPicture& picture, bool upper);

/// Makes the pixels square: the picture gets as wide as its height and its sides to show say.
void makeSquare(dvPicture& picture);

} // namespace dvrec
