#include "host/pictures/PictureMetadata.h"

#include "host/pictures/PictureFormat.h"
#include "host/pictures/TiffDirectory.h"

#include <algorithm>
#include <array>

namespace host {

constexpr char kExifName[] = "Exif\0"; // two zeros end it
constexpr size_t kExifNameSize = 6;
constexpr char kIccName[] = "ICC_PROFILE";
constexpr size_t kIccNameSize = 12;
constexpr size_t kIccPartSize = 65519;    // most of a profile that fits into one segment
constexpr size_t kPngHeaderSize = 8 + 25; // signature and IHDR
constexpr size_t kStoredBlock = 65535;
constexpr uint8_t kPngSignature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};

struct ProfileParts {
    std::array<Bytes, 256> parts; // by number, from 1
    size_t count = 0;
};

static void TakeSegment(uint8_t marker, const uint8_t *data, size_t length, JpegInfo *info,
                        ProfileParts *profile) {
    TiffDirectory exif;
    if (marker == 0xE1 && length > kExifNameSize && std::memcmp(data, kExifName, kExifNameSize) == 0 &&
        ReadTiffDirectory(data + kExifNameSize, length - kExifNameSize, &exif))
        info->orientation = static_cast<int32_t>(TiffNumber(exif, kTiffOrientation, 1));
    if (marker == 0xE2 && length > kIccNameSize + 2 && std::memcmp(data, kIccName, kIccNameSize) == 0) {
        profile->parts[data[kIccNameSize]].assign(data + kIccNameSize + 2, data + length);
        profile->count = data[kIccNameSize + 1];
    }
}

static Bytes JoinProfile(const ProfileParts &profile) {
    Bytes joined;
    for (size_t i = 1; i <= profile.count; i++) {
        if (profile.parts[i].empty())
            return {};
        AppendBytes(joined, profile.parts[i].data(), profile.parts[i].size());
    }
    return joined;
}

// Behind the coded data of a scan: the next marker that is neither a stuffed byte nor a restart.
static size_t SkipScan(const Bytes &file, size_t at) {
    for (; at + 1 < file.size(); at++)
        if (file[at] == 0xFF && file[at + 1] != 0 && file[at + 1] != 0xFF &&
            (file[at + 1] < 0xD0 || file[at + 1] > 0xD7))
            return at;
    return file.size();
}

bool ReadJpegInfo(const Bytes &file, JpegInfo *info) {
    if (file.size() < 4 || file[0] != 0xFF || file[1] != 0xD8 || file[2] != 0xFF)
        return false;
    *info = {};
    ProfileParts profile;
    for (size_t at = 2; at + 1 < file.size();) {
        if (file[at] != 0xFF || file[at + 1] == 0xFF) {
            at++; // fill bytes between segments
            continue;
        }
        const uint8_t marker = file[at + 1];
        if (marker == 0xD9) {
            info->isComplete = true;
            break;
        }
        if (file.size() - at < 4)
            break;
        const size_t length = NumberAt<uint16_t>(file.data() + at + 2, ByteOrder::kBig);
        if (length < 2 || length > file.size() - at - 2)
            break;
        TakeSegment(marker, file.data() + at + 4, length - 2, info, &profile);
        at += 2 + length;
        if (marker == 0xDA)
            at = SkipScan(file, at);
    }
    info->iccProfile = JoinProfile(profile);
    return true;
}

bool IsPng(const Bytes &file) {
    return file.size() > kPngHeaderSize &&
           std::memcmp(file.data(), kPngSignature, sizeof(kPngSignature)) == 0;
}

int32_t PngColourType(const Bytes &file) {
    return IsPng(file) ? file[25] : -1;
}

bool DoesProfileFit(const Bytes &profile, int32_t colourPlanes) {
    return profile.size() >= 128 &&
           std::memcmp(profile.data() + 16, colourPlanes == 3 ? "RGB " : "GRAY", 4) == 0;
}

static uint32_t Crc32(const uint8_t *bytes, size_t length) {
    uint32_t crc = 0xFFFFFFFFu;
    for (size_t i = 0; i < length; i++) {
        crc ^= bytes[i];
        for (int bit = 0; bit < 8; bit++)
            crc = (crc >> 1) ^ ((crc & 1) ? 0xEDB88320u : 0u);
    }
    return ~crc;
}

