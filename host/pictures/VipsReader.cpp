// JPEG, PNG, TIFF, WebP, AVIF and GIF, through the picture library.
#include "host/pictures/VipsReader.h"

#include "host/base/SystemText.h"
#include "host/metadata/ExifTree.h"
#include "host/metadata/PngGamma.h"
#include "host/metadata/TiffDirectory.h"
#include "host/pictures/TiffStrips.h"
#include "host/pictures/VipsLibrary.h"

#include <algorithm>
#include <cstring>

namespace host {

// Whether a profile belongs to pictures of so many colour planes.
static bool DoesProfileFit(const Bytes &profile, int32_t colourPlanes) {
    return profile.size() >= 128 &&
           std::memcmp(profile.data() + 16, colourPlanes == 3 ? "RGB " : "GRAY", 4) == 0;
}

constexpr int32_t kRowsAtOnce = 128;

// Compressed data of these kinds cannot become more pixels than this many times its length, so a small file
// cannot claim a huge picture.
constexpr uint64_t kMostCompression = uint64_t{8} * 1040; // of pixels of one bit, by Deflate at its best

using SourceHandle = std::unique_ptr<VipsSource, VipsRelease>;
using RegionHandle = std::unique_ptr<VipsRegion, VipsRelease>;

// One reading.
struct Reading {
    Bytes changed; // the file, where the library is to see another one
    SourceHandle source;
    ImageHandle image; // as in the file, then converted
    std::vector<std::string> notes;
};

static bool FailDamaged(std::string *why) {
    const std::string text = TakeVipsError();
    if (text.find("not configured") != std::string::npos)
        return Fail(why,
                    "its compression is not supported; save it with LZW, Deflate or none (" + text + ")");
    return Fail(why, "the file is damaged or ends early" + (text.empty() ? "" : " (" + text + ")"));
}

// The reader of the kind told, whatever the library would take the bytes for.
static bool OpenImage(const Bytes &read, PictureKind kind, int failOn, Reading *reading, std::string *why) {
    const Bytes &file = reading->changed.empty() ? read : reading->changed;
    const VipsLibrary &vips = Vips();
    const auto load = kind == PictureKind::kJpeg   ? vips.vips_jpegload_source
                      : kind == PictureKind::kPng  ? vips.vips_pngload_source
                      : kind == PictureKind::kTiff ? vips.vips_tiffload_source
                      : kind == PictureKind::kWebp ? vips.vips_webpload_source
                      : kind == PictureKind::kAvif ? vips.vips_heifload_source
                                                   : vips.vips_gifload_source;
    VipsImage *image = nullptr;
    reading->source.reset(vips.vips_source_new_from_memory(file.data(), file.size()));
    if (!reading->source)
        return Fail(why, "not enough memory");
    if (load(reading->source.get(), &image, "access", kVipsSequential, "fail_on", failOn, nullptr) != 0)
        return FailDamaged(why);
    reading->image.reset(image);
    return true;
}

static bool CheckSize(const Bytes &file, const PictureOrigin &origin, VipsImage *image, std::string *why) {
    const auto width = static_cast<uint64_t>(Vips().vips_image_get_width(image));
    const auto height = static_cast<uint64_t>(Vips().vips_image_get_height(image));
    if (!CheckPictureSize(width, height, why))
        return false;
    const bool mayBeTiny = origin.kind == PictureKind::kWebp || origin.kind == PictureKind::kAvif;
    return mayBeTiny || width * height / kMostCompression <= file.size() || Fail(why, "the file ends early");
}

// Puts the result of a conversion in the image's place.
static bool Take(int result, VipsImage *const *converted, Reading *reading, std::string *why) {
    if (result != 0)
        return Fail(why, "its colours cannot be converted (" + TakeVipsError() + ")");
    reading->image.reset(*converted);
    return true;
}

// The library opens no Lab samples of 8 bits, so they come as if they were RGB ones: lightness, and two
// signed numbers.
static bool ConvertLab8(Reading *reading, std::string *why) {
    static constexpr double kSigns[] = {0, 128, 128};
    static constexpr double kFactors[] = {100.0 / 255.0, 1, 1}, kOffsets[] = {0, -128, -128};
    const VipsLibrary &vips = Vips();
    VipsImage *next = nullptr;
    reading->notes.push_back("its Lab colours are converted to sRGB");
    return Take(vips.vips_boolean_const(reading->image.get(), &next, kVipsExclusiveOr, kSigns, 3, nullptr),
                &next, reading, why) &&
           Take(vips.vips_linear(reading->image.get(), &next, kFactors, kOffsets, 3, nullptr), &next, reading,
                why) &&
           Take(vips.vips_copy(reading->image.get(), &next, "interpretation", kVipsLab, nullptr), &next,
                reading, why) &&
           Take(vips.vips_colourspace(reading->image.get(), &next, kVipsSRgb, nullptr), &next, reading, why);
}

// Colours that are neither grey nor RGB, by the profile in the file where it has one.
static bool ConvertColours(Reading *reading, std::string *why) {
    VipsImage *image = reading->image.get(), *converted = nullptr;
    const bool isDeep = Vips().vips_image_get_format(image) != kVipsUChar;
    switch (Vips().vips_image_get_interpretation(image)) {
    case kVipsCmyk:
        reading->notes.push_back("its CMYK colours are converted to sRGB");
        return Take(Vips().vips_icc_transform(image, &converted, "srgb", "embedded", 1, "input_profile",
                                              "cmyk", "depth", isDeep ? 16 : 8, nullptr),
                    &converted, reading, why);
    case kVipsLab:
    case kVipsLabS:
    case kVipsLabQ:
        reading->notes.push_back("its Lab colours are converted to sRGB");
        return Take(Vips().vips_colourspace(image, &converted, isDeep ? kVipsRgb16 : kVipsSRgb, nullptr),
                    &converted, reading, why);
    default:
        return true;
    }
}

// To samples of 8 or 16 bits or floats.
static bool ConvertSamples(Reading *reading, std::string *why) {
    constexpr double kLargestUInt = 4294967295.0;
    VipsImage *image = reading->image.get(), *converted = nullptr;
    switch (Vips().vips_image_get_format(image)) {
    case kVipsUChar:
    case kVipsUShort:
    case kVipsFloat:
        return true;
    case kVipsDouble:
        reading->notes.push_back("its 64-bit samples are taken as 32-bit ones");
        return Take(Vips().vips_cast(image, &converted, kVipsFloat, nullptr), &converted, reading, why);
    case kVipsUInt:
        reading->notes.push_back("its 32-bit integer samples are taken as floating-point ones from 0 to 1");
        return Take(Vips().vips_linear1(image, &converted, 1.0 / kLargestUInt, 0.0, nullptr), &converted,
                    reading, why);
    default:
        return Fail(why, "its kind of samples (signed or complex numbers) is not supported");
    }
}

static bool CopySamples(VipsImage *image, size_t bands, Picture *picture, std::string *why) {
    const RegionHandle region(Vips().vips_region_new(image));
    if (!region)
        return Fail(why, "not enough memory");
    for (int32_t y = 0; y < picture->height; y += kRowsAtOnce) {
        const int32_t count = std::min(kRowsAtOnce, picture->height - y);
        size_t length = 0;
        unsigned char *rows = Vips().vips_region_fetch(region.get(), 0, y, picture->width, count, &length);
        if (!rows)
            return FailDamaged(why);
        AppendPixels(rows, bands, static_cast<size_t>(count) * static_cast<size_t>(picture->width), picture);
        Vips().g_free(rows);
    }
    return true;
}

static bool HasField(VipsImage *image, const char *name) {
    return Vips().vips_image_get_typeof(image, name) != 0;
}

// Takes back what decoding added to a palette: colour to grey ones, transparency that none makes use of.
static void TakeBackAdditions(Picture *picture) {
    if (AreColourPlanesEqual(*picture))
        CollapseToGrey(*picture);
    const Bytes &last = picture->planes.back();
    if (picture->hasAlpha &&
        std::all_of(last.begin(), last.end(), [](uint8_t byte) { return byte == 255; })) {
        picture->planes.pop_back();
        picture->hasAlpha = false;
    }
}

static void *CopyField(VipsImage *, const char *name, GValue *value, void *data) {
    static constexpr const char *kOwn[] = {"width",
                                           "height",
                                           "bands",
                                           "format",
                                           "coding",
                                           "interpretation",
                                           "xoffset",
                                           "yoffset",
                                           "xres",
                                           "yres",
                                           "filename",
                                           "icc-profile-data",
                                           "n-pages",
                                           "page-height",
                                           "palette",
                                           "bits-per-sample",
                                           "concurrency",
                                           "jpeg-multiscan",
                                           "jpeg-chroma-subsample",
                                           "interlaced",
                                           "background",
                                           "delay",
                                           "loop",
                                           "gif-palette",
                                           "heif-primary",
                                           "heif-compression",
                                           "heif-bitdepth",
                                           "n-subifds"};
    const auto isName = [name](const char *own) { return std::strcmp(name, own) == 0; };
    if (std::strncmp(name, "vips-", 5) != 0 && std::none_of(std::begin(kOwn), std::end(kOwn), isName))
        Vips().vips_image_set(static_cast<VipsImage *>(data), name, value);
    return nullptr;
}

// A PNG's text of that name.
static void *TakeComment(VipsImage *image, const char *name, GValue *, void *data) {
    const std::string_view field = name;
    const char *text = nullptr;
    if (field.starts_with("png-comment-") && field.ends_with("-Comment") &&
        Vips().vips_image_get_string(image, name, &text) == 0)
        static_cast<std::vector<Bytes> *>(data)->emplace_back(text, text + std::strlen(text));
    return nullptr;
}

// What the file says besides samples, on an image of one pixel, upright. Null when there is no memory.
static std::shared_ptr<VipsImage> TakeFields(VipsImage *image) {
    VipsImage *black = nullptr, *holder = nullptr;
    if (Vips().vips_black(&black, 1, 1, nullptr) != 0)
        return nullptr;
    const ImageHandle blackHandle(black);
    if (Vips().vips_copy(black, &holder, "xres", Vips().vips_image_get_xres(image), "yres",
                         Vips().vips_image_get_yres(image), nullptr) != 0)
        return nullptr;
    std::shared_ptr<VipsImage> fields(holder, VipsRelease());
    Vips().vips_image_map(image, CopyField, holder);
    if (HasField(holder, "orientation"))
        Vips().vips_image_set_int(holder, "orientation", 1);
    return fields;
}

// A TIFF's EXIF and IPTC data are spread over its own directories, which the library does not look into.
static void TakeTiffFields(const Bytes &file, VipsImage *fields) {
    const ExifTree tree = ReadExifTree(file);
    const Bytes block = MakeExifBlock(tree);
    if (!tree.iptc.empty())
        Vips().vips_image_set_blob_copy(fields, "iptc-data", tree.iptc.data(), tree.iptc.size());
    if (!block.empty())
        Vips().vips_image_set_blob_copy(fields, "exif-data", block.data(), block.size());
}

static void TakeOrigin(const Bytes &file, VipsImage *image, PictureOrigin *origin) {
    origin->frames = Vips().vips_image_get_n_pages(image);
    if (origin->frames > 1)
        origin->notes.push_back("it holds " + std::to_string(origin->frames) +
                                " pictures; the first one is taken");
    origin->fields = TakeFields(image);
    Vips().vips_image_map(image, TakeComment, &origin->comments);
    if (origin->fields && origin->kind == PictureKind::kTiff)
        TakeTiffFields(file, origin->fields.get());
}

static bool ReadOpened(const Bytes &file, Reading *reading, Picture *picture, PictureOrigin *origin,
                       std::string *why) {
    VipsImage *opened = reading->image.get();
    if (!CheckSize(file, *origin, opened, why))
        return false;
    const bool hasPalette = HasField(opened, "palette") || origin->kind == PictureKind::kGif;
    const int32_t orientation = Vips().vips_image_get_orientation(opened);
    TakeOrigin(file, opened, origin);
    if (!(origin->labPlace != 0 ? ConvertLab8(reading, why) : ConvertColours(reading, why)) ||
        !ConvertSamples(reading, why))
        return false;
    VipsImage *image = reading->image.get();
    const int bands = Vips().vips_image_get_bands(image);
    const int format = Vips().vips_image_get_format(image);
    const int colours = bands >= 3 ? 3 : 1;
    const bool hasAlpha = bands > colours;
    if (bands > colours + 1)
        reading->notes.push_back("its channels beyond the fourth are dropped");
    Picture read = MakeRoom(Vips().vips_image_get_width(image), Vips().vips_image_get_height(image),
                            format == kVipsUChar    ? 8
                            : format == kVipsUShort ? 16
                                                    : 32,
                            colours, hasAlpha);
    const bool isAsInFile = image == opened && origin->kind == PictureKind::kTiff && origin->labPlace == 0;
    if (!(isAsInFile && TakeTiffStrips(file, &read)) &&
        !CopySamples(image, static_cast<size_t>(bands), &read, why))
        return false;
    if (hasPalette && read.depth == 8)
        TakeBackAdditions(&read);
    ApplyOrientation(read, orientation);
    Bytes profile = BlobOf(image, "icc-profile-data");
    if (profile.empty() && origin->kind == PictureKind::kPng)
        profile = MakeGammaProfile(file, read.colourPlanes);
    if (DoesProfileFit(profile, read.colourPlanes))
        read.iccProfile = std::move(profile);
    origin->notes.insert(origin->notes.end(), reading->notes.begin(), reading->notes.end());
    *picture = std::move(read);
    return true;
}

static bool ReadOnce(const Bytes &file, int failOn, Picture *picture, PictureOrigin *origin,
                     std::string *why) {
    Reading reading;
    PictureOrigin told = *origin;
    if (told.labPlace != 0 && told.labPlace < file.size()) {
        reading.changed = file;
        reading.changed[told.labPlace] = kTiffRgb;
    }
    if (!OpenImage(file, told.kind, failOn, &reading, why) ||
        !ReadOpened(file, &reading, picture, &told, why))
        return false;
    *origin = std::move(told);
    return true;
}

bool ReadWithLibrary(const Bytes &file, bool isStrict, Picture *picture, PictureOrigin *origin,
                     std::string *why) {
    if (!LoadVips(why))
        return false;
    // A JPEG decoder calls damage a warning; a TIFF's decoder warns of every tag that it does not know.
    const bool isJpeg = origin->kind == PictureKind::kJpeg;
    const bool holdsJpeg = origin->kind == PictureKind::kTiff && origin->compression == kTiffJpeg;
    if (ReadOnce(file, isJpeg || holdsJpeg ? kVipsFailOnWarning : kVipsFailOnError, picture, origin, why))
        return true;
    const int lesser = isJpeg ? kVipsFailOnTruncated : kVipsFailOnError;
    if ((isJpeg && isStrict) || (!isJpeg && !holdsJpeg))
        return false;
    const std::string first = *why;
    if (!ReadOnce(file, lesser, picture, origin, why))
        return false;
    origin->notes.push_back(isJpeg ? "the file is damaged; parts of the picture are wrong"
                                   : "parts of the picture may be wrong: " + first);
    return true;
}

} // namespace host
