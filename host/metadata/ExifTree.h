// EXIF data as a tree of directories: taken out of a TIFF file, put into one, or made into the form that
// other kinds of files carry.
#pragma once

#include "host/base/ByteStream.h"

#include <cstdint>
#include <string>
#include <vector>

namespace host {

struct ExifEntry {
    uint16_t tag;
    uint16_t type;
    uint32_t count;
    Bytes value;              // in little-endian order
    bool isPlaced = false;    // the value is what stands in a directory, and its count
    uint64_t placedCount = 0; // is this one
};

struct ExifTree {
    std::vector<ExifEntry> picture; // of the first directory: camera, date, author, description
    std::vector<ExifEntry> exif;    // of the one behind tag 34665
    std::vector<ExifEntry> place;   // of the one behind tag 34853
    Bytes iptc;                     // bare; in TIFF files only

    bool IsEmpty() const { return picture.empty() && exif.empty() && place.empty() && iptc.empty(); }
};

// From a TIFF file (classic or with 64-bit offsets) or from an EXIF block ("Exif\0\0" in front or not). Tags
// that describe the samples, and what lies out of bounds, are left out.
ExifTree ReadExifTree(const Bytes &bytes);
// As an EXIF block, "Exif\0\0" in front, without IPTC data. Empty when there is nothing else.
Bytes MakeExifBlock(const ExifTree &tree);

// Adds the tree to the first directory of a finished TIFF file, a classic one of less than 4 GB. Tags that
// the file has already stay as they are. False with a reason.
bool AddExifToTiff(const std::wstring &path, const ExifTree &tree, std::string *why);

} // namespace host
