/// @file
/// Pictures as files.
#pragma once

#include "marvo/picture/picture.h"

#include <string>

namespace dvrec {

/// Whether pictures are written to files with this name's extension: .bmp, .png, .jpg or .jpeg.
bool isImageName(const std::wstring& name);

/// Writes the picture to the file `path`, in the format that the extension of `name` stands for, by the
/// system's imaging component. False, with the reason in `fault`, when that is not possible. COM must be
/// initialised.
bool saveImage(const dvPicture& picture, const std::wstring& name, const std::wstring& path,
               std::string& fault);

} // namespace dvrec
