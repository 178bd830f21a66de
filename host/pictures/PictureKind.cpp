#include "host/pictures/PictureKind.h"

#include "host/base/SystemText.h"
#include "host/metadata/JpegSegments.h"
#include "host/metadata/TiffDirectory.h"

#include <cctype>
#include <string_view>

namespace host {

// A mark of a kind: bytes at a place in the file.
struct KindMark {
    size_t at;
    std::string_view bytes;
    PictureKind kind;
    const char *refusal; // null: the kind is read
};

static constexpr char kRaw[] = "it is a camera raw file: export a TIFF from your raw converter first";
static constexpr char kHeic[] = "it is a HEIC file: export a JPEG or TIFF first";
static constexpr char kJxl[] = "it is a JPEG XL file: convert it to TIFF or PNG first";
static constexpr char kJp2[] = "it is a JPEG 2000 file: convert it to TIFF or PNG first";
static constexpr char kPsd[] =
    "it is a Photoshop document: export a TIFF, or run the plug-in in the program itself";

using namespace std::string_view_literals;

static constexpr KindMark kMarks[] = {
    {0, "\xFF\xD8\xFF"sv, PictureKind::kJpeg, nullptr},
    {0, "\x89PNG\r\n\x1A\n"sv, PictureKind::kPng, nullptr},
    {8, "WEBP"sv, PictureKind::kWebp, nullptr},
    {0, "GIF87a"sv, PictureKind::kGif, nullptr},
    {0, "GIF89a"sv, PictureKind::kGif, nullptr},
    {0, "BM"sv, PictureKind::kBmp, nullptr},
    {4, "ftypavif"sv, PictureKind::kAvif, nullptr},
    {4, "ftypavis"sv, PictureKind::kAvif, nullptr},
    {4, "ftypheic"sv, PictureKind::kNone, kHeic},
    {4, "ftypheix"sv, PictureKind::kNone, kHeic},
    {4, "ftyphevc"sv, PictureKind::kNone, kHeic},
    {4, "ftypmif1"sv, PictureKind::kNone, kHeic},
    {4, "ftypmsf1"sv, PictureKind::kNone, kHeic},
    {4, "ftypcrx "sv, PictureKind::kNone, kRaw}, // CR3
    {0, "FUJIFILMCCD-RAW"sv, PictureKind::kNone, kRaw},
    {0, "IIRO"sv, PictureKind::kNone, kRaw}, // ORF
    {0, "IIRS"sv, PictureKind::kNone, kRaw},
    {0, "MMOR"sv, PictureKind::kNone, kRaw},
    {0, "IIU\0"sv, PictureKind::kNone, kRaw},  // RW2
    {8, "CR\x02"sv, PictureKind::kNone, kRaw}, // CR2, a TIFF otherwise
    {0, "FOVb"sv, PictureKind::kNone, kRaw},
    {0, "\0MRM"sv, PictureKind::kNone, kRaw},
    {0, "8BPS"sv, PictureKind::kNone, kPsd},
    {0, "\xFF\x0A"sv, PictureKind::kNone, kJxl},
    {4, "JXL \r\n\x87\n"sv, PictureKind::kNone, kJxl},
    {4, "jP  \r\n\x87\n"sv, PictureKind::kNone, kJp2},
};

static bool HasMark(const Bytes &file, const KindMark &mark) {
    return file.size() >= mark.at + mark.bytes.size() &&
           std::memcmp(file.data() + mark.at, mark.bytes.data(), mark.bytes.size()) == 0;
}

static bool IsNetpbm(const Bytes &file) {
    return file.size() > 2 && file[0] == 'P' &&
           std::string_view("567Ff").find(static_cast<char>(file[1])) != std::string_view::npos &&
           std::isspace(file[2]);
}

// An AVIF may call itself an image of any kind first, and name its own among those that it is compatible
// with.
static bool IsAvifByList(const Bytes &file) {
    if (file.size() < 16 || std::memcmp(file.data() + 4, "ftyp", 4) != 0)
        return false;
    const size_t length = std::min<size_t>(NumberAt<uint32_t>(file.data(), ByteOrder::kBig), file.size());
    for (size_t at = 16; at + 4 <= length; at += 4)
        if (std::memcmp(file.data() + at, "avif", 4) == 0)
            return true;
    return false;
}

// Raw files of many cameras are TIFFs whose first picture is a small preview.
static bool IsRawTiff(const TiffDirectory &tiff) {
    return !TiffNumbers(tiff, kTiffCfaPattern).empty() || HasTiffTag(tiff, kTiffDngVersion) ||
           TiffNumber(tiff, kTiffPhotometric, kTiffRgb) == kTiffCfa ||
           (TiffNumber(tiff, kTiffSubfileType, 0) == kTiffReducedPicture &&
            HasTiffTag(tiff, kTiffSubDirectories));
}

static bool TellTiff(const Bytes &file, PictureOrigin *origin, std::string *why) {
    TiffDirectory tiff;
    if (!ReadTiffDirectory(file.data(), file.size(), &tiff))
        return Fail(why, "it is a damaged TIFF file");
    if (IsRawTiff(tiff))
        return Fail(why, kRaw);
    origin->kind = PictureKind::kTiff;
    origin->compression = TiffNumber(tiff, kTiffCompression, kTiffUncompressed);
    origin->hasPredictor = TiffNumber(tiff, kTiffPredictor, 1) != 1;
    origin->isBig = tiff.isBig;
    const bool isLab = TiffNumber(tiff, kTiffPhotometric, kTiffRgb) == kTiffLab;
    if (isLab && TiffNumber(tiff, kTiffBits, 1) == 8 && TiffNumber(tiff, kTiffSamples, 1) == 3)
        origin->labPlace = static_cast<size_t>(TiffPlace(tiff, kTiffPhotometric)) + (file[0] == 'M' ? 1 : 0);
    return true;
}

static void TellOrigin(const Bytes &file, PictureOrigin *origin) {
    if (origin->kind == PictureKind::kJpeg) {
        origin->quality = EstimateJpegQuality(file);
        origin->halvesColour = HalvesJpegColour(file);
        origin->comments = ReadJpegComments(file);
    }
    if (origin->kind == PictureKind::kPng)
        origin->texts = ReadPngTexts(file);
    if (origin->kind == PictureKind::kWebp) {
        constexpr std::string_view lossless = "VP8L";
        const size_t end = std::min<size_t>(file.size(), 4096); // behind the colour profile at most
        origin->isLossless =
            std::string_view(reinterpret_cast<const char *>(file.data()), end).find(lossless) !=
            std::string_view::npos;
    }
}

bool TellPictureKind(const Bytes &file, PictureOrigin *origin, std::string *why) {
    *origin = {};
    if (file.empty())
        return Fail(why, "the file is empty");
    for (const KindMark &mark : kMarks) {
        if (!HasMark(file, mark))
            continue;
        if (mark.refusal && !(mark.refusal == kHeic && IsAvifByList(file)))
            return Fail(why, mark.refusal);
        origin->kind = mark.refusal ? PictureKind::kAvif : mark.kind;
        TellOrigin(file, origin);
        return true;
    }
    if (IsTiff(file.data(), file.size()))
        return TellTiff(file, origin, why);
    if (!IsNetpbm(file))
        return Fail(why, "it is not a picture of a known kind");
    origin->kind = PictureKind::kNetpbm;
    return true;
}

} // namespace host
