#include "host/pictures/PictureFiles.h"

#include "host/base/SystemText.h"
#include "host/pictures/BmpFiles.h"
#include "host/pictures/NetpbmFiles.h"
#include "host/pictures/PictureKind.h"
#include "host/pictures/VipsLibrary.h"
#include "host/pictures/VipsReader.h"
#include "host/pictures/VipsWriter.h"

#include <algorithm>
#include <cstring>
#include <future>
#include <new>
#include <system_error>

namespace host {

// Metadata that a kind of file can hold.
enum MetadataKinds : unsigned { kExif = 1, kXmp = 2, kIptc = 4, kAllMetadata = 7 };

struct FileFormat {
    const char *ending;
    PictureKind kind;
    bool holdsDepth[3]; // 8, 16, 32
    bool holdsColour;
    bool holdsAlpha;
    bool holdsProfile;
    unsigned metadata;
    NetpbmForm form; // of kNetpbm
};

static constexpr NetpbmForm kNone = NetpbmForm::kAny;
static const FileFormat kFormats[] = {
    {"jpg", PictureKind::kJpeg, {true, false, false}, true, false, true, kAllMetadata, kNone},
    {"jpeg", PictureKind::kJpeg, {true, false, false}, true, false, true, kAllMetadata, kNone},
    {"png", PictureKind::kPng, {true, true, false}, true, true, true, kExif | kXmp, kNone},
    {"tif", PictureKind::kTiff, {true, true, true}, true, true, true, kAllMetadata, kNone},
    {"tiff", PictureKind::kTiff, {true, true, true}, true, true, true, kAllMetadata, kNone},
    {"webp", PictureKind::kWebp, {true, false, false}, true, true, true, kExif | kXmp, kNone},
    {"avif", PictureKind::kAvif, {true, true, false}, true, true, true, kExif | kXmp, kNone},
    {"gif", PictureKind::kGif, {true, false, false}, true, true, false, 0, kNone},
    {"bmp", PictureKind::kBmp, {true, false, false}, true, false, false, 0, kNone},
    {"ppm", PictureKind::kNetpbm, {true, true, false}, true, false, false, 0, NetpbmForm::kColour},
    {"pgm", PictureKind::kNetpbm, {true, true, false}, false, false, false, 0, NetpbmForm::kGrey},
    {"pam", PictureKind::kNetpbm, {true, true, false}, true, true, false, 0, NetpbmForm::kAny},
    {"pfm", PictureKind::kNetpbm, {false, false, true}, true, false, false, 0, NetpbmForm::kFloat},
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

static const FileFormat *FindFormat(const std::wstring &path, const std::string &format) {
    const std::string ending = format.empty() ? EndingOf(path) : format;
    const auto found = std::find_if(std::begin(kFormats), std::end(kFormats),
                                    [&](const FileFormat &format) { return ending == format.ending; });
    return found == std::end(kFormats) ? nullptr : found;
}

static int32_t DepthIndex(int32_t depth) {
    return depth == 8 ? 0 : depth == 16 ? 1 : 2;
}

const char *FindEnding(const std::string &ending) {
    const FileFormat *format = FindFormat(L"", ending);
    return format ? format->ending : nullptr;
}

// Each by one of its endings.
std::string ListFormats() {
    std::string list;
    for (const FileFormat &format : kFormats)
        if (std::strlen(format.ending) == 3 || format.kind == PictureKind::kWebp ||
            format.kind == PictureKind::kAvif)
            list += (list.empty() ? "" : ", ") + std::string(format.ending);
    return list;
}

const char *OwnFormat(const Picture &picture, PictureKind kind) {
    if (kind == PictureKind::kNetpbm)
        return picture.depth == 32         ? "pfm"
               : picture.hasAlpha          ? "pam"
               : picture.colourPlanes == 3 ? "ppm"
                                           : "pgm";
    const auto found = std::find_if(std::begin(kFormats), std::end(kFormats),
                                    [kind](const FileFormat &format) { return format.kind == kind; });
    return found == std::end(kFormats) ? "" : found->ending;
}

bool CanHoldPicture(const std::wstring &path, const Picture &picture, std::string *why,
                    const WriteOptions &options) {
    const FileFormat *format = FindFormat(path, options.format);
    static const char *const kDepthNames[] = {"8-bit", "16-bit", "32-bit float"};
    static const char *const kInstead[] = {"png, tif or ppm", "png, tif or ppm", "tif or pfm"};
    const int32_t depth = DepthIndex(picture.depth);
    if (!format)
        return Fail(why, "its ending is none of " + ListFormats());
    if (!format->holdsDepth[depth])
        return Fail(why, std::string("a .") + format->ending + " file cannot hold " + kDepthNames[depth] +
                             " samples; use " + kInstead[depth] + ", or --depth");
    if (format->kind == PictureKind::kTiff && options.compression == kVipsTiffJpeg && picture.depth != 8)
        return Fail(why, "JPEG compression in a .tif file holds 8-bit samples alone; use --depth 8");
    if (!format->holdsColour && picture.colourPlanes == 3)
        return Fail(why,
                    std::string("a .") + format->ending + " file cannot hold colour; use ppm, png or tif");
    return true;
}

static bool Says(const PictureOrigin &origin, const char *field) {
    return origin.fields && Vips().vips_image_get_typeof(origin.fields.get(), field) != 0;
}

// What was asked for and means nothing to the kind.
static void AddIgnored(const FileFormat &format, const WriteOptions &options,
                       std::vector<std::string> *dropped) {
    const PictureKind kind = format.kind;
    const bool isTiff = kind == PictureKind::kTiff, isJpeg = kind == PictureKind::kJpeg;
    const bool isAvif = kind == PictureKind::kAvif;
    const bool hasQuality = isJpeg || isAvif || kind == PictureKind::kWebp || isTiff;
    const auto ignore = [&](bool isIgnored, const char *option) {
        if (isIgnored)
            dropped->push_back(std::string(option) + " means nothing to a ." + format.ending + " file");
    };
    ignore(options.quality != 0 && !hasQuality, "--quality");
    ignore(options.compression != kVipsTiffAsInput && !isTiff, "--compression");
    ignore(options.subsampling != Subsampling::kAsInput && !isJpeg && !isAvif, "--subsampling");
}

std::vector<std::string> ListDropped(const std::wstring &path, const Picture &picture,
                                     const PictureOrigin &origin, const WriteOptions &options) {
    std::vector<std::string> dropped;
    const FileFormat *format = FindFormat(path, options.format);
    const auto drop = [&](bool isDropped, const char *what) {
        if (isDropped)
            dropped.push_back(std::string(what) + " dropped: a ." + format->ending +
                              " file has no room for it");
    };
    if (!format)
        return dropped;
    const bool keeps = options.metadata != MetadataChoice::kNone;
    drop(picture.hasAlpha && !format->holdsAlpha, "the transparency is");
    drop(!picture.iccProfile.empty() && !format->holdsProfile, "the colour profile is");
    drop(keeps && !(format->metadata & kExif) && Says(origin, "exif-data"), "the EXIF data is");
    drop(keeps && !(format->metadata & kXmp) && Says(origin, "xmp-data"), "the XMP data is");
    drop(keeps && !(format->metadata & kIptc) && Says(origin, "iptc-data"), "the IPTC data is");
    const bool isPng = format->kind == PictureKind::kPng;
    drop(keeps && !isPng && format->kind != PictureKind::kJpeg && !origin.comments.empty(), "the comment is");
    std::string keywords;
    for (const PngText &text : origin.texts)
        if (text.keyword != "Comment" && !text.keyword.starts_with("date:"))
            keywords += (keywords.empty() ? "" : ", ") + text.keyword;
    drop(keeps && !isPng && !keywords.empty(), ("the text (" + keywords + ") is").c_str());
    AddIgnored(*format, options, &dropped);
    if ((format->metadata & kXmp) && LosesXmpWithPlace(origin, options))
        dropped.push_back("the XMP data is dropped: it tells the GPS position");
    if (format->kind == PictureKind::kTiff && LosesCompression(origin, options, picture.depth))
        dropped.push_back("the compression of the photo's file cannot be written: the result has none");
    if (format->kind == PictureKind::kGif)
        dropped.push_back("the colours are reduced to 256: a .gif file has no room for more");
    if (format->kind == PictureKind::kAvif && picture.depth == 16)
        dropped.push_back("the samples are written with 12 bits: an .avif file has no room for 16");
    return dropped;
}

static bool ReadKind(const Bytes &file, bool isStrict, Picture *picture, PictureOrigin *origin,
                     std::string *why) {
    if (!TellPictureKind(file, origin, why))
        return false;
    if (origin->kind == PictureKind::kNetpbm)
        return ReadNetpbm(file, picture, why);
    if (origin->kind == PictureKind::kBmp)
        return ReadBmp(file, picture, why);
    return ReadWithLibrary(file, isStrict, picture, origin, why);
}

// The library is loaded in the meantime when the file looks like one for it. Whether that went well is asked
// again where the library is needed.
static bool ReadWhileLoading(const std::wstring &path, Bytes *file, std::string *why) {
    const FileFormat *format = FindFormat(path, "");
    std::string notYet;
    if (!format || format->kind == PictureKind::kNetpbm || format->kind == PictureKind::kBmp)
        return ReadWholeFile(path, file, why);
    std::future<bool> reading;
    try {
        reading = std::async(std::launch::async, ReadWholeFile, path, file, why);
    } catch (const std::system_error &) { // no thread to be had
        return ReadWholeFile(path, file, why);
    }
    LoadVips(&notYet);
    return reading.get();
}

bool ReadPicture(const std::wstring &path, Picture *picture, std::string *why, PictureOrigin *origin,
                 bool isStrict) {
    Bytes file;
    return ReadWhileLoading(path, &file, why) && ReadPictureBytes(file, picture, why, origin, isStrict);
}

bool ReadPictureBytes(const Bytes &file, Picture *picture, std::string *why, PictureOrigin *origin,
                      bool isStrict) {
    PictureOrigin told;
    try {
        if (!ReadKind(file, isStrict, picture, &told, why))
            return false;
    } catch (const std::bad_alloc &) {
        return Fail(why, "not enough memory for the picture");
    }
    if (origin)
        *origin = std::move(told);
    return true;
}

static bool WriteInto(const FileFormat &format, const Picture &picture, const PictureOrigin &origin,
                      const WriteOptions &options, const std::function<bool()> &isCancelled, OutputFile *file,
                      std::string *why) {
    if (format.kind == PictureKind::kNetpbm)
        return WriteNetpbm(format.form, picture, file, why);
    if (format.kind == PictureKind::kBmp)
        return WriteBmp(picture, file, why);
    return WriteWithLibrary(format.kind, picture, origin, options, isCancelled, file, why);
}

static bool WriteGuarded(const FileFormat &format, const Picture &picture, const PictureOrigin &origin,
                         const WriteOptions &options, const std::function<bool()> &isCancelled,
                         OutputFile *file, std::string *why) {
    try {
        if (!WriteInto(format, picture, origin, options, isCancelled, file, why))
            return false;
    } catch (const std::bad_alloc &) {
        return Fail(why, "not enough memory to write the picture");
    }
    why->clear();
    return !isCancelled || !isCancelled();
}

bool WritePicture(const std::wstring &path, const Picture &picture, const std::function<bool()> &isCancelled,
                  std::string *why, const PictureOrigin &origin, const WriteOptions &options) {
    OutputFile file;
    if (!CanHoldPicture(path, picture, why, options) || !BeginOutput(path, &file, why))
        return false;
    if (!WriteGuarded(*FindFormat(path, options.format), picture, origin, options, isCancelled, &file, why)) {
        DiscardOutput(&file);
        return false;
    }
    return CommitOutputFile(&file, why);
}

} // namespace host