static uint32_t Adler32(const Bytes &bytes) {
    uint32_t low = 1, high = 0;
    for (const uint8_t byte : bytes) {
        low = (low + byte) % 65521;
        high = (high + low) % 65521;
    }
    return high << 16 | low;
}

// A zlib stream of stored blocks: profiles are small, and nothing here compresses.
static void AppendStored(const Bytes &data, Bytes *stream) {
    stream->push_back(0x78);
    stream->push_back(0x01);
    for (size_t at = 0; at < data.size(); at += kStoredBlock) {
        const size_t length = std::min(kStoredBlock, data.size() - at);
        stream->push_back(at + length == data.size());
        AppendNumber(*stream, static_cast<uint16_t>(length));
        AppendNumber(*stream, static_cast<uint16_t>(~length));
        AppendBytes(*stream, data.data() + at, length);
    }
    AppendNumber(*stream, Adler32(data), ByteOrder::kBig);
}

static Bytes MakePngProfile(const Bytes &profile) {
    const char name[] = "iCCPICC Profile\0"; // chunk type, name and its zero, compression method 0
    Bytes chunk(name, name + sizeof(name));
    AppendStored(profile, &chunk);
    Bytes made;
    AppendNumber(made, static_cast<uint32_t>(chunk.size() - 4), ByteOrder::kBig);
    AppendBytes(made, chunk.data(), chunk.size());
    AppendNumber(made, Crc32(chunk.data(), chunk.size()), ByteOrder::kBig);
    return made;
}

static Bytes MakeJpegProfile(const Bytes &profile) {
    const size_t count = (profile.size() + kIccPartSize - 1) / kIccPartSize;
    Bytes made;
    for (size_t part = 0; count <= 255 && part < count; part++) {
        const size_t first = part * kIccPartSize;
        const size_t length = std::min(kIccPartSize, profile.size() - first);
        AppendNumber(made, uint16_t{0xFFE2}, ByteOrder::kBig);
        AppendNumber(made, static_cast<uint16_t>(2 + kIccNameSize + 2 + length), ByteOrder::kBig);
        AppendBytes(made, kIccName, kIccNameSize);
        made.push_back(static_cast<uint8_t>(part + 1));
        made.push_back(static_cast<uint8_t>(count));
        AppendBytes(made, profile.data() + first, length);
    }
    return made;
}

// Behind the start marker and the application data that must come first.
static size_t JpegInsertionPoint(const Bytes &file) {
    if (file[3] != 0xE0 || file.size() < 6)
        return 2;
    const size_t end = 4 + static_cast<size_t>(NumberAt<uint16_t>(file.data() + 4, ByteOrder::kBig));
    return end <= file.size() ? end : 2;
}

void InsertProfile(const Bytes &profile, Bytes *file) {
    JpegInfo info;
    if (IsPng(*file)) {
        const Bytes chunk = MakePngProfile(profile);
        file->insert(file->begin() + kPngHeaderSize, chunk.begin(), chunk.end());
    } else if (ReadJpegInfo(*file, &info)) {
        const Bytes segments = MakeJpegProfile(profile);
        file->insert(file->begin() + static_cast<ptrdiff_t>(JpegInsertionPoint(*file)), segments.begin(),
                     segments.end());
    }
}

void ApplyMetadata(const Bytes &file, Bytes codecProfile, Picture *picture) {
    TiffDirectory tiff;
    JpegInfo jpeg;
    int32_t orientation = 1;
    Bytes profile = std::move(codecProfile);
    if (ReadTiffDirectory(file.data(), file.size(), &tiff)) {
        orientation = static_cast<int32_t>(TiffNumber(tiff, kTiffOrientation, 1));
        profile = TiffBytes(tiff, kTiffProfile);
    } else if (ReadJpegInfo(file, &jpeg)) {
        orientation = jpeg.orientation;
        profile = std::move(jpeg.iccProfile);
    }
    ApplyOrientation(*picture, orientation);
    if (DoesProfileFit(profile, picture->colourPlanes))
        picture->iccProfile = std::move(profile);
}

} // namespace host
