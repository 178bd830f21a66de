// Picture files: as they are written they come back, to the system's own decoder too; damaged ones, and any
// bytes, are refused with a reason or make a picture of sane measures, which can be written and comes back.
#include "host/pictures/PictureMeasure.h"
#include "tests/fuzz/CaseBytes.h"
#include "tests/host/TestFiles.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <windows.h>

#include <psapi.h>
#include <wincodec.h>

namespace {

using host::Bytes;
using host::Picture;

struct Form {
    const wchar_t *name;
    int32_t depth;
    bool holdsGrey, holdsColour, holdsAlpha, isLossless;
};
constexpr Form kForms[] = {{L"a.png", 8, true, true, true, true},   {L"a.png", 16, true, true, true, true},
                           {L"a.tif", 8, true, true, true, true},   {L"a.tif", 16, true, true, true, true},
                           {L"a.tif", 32, true, true, true, true},  {L"a.jpg", 8, true, true, false, false},
                           {L"a.bmp", 8, false, true, false, true}, {L"a.ppm", 16, false, true, false, true},
                           {L"a.pgm", 8, true, false, false, true}, {L"a.pam", 16, true, true, true, true},
                           {L"a.ppm", 8, false, true, false, true}, {L"a.pgm", 16, true, false, false, true},
                           {L"a.pfm", 32, true, true, false, true}, {L"a.webp", 8, false, true, true, true},
                           {L"a.gif", 8, false, true, true, false}, {L"a.avif", 8, false, true, true, false}};
constexpr uint64_t kMostSamples = 16u << 20; // of a damaged file, so that runs stay short

// What came of a reading, checked for what must hold of any.
bool Read(const Bytes &file, bool isStrict, Picture *picture, host::PictureOrigin *origin) {
    std::string why;
    if (!host::ReadPictureBytes(file, picture, &why, origin, isStrict)) {
        Require(!why.empty() && picture->planes.empty(), "a refused file has a reason and gives nothing");
        return false;
    }
    Require(picture->width > 0 && picture->height > 0 && picture->width <= host::kMostPixels &&
                picture->height <= host::kMostPixels,
            "a picture's size can be filtered");
    Require((picture->depth == 8 || picture->depth == 16 || picture->depth == 32) &&
                (picture->colourPlanes == 1 || picture->colourPlanes == 3) &&
                picture->planes.size() == static_cast<size_t>(picture->colourPlanes + picture->hasAlpha),
            "its make-up is one of ours");
    for (const Bytes &plane : picture->planes)
        Require(plane.size() == static_cast<size_t>(picture->width) * static_cast<size_t>(picture->height) *
                                    static_cast<size_t>(picture->depth / 8),
                "each plane holds every sample");
    return true;
}

void WriteAndReadAgain(const std::wstring &path, const Picture &picture, const host::PictureOrigin &origin) {
    std::string why;
    Picture again;
    host::WriteOptions plain;
    plain.compression = host::kVipsTiffNone;
    const bool isWritten = host::WritePicture(path, picture, {}, &why, origin, plain);
    Require(isWritten, why.c_str());
    Require(Read(ReadBytes(path), true, &again, nullptr), "what was read and written can be read");
    Require(again.planes == picture.planes && again.width == picture.width, "and is the same");
}

// Eight bits of red, green and blue, by the system.
bool DecodeBySystem(Bytes file, int32_t width, int32_t height, Bytes *pixels) {
    static IWICImagingFactory *factory = nullptr;
    if (!factory) {
        CoInitialize(nullptr);
        CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER, IID_IWICImagingFactory,
                         reinterpret_cast<void **>(&factory));
    }
    IWICStream *stream = nullptr;
    IWICBitmapDecoder *decoder = nullptr;
    IWICBitmapFrameDecode *frame = nullptr;
    IWICBitmapSource *source = nullptr;
    UINT foundWidth = 0, foundHeight = 0;
    const UINT stride = static_cast<UINT>(width) * 3;
    pixels->resize(size_t{stride} * static_cast<UINT>(height));
    const bool isGood =
        SUCCEEDED(factory->CreateStream(&stream)) &&
        SUCCEEDED(stream->InitializeFromMemory(file.data(), static_cast<DWORD>(file.size()))) &&
        SUCCEEDED(
            factory->CreateDecoderFromStream(stream, nullptr, WICDecodeMetadataCacheOnDemand, &decoder)) &&
        SUCCEEDED(decoder->GetFrame(0, &frame)) &&
        SUCCEEDED(WICConvertBitmapSource(GUID_WICPixelFormat24bppBGR, frame, &source)) &&
        SUCCEEDED(source->GetSize(&foundWidth, &foundHeight)) && foundWidth == static_cast<UINT>(width) &&
        foundHeight == static_cast<UINT>(height) &&
        SUCCEEDED(source->CopyPixels(nullptr, stride, static_cast<UINT>(pixels->size()), pixels->data()));
    for (IUnknown *object : std::initializer_list<IUnknown *>{source, frame, decoder, stream})
        if (object)
            object->Release();
    return isGood;
}

