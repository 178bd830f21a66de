// JPEG, PNG, TIFF, WebP, AVIF and GIF, through the picture library.
#include "host/pictures/VipsWriter.h"

#include "host/base/SystemText.h"
#include "host/metadata/ExifTree.h"
#include "host/metadata/IptcBlock.h"
#include "host/metadata/JpegSegments.h"
#include "host/metadata/TiffDirectory.h"
#include "host/pictures/VipsLibrary.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string>
#include <vector>

namespace host {

constexpr int kThumbnailSide = 160; // what cameras write
constexpr int kThumbnailQuality = 80;
constexpr int kAllPngFilters = 0xF8;
constexpr int kHeifAv1 = 4;
constexpr int kKeepEverything = 0x3F, kKeepAllButExif = 0x3E;
constexpr int32_t kWebpQuality = 95, kAvifQuality = 80, kTiffJpegQuality = 95;
constexpr int64_t kBigTiffBytes = int64_t{4000} << 20; // classic TIFFs end at 4 GB

static bool FailWriting(std::string *why) {
    return Fail(why, "the picture library failed (" + TakeVipsError() + ")");
}

// The planes as one image that reads them where they are.
static ImageHandle JoinPlanes(const Picture &picture) {
    static constexpr VipsMeaning kMeanings[3][2] = {
        {kVipsGrey, kVipsSRgb}, {kVipsGrey16, kVipsRgb16}, {kVipsGrey, kVipsSRgb}};
    const int index = picture.depth == 8 ? 0 : picture.depth == 16 ? 1 : 2;
    const int samples = index == 0 ? kVipsUChar : index == 1 ? kVipsUShort : kVipsFloat;
    ImageHandle planes[4];
    VipsImage *list[4] = {};
    int count = 0;
    for (const Bytes &plane : picture.planes) {
        planes[count].reset(Vips().vips_image_new_from_memory(plane.data(), plane.size(), picture.width,
                                                              picture.height, 1, samples));
        list[count] = planes[count].get();
        if (!list[count++])
            return nullptr;
    }
    VipsImage *joined = nullptr, *meant = nullptr;
    if (Vips().vips_bandjoin(list, &joined, count, nullptr) != 0)
        return nullptr;
    const ImageHandle holder(joined);
    const VipsMeaning meaning = kMeanings[index][picture.colourPlanes == 3];
    return Vips().vips_copy(joined, &meant, "interpretation", meaning, nullptr) == 0 ? ImageHandle(meant)
                                                                                     : nullptr;
}

// Without EXIF data of its own a picture is given none: the library would make some up.
static int Keep(VipsImage *image) {
    return Vips().vips_image_get_typeof(image, "exif-data") != 0 ? kKeepEverything : kKeepAllButExif;
}

static bool StartsWith(const char *name, const char *start) {
    return std::strncmp(name, start, std::strlen(start)) == 0;
}

struct FieldCopy {
    VipsImage *to;
    MetadataChoice choice;
};

// The camera's place stands in the EXIF data; XMP can repeat it anywhere.
static bool MayTellPlace(VipsImage *image, const char *name) {
    if (StartsWith(name, "exif-"))
        return true;
    if (std::strcmp(name, "xmp-data") != 0)
        return false;
    const void *data = nullptr;
    size_t length = 0;
    if (Vips().vips_image_get_blob(image, name, &data, &length) != 0)
        return true;
    std::string text(static_cast<const char *>(data), length);
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text.find("GPS") != std::string::npos;
}

bool LosesXmpWithPlace(const PictureOrigin &origin, const WriteOptions &options) {
    return options.metadata == MetadataChoice::kNoPlace && origin.fields &&
           Vips().vips_image_get_typeof(origin.fields.get(), "xmp-data") != 0 &&
           MayTellPlace(origin.fields.get(), "xmp-data");
}

// Whether a field describes the samples; those are every image's own.
static bool IsOfSamples(const char *name) {
    static constexpr const char *kOfSamples[] = {"width",  "height",         "bands",   "format",
                                                 "coding", "interpretation", "xoffset", "yoffset",
                                                 "xres",   "yres",           "filename"};
    return std::any_of(std::begin(kOfSamples), std::end(kOfSamples),
                       [name](const char *own) { return std::strcmp(name, own) == 0; });
}

static void *PutField(VipsImage *from, const char *name, GValue *value, void *data) {
    const auto *copy = static_cast<const FieldCopy *>(data);
    if (IsOfSamples(name) || StartsWith(name, "png-comment-")) // those are written by their chunks
        return nullptr;
    if (copy->choice == MetadataChoice::kKeep || !MayTellPlace(from, name))
        Vips().vips_image_set(copy->to, name, value);
    return nullptr;
}

// A small picture for file managers, of the stars too.
static void RenewThumbnail(VipsImage *image) {
    if (Vips().vips_image_get_typeof(image, "jpeg-thumbnail-data") == 0)
        return;
    Vips().vips_image_remove(image, "jpeg-thumbnail-data");
    VipsImage *small = nullptr;
    void *bytes = nullptr;
    size_t length = 0;
    if (Vips().vips_thumbnail_image(image, &small, kThumbnailSide, nullptr) == 0) {
        const ImageHandle holder(small);
        if (Vips().vips_jpegsave_buffer(small, &bytes, &length, "Q", kThumbnailQuality, "keep", 0, nullptr) ==
            0)
            Vips().vips_image_set_blob_copy(image, "jpeg-thumbnail-data", bytes, length);
        Vips().g_free(bytes);
    }
    Vips().vips_error_clear(); // without a thumbnail the picture is whole all the same
}

// IPTC data stand in a wrapper of their own in a JPEG. A TIFF gets them with its EXIF data.
static void SetIptcForm(VipsImage *image, PictureKind kind) {
    const Bytes block = WrapIptc(BlobOf(image, "iptc-data"));
    if (kind == PictureKind::kTiff)
        Vips().vips_image_remove(image, "iptc-data");
    else if (!block.empty())
        Vips().vips_image_set_blob_copy(image, "iptc-data", block.data(), block.size());
}

// The EXIF data without the place. The library takes its fields from the block, so the block is the one to
// change.
static void PutPlacelessExif(VipsImage *fields, VipsImage *image) {
    ExifTree tree = ReadExifTree(BlobOf(fields, "exif-data"));
    tree.place.clear();
    const Bytes block = MakeExifBlock(tree);
    if (!block.empty())
        Vips().vips_image_set_blob_copy(image, "exif-data", block.data(), block.size());
}

// The image to write, with all that the file is to say.
static ImageHandle MakeImage(PictureKind kind, const Picture &picture, const PictureOrigin &origin,
                             const WriteOptions &options) {
    ImageHandle image = JoinPlanes(picture);
    if (!image)
        return nullptr;
    if (origin.fields && options.metadata != MetadataChoice::kNone) {
        VipsImage *resolved = nullptr;
        VipsImage *fields = origin.fields.get();
        if (Vips().vips_copy(image.get(), &resolved, "xres", Vips().vips_image_get_xres(fields), "yres",
                             Vips().vips_image_get_yres(fields), nullptr) != 0)
            return nullptr;
        image.reset(resolved);
        FieldCopy copy{resolved, options.metadata};
        Vips().vips_image_map(fields, PutField, &copy);
        if (options.metadata == MetadataChoice::kNoPlace)
            PutPlacelessExif(fields, resolved);
        RenewThumbnail(resolved);
        SetIptcForm(resolved, kind);
    }
    if (!picture.iccProfile.empty())
        Vips().vips_image_set_blob_copy(image.get(), "icc-profile-data", picture.iccProfile.data(),
                                        picture.iccProfile.size());
    return image;
}

// Stops the library's work when the user has cancelled.
static void OnProgress(VipsImage *image, void *, void *data) {
    const auto &isCancelled = *static_cast<const std::function<bool()> *>(data);
    if (isCancelled())
        Vips().vips_image_set_kill(image, 1);
}

static void WatchForCancel(VipsImage *image, const std::function<bool()> &isCancelled) {
    if (!isCancelled)
        return;
    Vips().vips_image_set_progress(image, 1);
    Vips().g_signal_connect_data(image, "eval", reinterpret_cast<void (*)()>(OnProgress),
                                 const_cast<std::function<bool()> *>(&isCancelled), nullptr, 0);
}

int32_t JpegQuality(const PictureOrigin &origin, const WriteOptions &options) {
    if (options.quality != 0)
        return options.quality;
    return origin.kind == PictureKind::kJpeg && origin.quality != 0 ? origin.quality : kDefaultJpegQuality;
}

// A coded picture in the library's memory.
struct Coded {
    void *bytes = nullptr;
    size_t length = 0;

