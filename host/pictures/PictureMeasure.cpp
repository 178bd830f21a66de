#include "host/pictures/PictureMeasure.h"

#include "host/base/SystemText.h"
#include "host/metadata/TiffDirectory.h"
#include "host/pictures/PictureKind.h"
#include "host/pictures/VipsLibrary.h"

#include <windows.h>

#include <algorithm>

namespace host {

constexpr int kMostSegments = 1000; // of a JPEG
constexpr size_t kHeadSize = 512, kPngHead = 26;

static bool ReadAt(HANDLE file, uint64_t at, uint8_t *bytes, DWORD length) {
    LARGE_INTEGER place;
    place.QuadPart = static_cast<LONGLONG>(at);
    DWORD count = 0;
    return SetFilePointerEx(file, place, nullptr, FILE_BEGIN) &&
           ReadFile(file, bytes, length, &count, nullptr) && count == length;
}

// The frame's segment says how large it is; those before it are stepped over.
static uint64_t JpegSamples(HANDLE file) {
    uint8_t head[10];
    uint64_t at = 2;
    for (int i = 0; i < kMostSegments && ReadAt(file, at, head, sizeof(head)) && head[0] == 0xFF; i++) {
        const uint8_t kind = head[1];
        if (kind >= 0xC0 && kind <= 0xCF && kind != 0xC4 && kind != 0xC8 && kind != 0xCC)
            return uint64_t{NumberAt<uint16_t>(head + 5, ByteOrder::kBig)} *
                   NumberAt<uint16_t>(head + 7, ByteOrder::kBig) * head[9];
        at += 2u + NumberAt<uint16_t>(head + 2, ByteOrder::kBig);
    }
    return 0;
}

static uint64_t PngSamples(const uint8_t *head) {
    const uint64_t width = NumberAt<uint32_t>(head + 16, ByteOrder::kBig);
    const uint64_t height = NumberAt<uint32_t>(head + 20, ByteOrder::kBig);
    return width < 65536 && height < 65536 ? width * height * 3 * (head[24] > 8 ? 2 : 1) : 0;
}

// By the library, which reads the head alone.
static uint64_t LibrarySamples(PictureKind kind, const std::wstring &path) {
    std::string why;
    if (!LoadVips(&why))
        return 0;
    const VipsLibrary &vips = Vips();
    const auto load = kind == PictureKind::kTiff   ? vips.vips_tiffload_source
                      : kind == PictureKind::kWebp ? vips.vips_webpload_source
                      : kind == PictureKind::kAvif ? vips.vips_heifload_source
                                                   : vips.vips_gifload_source;
    const std::string name = ToUtf8(path);
    const std::unique_ptr<VipsSource, VipsRelease> source(vips.vips_source_new_from_file(name.c_str()));
    VipsImage *opened = nullptr;
    if (!source || load(source.get(), &opened, "access", kVipsSequential, nullptr) != 0) {
        vips.vips_error_clear();
        return 0;
    }
    const ImageHandle image(opened);
    const int format = vips.vips_image_get_format(opened);
    const uint64_t sampleSize = format == kVipsUChar ? 1 : format == kVipsUShort ? 2 : 4;
    return static_cast<uint64_t>(vips.vips_image_get_width(opened)) *
           static_cast<uint64_t>(vips.vips_image_get_height(opened)) *
           static_cast<uint64_t>(std::min(vips.vips_image_get_bands(opened), 4)) * sampleSize;
}

static uint64_t SamplesOf(HANDLE file, const std::wstring &path) {
    Bytes head(kHeadSize);
    PictureOrigin origin;
    std::string why;
    DWORD count = 0;
    if (!ReadFile(file, head.data(), kHeadSize, &count, nullptr) || count < kPngHead)
        return 0;
    head.resize(count);
    if (IsTiff(head.data(), head.size()))
        return LibrarySamples(PictureKind::kTiff, path);
    if (!TellPictureKind(head, &origin, &why))
        return 0;
    switch (origin.kind) {
    case PictureKind::kJpeg:
        return JpegSamples(file);
    case PictureKind::kPng:
        return PngSamples(head.data());
    case PictureKind::kWebp:
    case PictureKind::kAvif:
    case PictureKind::kGif:
        return LibrarySamples(origin.kind, path);
    default: // nothing is compressed
        LARGE_INTEGER size = {};
        return GetFileSizeEx(file, &size) ? static_cast<uint64_t>(size.QuadPart) : 0;
    }
}

uint64_t MeasureSamples(const std::wstring &path) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return 0;
    const uint64_t samples = SamplesOf(file, path);
    CloseHandle(file);
    return samples;
}

} // namespace host