void CompareWithSystem(const Bytes &file, const Picture &picture, int tolerance) {
    Bytes pixels;
    Require(DecodeBySystem(file, picture.width, picture.height, &pixels), "the system reads it too");
    for (size_t i = 0; i < pixels.size(); ++i)
        Require(std::abs(pixels[i] - picture.planes[2 - i % 3][i / 3]) <= tolerance, "and sees the same");
}

// As the program writes it, and looked at.
Bytes MakeFile(const TestFolder &folder, const Form &form, int32_t planes, bool hasAlpha, int size) {
    constexpr int32_t kWidths[] = {1, 3, 70, 41}, kHeights[] = {1, 131, 1, 33};
    constexpr int kCompressions[] = {host::kVipsTiffNone, host::kVipsTiffDeflate, host::kVipsTiffPackBits,
                                     host::kVipsTiffLzw};
    constexpr int kQualities[] = {100, 99, 40, 83};
    const Picture picture = MakeTestPicture(kWidths[size], kHeights[size], form.depth, planes, hasAlpha);
    Picture read;
    host::PictureOrigin origin;
    origin.isLossless = true;
    origin.kind = host::PictureKind::kWebp;
    host::WriteOptions options;
    options.compression = kCompressions[size];
    options.quality = form.isLossless ? 0 : kQualities[size];
    std::string why;
    const bool isWritten = host::WritePicture(folder.File(form.name), picture, {}, &why, origin, options);
    Require(isWritten, why.c_str());
    const Bytes file = ReadBytes(folder.File(form.name));
    Require(Read(file, true, &read, &origin), "a file of ours is read");
    Require(!form.isLossless || read == picture, "and comes back");
    const bool isJpeg = origin.kind == host::PictureKind::kJpeg;
    Require(!isJpeg || origin.quality == kQualities[size], "a photo's quality is told from its tables");
    const bool isForSystem =
        isJpeg || origin.kind == host::PictureKind::kPng || origin.kind == host::PictureKind::kTiff;
    if (isForSystem && read.depth == 8 && read.colourPlanes == 3 && !read.hasAlpha)
        CompareWithSystem(file, read, isJpeg ? 3 : 0);
    return file;
}

std::vector<Bytes> MakeFiles(const TestFolder &folder) {
    std::vector<Bytes> files;
    for (const Form &form : kForms)
        for (int i = 0; i < 16; ++i)
            if ((i & 1 ? form.holdsGrey : form.holdsColour) && (form.holdsAlpha || !(i & 2)))
                files.push_back(MakeFile(folder, form, i & 1 ? 1 : 3, (i & 2) != 0, i >> 2));
    Require(folder.List().size() == 11, "no unfinished file is left");
    return files;
}

void Damage(CaseBytes *from, Bytes *file) {
    constexpr uint32_t kNumbers[] = {0, 1, 0x7FFF, 0x8000, 0xFFFF, 0x10000, 0x7FFFFFFF, 0xFFFFFFFF};
    for (int i = from->Pick(1, 6); i > 0 && file->size() > 8; --i) {
        const int way = from->Pick(1, 15);
        const size_t reach = from->Pick(0, 1) ? file->size() - 4 : std::min<size_t>(file->size() - 4, 200);
        const size_t at = from->Take<uint16_t>() % reach;
        const uint32_t number = from->Pick(0, 1) ? kNumbers[from->Pick(0, 7)] : from->Take<uint32_t>();
        const auto place = file->begin() + static_cast<ptrdiff_t>(at);
        if (way == 1)
            file->insert(place, 1 + number % 9, static_cast<uint8_t>(number));
        else if (way == 2)
            file->erase(place, place + 1 + number % 4);
        else
            std::memcpy(file->data() + at, &number, way < 9 ? 1 : way < 12 ? 2 : 4);
    }
}

uint64_t PeakMemory() {
    PROCESS_MEMORY_COUNTERS counters{};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return counters.PeakWorkingSetSize;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t length) {
    static const TestFolder folder;
    CaseBytes from{bytes, length};
    static const std::vector<Bytes> files = MakeFiles(folder);
    const int form = from.Pick(0, 255), way = from.Pick(0, 3);
    Bytes file(from.bytes, from.bytes + from.length);
    bool isCut = false;
    if (form < 224) {
        file = files[static_cast<size_t>(form) % files.size()];
        isCut = from.Pick(0, 15) == 0 && file.size() > 50;
        if (isCut)
            file.resize(file.size() - 25 - from.Take<uint16_t>() % (file.size() - 40));
        else
            Damage(&from, &file);
    }
    const std::wstring path = folder.File(L"damaged");
    std::ofstream(std::filesystem::path(path), std::ios::binary)
        .write(reinterpret_cast<const char *>(file.data()), static_cast<std::streamsize>(file.size()));
    Picture read;
    host::PictureOrigin origin;
    const bool isRead = host::MeasureSamples(path) <= kMostSamples && Read(file, way & 1, &read, &origin);
    Require(!isRead || !isCut || !(way & 1), "a file that ends early is refused");
    if (isRead && way == 3)
        WriteAndReadAgain(folder.File(L"again.tif"), read, origin);
    Require(PeakMemory() < 1u << 29, "small files need no large memory");
    return 0;
}
