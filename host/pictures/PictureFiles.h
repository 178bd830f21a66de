// Reading and writing picture files of any known format.
#pragma once

#include "host/pictures/Picture.h"

#include <functional>
#include <string>
#include <vector>

namespace host {

// The format is told by the file's first bytes. PNG, JPEG, TIFF and BMP through the system's codecs; PPM,
// PGM, PFM. A picture that its file says to turn is turned upright. False with a reason.
bool ReadPicture(const std::wstring &path, Picture *picture, std::string *why);

// Whether the path's ending names a format that can hold the picture's samples. False with a reason.
bool CanHoldPicture(const std::wstring &path, const Picture &picture, std::string *why);
// What the format drops all the same (transparency, colour profile), a sentence each.
std::vector<std::string> ListDropped(const std::wstring &path, const Picture &picture);

// Writes by the ending: png, jpg, jpeg, tif, tiff, bmp, ppm, pgm, pfm. The file appears under its name only
// when it is complete, and not at all when isCancelled (may be empty) says so before. False with a reason;
// empty when cancelled.
bool WritePicture(const std::wstring &path, const Picture &picture, const std::function<bool()> &isCancelled,
                  std::string *why);

} // namespace host
