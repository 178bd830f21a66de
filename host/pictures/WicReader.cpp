// PNG, JPEG, TIFF, BMP and whatever else the system's codecs read.
#include "host/base/SystemText.h"
#include "host/pictures/PictureMetadata.h"
#include "host/pictures/TiffDirectory.h"
#include "host/pictures/WicCodecs.h"

#include <algorithm>

namespace host {

// What the codecs would take without a word but read wrongly, or fail with a number only.
static bool CheckContainer(const Bytes &file, std::string *why) {
    TiffDirectory tiff;
    if (ReadTiffDirectory(file.data(), file.size(), &tiff)) {
        const uint32_t compression = TiffNumber(tiff, kTiffCompression, 1);
        if (TiffNumber(tiff, kTiffPlanar, 1) == 2 && TiffNumber(tiff, kTiffSamples, 1) > 1)
            return Fail(why, "a compressed TIFF file with one plane after the other is not supported");
        if (compression == 6 || compression == 7)
            return Fail(why, "a TIFF file with JPEG compression is not supported");
    }
    JpegInfo jpeg;
    if (ReadJpegInfo(file, &jpeg) && !jpeg.isComplete)
        return Fail(why, "the file ends early");
    return true;
}

static bool OpenFrame(IWICImagingFactory *factory, const Bytes &file, IWICStream *stream,
                      IWICBitmapFrameDecode **frame, std::string *why) {
    ComPointer<IWICBitmapDecoder> decoder;
    // The codecs do not write to the memory, though the interface asks for more than const.
    HRESULT result =
        stream->InitializeFromMemory(const_cast<BYTE *>(file.data()), static_cast<DWORD>(file.size()));
    if (SUCCEEDED(result))
        result =
            factory->CreateDecoderFromStream(stream, nullptr, WICDecodeMetadataCacheOnDemand, decoder.Slot());
    if (!CheckCodec(result, "it is not a picture of a known format, or it is damaged", why))
        return false;
    return CheckCodec(decoder->GetFrame(0, frame), "its first picture cannot be read", why);
}

// Palettes, few bits, CMYK and premultiplied 8-bit become plain 8-bit. Deeper formats are not converted:
// samples would be lost without a word.
static bool ConvertTo8Bit(IWICImagingFactory *factory, IWICBitmapSource *frame, IWICBitmapSource **converted,
                          std::string *why) {
    for (const WICPixelFormatGUID *format : {&GUID_WICPixelFormat32bppBGRA, &GUID_WICPixelFormat24bppBGR}) {
        ComPointer<IWICFormatConverter> converter;
        HRESULT result = factory->CreateFormatConverter(converter.Slot());
        if (SUCCEEDED(result))
            result = converter->Initialize(frame, *format, WICBitmapDitherTypeNone, nullptr, 0.0,
                                           WICBitmapPaletteTypeCustom);
        if (FAILED(result))
            continue;
        *converted = converter.pointer;
        converter.pointer = nullptr;
        return true;
    }
    return Fail(why, "its kind of pixels is not supported");
}

static bool IsConvertible(const WICPixelFormatGUID &format) {
    for (const WICPixelFormatGUID *known :
         {&GUID_WICPixelFormat1bppIndexed, &GUID_WICPixelFormat2bppIndexed, &GUID_WICPixelFormat4bppIndexed,
          &GUID_WICPixelFormat8bppIndexed, &GUID_WICPixelFormatBlackWhite, &GUID_WICPixelFormat2bppGray,
          &GUID_WICPixelFormat4bppGray, &GUID_WICPixelFormat16bppBGR555, &GUID_WICPixelFormat16bppBGR565,
          &GUID_WICPixelFormat16bppBGRA5551, &GUID_WICPixelFormat32bppPBGRA, &GUID_WICPixelFormat32bppPRGBA,
          &GUID_WICPixelFormat32bppCMYK})
        if (IsEqualGUID(*known, format))
            return true;
    return false;
}

static bool CheckRoom(const Bytes &file, uint64_t width, uint64_t height, const PixelLayout &layout,
                      std::string *why) {
    if (!CheckPictureSize(width, height, why))
        return false;
    const uint64_t raw = width * height * static_cast<uint64_t>(layout.pixelSize);
    return raw / kMostCompression <= file.size() || Fail(why, "the file ends early");
}

static void TakeRows(const Bytes &rows, const PixelLayout &layout, size_t firstPixel, size_t count,
                     Picture *picture) {
    const size_t size = static_cast<size_t>(layout.depth / 8);
    const size_t step = static_cast<size_t>(layout.pixelSize);
    for (size_t plane = 0; plane < picture->planes.size(); plane++) {
        uint8_t *to = picture->planes[plane].data() + firstPixel * size;
        const uint8_t *from = rows.data() + layout.offsets[plane];
        for (size_t i = 0; i < count; i++)
            for (size_t byte = 0; byte < size; byte++)
                to[i * size + byte] = from[i * step + byte];
    }
}

static bool CopyPixels(IWICBitmapSource *source, const PixelLayout &layout, Picture *picture,
                       std::string *why) {
    const uint32_t stride = static_cast<uint32_t>(picture->width * layout.pixelSize);
    Bytes rows(static_cast<size_t>(stride) * static_cast<size_t>(kRowsAtOnce));
    for (int32_t y = 0; y < picture->height; y += kRowsAtOnce) {
        const int32_t count = std::min(kRowsAtOnce, picture->height - y);
        const WICRect rectangle = {0, y, picture->width, count};
        const HRESULT result =
            source->CopyPixels(&rectangle, stride, stride * static_cast<uint32_t>(count), rows.data());
        if (!CheckCodec(result, "its samples cannot be read; the file is damaged or ends early", why))
            return false;
        TakeRows(rows, layout, static_cast<size_t>(y) * static_cast<size_t>(picture->width),
                 static_cast<size_t>(count) * static_cast<size_t>(picture->width), picture);
    }
    return true;
}

// The one profile that a PNG holds.
static Bytes ReadCodecProfile(IWICImagingFactory *factory, IWICBitmapFrameDecode *frame) {
    ComPointer<IWICColorContext> context;
    IWICColorContext *contexts[1] = {};
    UINT count = 0, length = 0;
    if (FAILED(factory->CreateColorContext(context.Slot())))
        return {};
    contexts[0] = context.pointer;
    if (FAILED(frame->GetColorContexts(1, contexts, &count)) || count == 0 ||
        FAILED(context->GetProfileBytes(0, nullptr, &length)))
        return {};
    Bytes profile(length);
    if (length == 0 || FAILED(context->GetProfileBytes(length, profile.data(), &length)))
        return {};
    return profile;
}

static bool IsOpaque(const Picture &picture) {
    const Bytes &alpha = picture.planes.back();
    return std::all_of(alpha.begin(), alpha.end(), [](uint8_t byte) { return byte == 255; });
}

// Takes back what the codecs or a conversion added: colour to grey files, transparency to palettes.
static void TakeBackAdditions(const Bytes &file, bool wasConverted, Picture *picture) {
    const int32_t pngType = PngColourType(file);
    TiffDirectory tiff;
    const bool isGreyTiff = ReadTiffDirectory(file.data(), file.size(), &tiff) &&
                            TiffNumber(tiff, kTiffPhotometric, kTiffRgb) < kTiffRgb;
    const bool mayBeGrey = wasConverted || pngType == 0 || pngType == 4 || isGreyTiff;
    if (mayBeGrey && AreColourPlanesEqual(*picture))
        CollapseToGrey(*picture);
    if (wasConverted && picture->hasAlpha && IsOpaque(*picture)) {
        picture->planes.pop_back();
        picture->hasAlpha = false;
    }
}

static bool ReadFrame(const Bytes &file, IWICImagingFactory *factory, IWICBitmapFrameDecode *frame,
                      Picture *picture, std::string *why) {
    WICPixelFormatGUID format;
    UINT width = 0, height = 0;
    ComPointer<IWICBitmapSource> converted;
    if (!CheckCodec(frame->GetPixelFormat(&format), "it has no pixel format", why) ||
        !CheckCodec(frame->GetSize(&width, &height), "it has no size", why))
        return false;
    IWICBitmapSource *source = frame;
    if (!FindLayout(format)) {
        if (!IsConvertible(format))
            return Fail(why, "its kind of pixels is not supported");
        if (!ConvertTo8Bit(factory, frame, converted.Slot(), why))
            return false;
        source = converted.pointer;
        if (!CheckCodec(source->GetPixelFormat(&format), "it has no pixel format", why))
            return false;
    }
    const PixelLayout *layout = FindLayout(format);
    if (!layout)
        return Fail(why, "its kind of pixels is not supported");
    if (!CheckRoom(file, width, height, *layout, why))
        return false;
    Picture read = MakePicture(static_cast<int32_t>(width), static_cast<int32_t>(height), layout->depth,
                               layout->colourPlanes, layout->hasAlpha);
    if (!CopyPixels(source, *layout, &read, why))
        return false;
    TakeBackAdditions(file, source != frame, &read);
    ApplyMetadata(file, IsPng(file) ? ReadCodecProfile(factory, frame) : Bytes(), &read);
    *picture = std::move(read);
    return true;
}

bool ReadWithCodecs(const Bytes &file, Picture *picture, std::string *why) {
    if (!CheckContainer(file, why))
        return false;
    CodecSession session;
    ComPointer<IWICStream> stream;
    ComPointer<IWICBitmapFrameDecode> frame;
    if (!OpenCodecs(&session, why) ||
        !CheckCodec(session.factory->CreateStream(stream.Slot()), "no codec stream", why) ||
        !OpenFrame(session.factory.pointer, file, stream.pointer, frame.Slot(), why))
        return false;
    return ReadFrame(file, session.factory.pointer, frame.pointer, picture, why);
}

} // namespace host
