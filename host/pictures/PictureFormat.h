// The file formats of pictures, one reader or writer each. Shared by the host's own files; others use
// PictureFiles.h.
#pragma once

#include "host/base/FileBytes.h"
#include "host/pictures/Picture.h"

#include <string>

namespace host {

// Readers: false with a reason; *picture is then left alone. They throw std::bad_alloc.
bool IsNetpbm(const Bytes &file);
bool ReadNetpbm(const Bytes &file, Picture *picture, std::string *why);
bool IsPlainTiff(const Bytes &file);
bool ReadPlainTiff(const Bytes &file, Picture *picture, std::string *why);
bool ReadWithCodecs(const Bytes &file, Picture *picture, std::string *why);

// Writers into an open output file. The picture has a depth and planes that the format can hold; alpha is
// dropped by those without it.
bool WriteNetpbm(const Picture &picture, bool asColour, OutputFile *file, std::string *why); // PPM or PGM
bool WritePfm(const Picture &picture, OutputFile *file, std::string *why);
bool WriteTiff(const Picture &picture, OutputFile *file, std::string *why);
bool WriteBmp(const Picture &picture, OutputFile *file, std::string *why);
bool WritePng(const Picture &picture, OutputFile *file, std::string *why);
bool WriteJpeg(const Picture &picture, OutputFile *file, std::string *why);

// Turns a picture upright and gives it its colour profile, as its file says. `codecProfile` is what a codec
// found.
void ApplyMetadata(const Bytes &file, Bytes codecProfile, Picture *picture);

// Appends rows [first, end) of the planes [0, planes), interleaved, in the given byte order.
void InterleaveRows(const Picture &picture, size_t planes, int32_t first, int32_t end, ByteOrder order,
                    Bytes *rows);

// Rows that are converted in one go.
constexpr int32_t kRowsAtOnce = 64;

// Compressed data cannot become more than this many times its length, so a small file cannot claim a huge
// picture.
constexpr uint64_t kMostCompression = 4096;

} // namespace host
