// Reading and writing picture files of any known kind.
#pragma once

#include "host/pictures/Picture.h"
#include "host/pictures/PictureKind.h"

#include <functional>
#include <string>
#include <vector>

namespace host {

// The kind is told by the file's content: JPEG, PNG, TIFF, WebP, AVIF, GIF (its first frame), BMP, PPM, PGM,
// PAM, PFM. A picture that its file says to turn is turned upright; CMYK and Lab colours become sRGB ones.
// False with a reason for anything else, and for damaged files; only without `isStrict` a JPEG with a damaged
// middle is taken, with a note. *origin may be null.
bool ReadPictureBytes(const Bytes &file, Picture *picture, std::string *why, PictureOrigin *origin,
                      bool isStrict);
bool ReadPicture(const std::wstring &path, Picture *picture, std::string *why,
                 PictureOrigin *origin = nullptr, bool isStrict = true);

// Endings that can be written, and what their kinds can hold of the picture. False with a reason.
bool CanHoldPicture(const std::wstring &path, const Picture &picture, std::string *why,
                    const WriteOptions &options = {});
// The ending as the options take it; null when no such kind can be written.
const char *FindEnding(const std::string &ending);
std::string ListFormats();
// The ending of the kind that a picture came in.
const char *OwnFormat(const Picture &picture, PictureKind kind);
// What the kind drops all the same (transparency, colour profile, metadata), a sentence each.
std::vector<std::string> ListDropped(const std::wstring &path, const Picture &picture,
                                     const PictureOrigin &origin, const WriteOptions &options);

// Writes by the ending. The file appears under its name only when it is complete, and not at all when
// isCancelled (may be empty) says so before. False with a reason; empty when cancelled.
bool WritePicture(const std::wstring &path, const Picture &picture, const std::function<bool()> &isCancelled,
                  std::string *why, const PictureOrigin &origin = {}, const WriteOptions &options = {});

} // namespace host
