// Picture files: as they are written they come back, to the system's own decoder too; damaged ones, and any
// bytes, are refused with a reason or make a picture of sane measures, which can be written and comes back.
#include "host/pictures/PictureMeasure.h"
#include "tests/fuzz/CaseBytes.h"
#include "tests/host/TestFiles.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
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
                           {L"a.pfm", 32, true, true, false, true}, {L"a.webp", 8, false, true, true, true},
                           {L"a.gif", 8, false, true, true, false}, {L"a.avif", 8, false, true, true, false}};
constexpr int kFormCount = static_cast<int>(std::size(kForms));
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

// As the program writes it. Each is looked at when it is made for the first time.
const Bytes &MakeFile(const TestFolder &folder, const Form &form, CaseBytes *from) {
    static std::map<std::vector<int32_t>, Bytes> made;
    constexpr int32_t kWidths[] = {1, 9, 40}, kHeights[] = {1, 33, 7};
    constexpr int kCompressions[] = {host::kVipsTiffNone, host::kVipsTiffDeflate, host::kVipsTiffPackBits,
                                     host::kVipsTiffLzw};
    const int32_t planes = form.holdsGrey && (from->Pick(0, 1) || !form.holdsColour) ? 1 : 3;
    const int32_t alpha = form.holdsAlpha && from->Pick(0, 1), size = from->Pick(0, 2);
    const int32_t compression = from->Pick(0, 3);
    Bytes &file = made[{static_cast<int32_t>(&form - kForms), planes, alpha, size, compression}];
    if (!file.empty())
        return file;
    const Picture picture = MakeTestPicture(kWidths[size], kHeights[size], form.depth, planes, alpha != 0);
    Picture read;
    host::PictureOrigin origin;
    origin.isLossless = true;
    origin.kind = host::PictureKind::kWebp;
    host::WriteOptions options;
    options.compression = kCompressions[compression];
    std::string why;
    const bool isWritten = host::WritePicture(folder.File(form.name), picture, {}, &why, origin, options);
    Require(isWritten, why.c_str());
    file = ReadBytes(folder.File(form.name));
    Require(Read(file, true, &read, &origin), "a file of ours is read");
    Require(!form.isLossless || read.planes == picture.planes, "and comes back");
    const bool isJpeg = origin.kind == host::PictureKind::kJpeg;
    const bool isForSystem =
        isJpeg || origin.kind == host::PictureKind::kPng || origin.kind == host::PictureKind::kTiff;
    if (isForSystem && read.depth == 8 && read.colourPlanes == 3 && !read.hasAlpha)
        CompareWithSystem(file, read, isJpeg ? 3 : 0);
    return file;
}

void Damage(CaseBytes *from, Bytes *file) {
    constexpr uint32_t kNumbers[] = {0, 1, 0x7FFF, 0x8000, 0xFFFF, 0x10000, 0x7FFFFFFF, 0xFFFFFFFF};
    for (int i = from->Pick(1, 6); i > 0 && file->size() > 8; --i) {
        const int way = from->Pick(0, 15);
        const size_t reach = from->Pick(0, 1) ? file->size() - 4 : std::min<size_t>(file->size() - 4, 200);
        const size_t at = from->Take<uint16_t>() % reach;
        const uint32_t number = from->Pick(0, 1) ? kNumbers[from->Pick(0, 7)] : from->Take<uint32_t>();
        const auto place = file->begin() + static_cast<ptrdiff_t>(at);
        if (way == 0)
            file->resize(at + 4);
        else if (way == 1)
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
    const int form = from.Pick(0, kFormCount), way = from.Pick(0, 3);
    Bytes file(from.bytes, from.bytes + from.length);
    if (form < kFormCount) {
        file = MakeFile(folder, kForms[form], &from);
        Damage(&from, &file);
    }
    const std::wstring path = folder.File(L"damaged");
    std::ofstream(std::filesystem::path(path), std::ios::binary)
        .write(reinterpret_cast<const char *>(file.data()), static_cast<std::streamsize>(file.size()));
    Picture read;
    host::PictureOrigin origin;
    if (host::MeasureSamples(path) <= kMostSamples && Read(file, way & 1, &read, &origin) && way == 3)
        WriteAndReadAgain(folder.File(L"again.tif"), read, origin);
    Require(PeakMemory() < 1u << 29, "small files need no large memory");
    return 0;
}
