#include "host/pictures/PictureFiles.h"

#include "host/base/SystemText.h"
#include "host/pictures/PictureFormat.h"

#include <algorithm>
#include <new>

namespace host {

struct FileFormat {
    const char *ending;
    bool holdsDepth[3]; // 8, 16, 32
    bool holdsColour;
    bool holdsAlpha;
    bool holdsProfile;
    bool (*write)(const Picture &picture, OutputFile *file, std::string *why);
};

static bool WritePpm(const Picture &picture, OutputFile *file, std::string *why) {
    return WriteNetpbm(picture, true, file, why);
}

static bool WritePgm(const Picture &picture, OutputFile *file, std::string *why) {
    return WriteNetpbm(picture, false, file, why);
}

static const FileFormat kFormats[] = {
    {"png", {true, true, false}, true, true, true, WritePng},
    {"jpg", {true, false, false}, true, false, true, WriteJpeg},
    {"jpeg", {true, false, false}, true, false, true, WriteJpeg},
    {"tif", {true, true, true}, true, true, true, WriteTiff},
    {"tiff", {true, true, true}, true, true, true, WriteTiff},
    {"bmp", {true, false, false}, true, false, false, WriteBmp},
    {"ppm", {true, true, false}, true, false, false, WritePpm},
    {"pgm", {true, true, false}, false, false, false, WritePgm},
    {"pfm", {false, false, true}, true, false, false, WritePfm},
};

static std::string EndingOf(const std::wstring &path) {
    const size_t dot = path.find_last_of(L"./\\");
    if (dot == std::wstring::npos || path[dot] != L'.')
        return {};
    std::string ending = ToUtf8(path.substr(dot + 1));
    for (char &c : ending)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return ending;
}

static const FileFormat *FindFormat(const std::wstring &path) {
    const std::string ending = EndingOf(path);
    const auto found = std::find_if(std::begin(kFormats), std::end(kFormats),
                                    [&](const FileFormat &format) { return ending == format.ending; });
    return found == std::end(kFormats) ? nullptr : found;
}

static int32_t DepthIndex(int32_t depth) {
    return depth == 8 ? 0 : depth == 16 ? 1 : 2;
}

bool CanHoldPicture(const std::wstring &path, const Picture &picture, std::string *why) {
    const FileFormat *format = FindFormat(path);
    static const char *const kDepthNames[] = {"8-bit", "16-bit", "32-bit float"};
    static const char *const kInstead[] = {"png, tif or ppm", "png, tif or ppm", "tif or pfm"};
    const int32_t depth = DepthIndex(picture.depth);
    if (!format)
        *why = "its ending is none of png, jpg, tif, bmp, ppm, pgm, pfm";
    else if (!format->holdsDepth[depth])
        *why = std::string("a .") + format->ending + " file cannot hold " + kDepthNames[depth] +
               " samples; use " + kInstead[depth];
    else if (!format->holdsColour && picture.colourPlanes == 3)
        *why = std::string("a .") + format->ending + " file cannot hold colour; use ppm, png or tif";
    else
        return true;
    return false;
}

std::vector<std::string> ListDropped(const std::wstring &path, const Picture &picture) {
    std::vector<std::string> dropped;
    const FileFormat *format = FindFormat(path);
    if (format && picture.hasAlpha && !format->holdsAlpha)
        dropped.push_back(std::string("the transparency is dropped: a .") + format->ending +
                          " file has no room for it");
    if (format && !picture.iccProfile.empty() && !format->holdsProfile)
        dropped.push_back(std::string("the colour profile is dropped: a .") + format->ending +
                          " file has no room for it");
    return dropped;
}

bool ReadPicture(const std::wstring &path, Picture *picture, std::string *why) {
    Bytes file;
    if (!ReadWholeFile(path, &file, why))
        return false;
    if (file.empty()) {
        *why = "the file is empty";
        return false;
    }
    try {
        if (IsNetpbm(file))
            return ReadNetpbm(file, picture, why);
        return IsPlainTiff(file) ? ReadPlainTiff(file, picture, why) : ReadWithCodecs(file, picture, why);
    } catch (const std::bad_alloc &) {
        *why = "not enough memory for the picture";
        return false;
    }
}

static bool WriteInto(const FileFormat &format, const Picture &picture,
                      const std::function<bool()> &isCancelled, OutputFile *file, std::string *why) {
    try {
        if (!format.write(picture, file, why))
            return false;
    } catch (const std::bad_alloc &) {
        *why = "not enough memory to write the picture";
        return false;
    }
    why->clear();
    return !isCancelled || !isCancelled();
}

bool WritePicture(const std::wstring &path, const Picture &picture, const std::function<bool()> &isCancelled,
                  std::string *why) {
    OutputFile file;
    if (!CanHoldPicture(path, picture, why) || !BeginOutput(path, &file, why))
        return false;
    if (!WriteInto(*FindFormat(path), picture, isCancelled, &file, why)) {
        DiscardOutput(&file);
        return false;
    }
    return CommitOutputFile(&file, why);
}

} // namespace host