    ~Coded() { Vips().g_free(bytes); }
};

// In memory, so that the comments can be put in.
static bool SaveJpeg(VipsImage *image, const PictureOrigin &origin, const WriteOptions &options,
                     OutputFile *file, std::string *why) {
    const bool halves = options.subsampling == Subsampling::kAsInput
                            ? origin.kind == PictureKind::kJpeg && origin.halvesColour
                            : options.subsampling == Subsampling::k420;
    Coded coded;
    if (Vips().vips_jpegsave_buffer(image, &coded.bytes, &coded.length, "Q", JpegQuality(origin, options),
                                    "subsample_mode", halves ? kVipsSubsampleOn : kVipsSubsampleOff,
                                    "optimize_coding", 1, "keep", Keep(image), nullptr) != 0)
        return FailWriting(why);
    const auto *jpeg = static_cast<const uint8_t *>(coded.bytes);
    const bool keeps = options.metadata != MetadataChoice::kNone;
    const Bytes comments = MakeJpegComments(keeps ? origin.comments : std::vector<Bytes>());
    const size_t place = JpegCommentPlace(jpeg, coded.length);
    return AppendOutput(file, jpeg, place, why) &&
           AppendOutput(file, comments.data(), comments.size(), why) &&
           AppendOutput(file, jpeg + place, coded.length - place, why);
}

// Of the tag's numbers those that the library writes.
static int TiffCompression(uint32_t tag) {
    switch (tag) {
    case 5:
        return kVipsTiffLzw;
    case 7:
        return kVipsTiffJpeg;
    case 8:
    case 32946: // an older number of the same
        return kVipsTiffDeflate;
    case 32773:
        return kVipsTiffPackBits;
    default:
        return kVipsTiffNone;
    }
}

static int TiffCompressionFor(const PictureOrigin &origin, const WriteOptions &options, int32_t depth) {
    if (options.compression != kVipsTiffAsInput)
        return options.compression;
    const int own = origin.kind == PictureKind::kTiff ? TiffCompression(origin.compression) : kVipsTiffNone;
    return own == kVipsTiffJpeg && depth != 8 ? static_cast<int>(kVipsTiffNone) : own;
}

bool LosesCompression(const PictureOrigin &origin, const WriteOptions &options, int32_t depth) {
    return origin.kind == PictureKind::kTiff && origin.compression != kTiffUncompressed &&
           options.compression == kVipsTiffAsInput &&
           TiffCompressionFor(origin, options, depth) == kVipsTiffNone;
}

static int SaveTiff(VipsImage *image, const char *path, const PictureOrigin &origin,
                    const WriteOptions &options) {
    const bool isAlike = options.compression == kVipsTiffAsInput;
    const int samples = Vips().vips_image_get_format(image);
    const int compression = TiffCompressionFor(origin, options, samples == kVipsUChar ? 8 : 16);
    const bool predicts = !isAlike || origin.hasPredictor;
    const int predictor = !predicts ? 1 : samples == kVipsFloat ? 3 : 2;
    const int64_t bytes = int64_t{Vips().vips_image_get_width(image)} * Vips().vips_image_get_height(image) *
                          Vips().vips_image_get_bands(image) *
                          (samples == kVipsUChar    ? 1
                           : samples == kVipsUShort ? 2
                                                    : 4);
    const bool isBig = (origin.kind == PictureKind::kTiff && origin.isBig) || bytes > kBigTiffBytes;
    return Vips().vips_tiffsave(image, path, "compression", compression, "predictor", predictor, "Q",
                                options.quality != 0 ? options.quality : kTiffJpegQuality, "bigtiff",
                                isBig ? 1 : 0, "keep", Keep(image), nullptr);
}

static int CodePng(VipsImage *image, Coded *coded, const PictureOrigin &, const WriteOptions &) {
    return Vips().vips_pngsave_buffer(image, &coded->bytes, &coded->length, "filter", kAllPngFilters, "keep",
                                      Keep(image), nullptr);
}

static int CodeWebp(VipsImage *image, Coded *coded, const PictureOrigin &origin,
                    const WriteOptions &options) {
    const bool isLossless = origin.kind == PictureKind::kWebp && origin.isLossless && options.quality == 0;
    return Vips().vips_webpsave_buffer(image, &coded->bytes, &coded->length, "lossless", isLossless ? 1 : 0,
                                       "Q", options.quality != 0 ? options.quality : kWebpQuality,
                                       "smart_subsample", 1, "exact", isLossless ? 1 : 0, "keep", Keep(image),
                                       nullptr);
}

static int CodeAvif(VipsImage *image, Coded *coded, const PictureOrigin &, const WriteOptions &options) {
    const bool isDeep = Vips().vips_image_get_format(image) != kVipsUChar;
    return Vips().vips_heifsave_buffer(
        image, &coded->bytes, &coded->length, "compression", kHeifAv1, "Q",
        options.quality != 0 ? options.quality : kAvifQuality, "bitdepth", isDeep ? 12 : 8, "subsample_mode",
        options.subsampling == Subsampling::k420 ? kVipsSubsampleOn : kVipsSubsampleOff, "keep", Keep(image),
        nullptr);
}

static int CodeGif(VipsImage *image, Coded *coded, const PictureOrigin &, const WriteOptions &) {
    return Vips().vips_gifsave_buffer(image, &coded->bytes, &coded->length, "keep", Keep(image), nullptr);
}

// A JPEG's comments become texts.
static Bytes PngTextsOf(const PictureOrigin &origin, const WriteOptions &options) {
    std::vector<PngText> texts = origin.texts;
    for (const Bytes &comment : origin.comments)
        if (origin.kind == PictureKind::kJpeg)
            texts.push_back(MakePngText("Comment", comment));
    Bytes chunks;
    for (const PngText &text : texts)
        if (options.metadata != MetadataChoice::kNone)
            AppendBytes(chunks, text.chunk.data(), text.chunk.size());
    return chunks;
}

// Kinds whose coded form is small, or is there only when all is coded.
static bool SaveCoded(PictureKind kind, VipsImage *image, const PictureOrigin &origin,
                      const WriteOptions &options, OutputFile *file, std::string *why) {
    Coded coded;
    const auto code = kind == PictureKind::kPng    ? CodePng
                      : kind == PictureKind::kWebp ? CodeWebp
                      : kind == PictureKind::kAvif ? CodeAvif
                                                   : CodeGif;
    if (code(image, &coded, origin, options) != 0)
        return FailWriting(why);
    const auto *bytes = static_cast<const uint8_t *>(coded.bytes);
    const Bytes texts = kind == PictureKind::kPng ? PngTextsOf(origin, options) : Bytes();
    const size_t place = PngTextPlace(coded.length);
    return AppendOutput(file, bytes, place, why) && AppendOutput(file, texts.data(), texts.size(), why) &&
           AppendOutput(file, bytes + place, coded.length - place, why);
}

// What the library does not put into a TIFF itself.
static bool FinishTiff(const PictureOrigin &origin, const WriteOptions &options, const std::wstring &path,
                       std::string *why) {
    if (options.metadata == MetadataChoice::kNone || !origin.fields)
        return true;
    ExifTree tree = ReadExifTree(BlobOf(origin.fields.get(), "exif-data"));
    tree.iptc = UnwrapIptc(BlobOf(origin.fields.get(), "iptc-data"));
    if (options.metadata == MetadataChoice::kNoPlace)
        tree.place.clear();
    return AddExifToTiff(path, tree, why);
}

// By its path, so that it never lies in memory whole.
static bool SaveTiffFile(VipsImage *image, const PictureOrigin &origin, const WriteOptions &options,
                         OutputFile *file, std::string *why) {
    LendOutput(file);
    if (SaveTiff(image, ToUtf8(file->temporaryPath).c_str(), origin, options) != 0)
        return IsDiskFull(file->temporaryPath) ? Fail(why, "the disk is full") : FailWriting(why);
    return FinishTiff(origin, options, file->temporaryPath, why) && TakeOutputBack(file, why);
}

bool WriteWithLibrary(PictureKind kind, const Picture &picture, const PictureOrigin &origin,
                      const WriteOptions &options, const std::function<bool()> &isCancelled, OutputFile *file,
                      std::string *why) {
    if (!LoadVips(why))
        return false;
    const ImageHandle image = MakeImage(kind, picture, origin, options);
    if (!image)
        return FailWriting(why);
    WatchForCancel(image.get(), isCancelled);
    const bool isSaved = kind == PictureKind::kJpeg ? SaveJpeg(image.get(), origin, options, file, why)
                         : kind == PictureKind::kTiff
                             ? SaveTiffFile(image.get(), origin, options, file, why)
                             : SaveCoded(kind, image.get(), origin, options, file, why);
    if (!isSaved && isCancelled && isCancelled())
        why->clear();
    return isSaved;
}

} // namespace host
