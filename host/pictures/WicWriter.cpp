// PNG, JPEG and BMP through the system's codecs. They are encoded in memory, so that the colour profile,
// which the codecs cannot write, can be put in.
#include "host/pictures/PictureMetadata.h"
#include "host/pictures/WicCodecs.h"

#include <algorithm>

namespace host {

constexpr float kJpegQuality = 0.95f;

static HRESULT SetQuality(IPropertyBag2 *options) {
    wchar_t name[] = L"ImageQuality";
    PROPBAG2 option = {};
    option.pstrName = name;
    VARIANT value = {};
    value.vt = VT_R4;
    value.fltVal = kJpegQuality;
    return options->Write(1, &option, &value);
}

// A codec may take another format than the wanted one and still say yes.
static bool BeginFrame(IWICBitmapFrameEncode *frame, IPropertyBag2 *options, bool isJpeg,
                       const Picture &picture, const PixelLayout &layout, std::string *why) {
    HRESULT result = isJpeg ? SetQuality(options) : S_OK;
    if (SUCCEEDED(result))
        result = frame->Initialize(options);
    if (SUCCEEDED(result))
        result = frame->SetSize(static_cast<UINT>(picture.width), static_cast<UINT>(picture.height));
    if (SUCCEEDED(result))
        result = frame->SetResolution(72.0, 72.0);
    WICPixelFormatGUID format = *layout.format;
    if (SUCCEEDED(result))
        result = frame->SetPixelFormat(&format);
    if (!CheckCodec(result, "the codec does not take the picture", why))
        return false;
    if (IsEqualGUID(format, *layout.format))
        return true;
    *why = "the codec does not take this depth";
    return false;
}

static void PackRows(const Picture &picture, const PixelLayout &layout, bool swaps, int32_t first,
                     int32_t count, Bytes *rows) {
    const size_t size = static_cast<size_t>(layout.depth / 8);
    const size_t step = static_cast<size_t>(layout.pixelSize);
    const size_t width = static_cast<size_t>(picture.width);
    const size_t pixels = static_cast<size_t>(count) * width;
    rows->resize(pixels * step);
    const size_t planes = static_cast<size_t>(layout.colourPlanes) + (layout.hasAlpha ? 1 : 0);
    for (size_t plane = 0; plane < planes; plane++) {
        // A grey picture with transparency is written in colour: its one colour plane serves three times.
        const bool isAlpha = plane == static_cast<size_t>(layout.colourPlanes);
        const size_t source = isAlpha ? picture.planes.size() - 1 : picture.colourPlanes == 1 ? 0 : plane;
        const uint8_t *from = picture.planes[source].data() + static_cast<size_t>(first) * width * size;
        uint8_t *to = rows->data() + layout.offsets[plane];
        for (size_t i = 0; i < pixels; i++)
            for (size_t byte = 0; byte < size; byte++)
                to[i * step + byte] = from[i * size + (swaps ? size - 1 - byte : byte)];
    }
}

static bool WriteRows(IWICBitmapFrameEncode *frame, const Picture &picture, const PixelLayout &layout,
                      bool swaps, std::string *why) {
    const UINT stride = static_cast<UINT>(picture.width * layout.pixelSize);
    Bytes rows;
    for (int32_t y = 0; y < picture.height; y += kRowsAtOnce) {
        const int32_t count = std::min(kRowsAtOnce, picture.height - y);
        PackRows(picture, layout, swaps, y, count, &rows);
        const HRESULT result = frame->WritePixels(static_cast<UINT>(count), stride,
                                                  stride * static_cast<UINT>(count), rows.data());
        if (!CheckCodec(result, "the codec failed", why))
            return false;
    }
    return true;
}

static bool EncodeInto(IWICImagingFactory *factory, IStream *stream, const GUID &container,
                       const Picture &picture, const PixelLayout &layout, bool swaps, std::string *why) {
    ComPointer<IWICBitmapEncoder> encoder;
    ComPointer<IWICBitmapFrameEncode> frame;
    ComPointer<IPropertyBag2> options;
    HRESULT result = factory->CreateEncoder(container, nullptr, encoder.Slot());
    if (SUCCEEDED(result))
        result = encoder->Initialize(stream, WICBitmapEncoderNoCache);
    if (SUCCEEDED(result))
        result = encoder->CreateNewFrame(frame.Slot(), options.Slot());
    if (FAILED(result) || !frame.pointer || !options.pointer)
        return CheckCodec(FAILED(result) ? result : E_POINTER, "no codec for this format", why);
    const bool isJpeg = IsEqualGUID(container, GUID_ContainerFormatJpeg);
    if (!BeginFrame(frame.pointer, options.pointer, isJpeg, picture, layout, why) ||
        !WriteRows(frame.pointer, picture, layout, swaps, why))
        return false;
    result = frame->Commit();
    if (SUCCEEDED(result))
        result = encoder->Commit();
    return CheckCodec(result, "the codec failed", why);
}

static bool TakeStream(IStream *stream, Bytes *bytes, std::string *why) {
    STATSTG status = {};
    HGLOBAL memory = nullptr;
    HRESULT result = stream->Stat(&status, STATFLAG_NONAME);
    if (SUCCEEDED(result))
        result = GetHGlobalFromStream(stream, &memory);
    const uint8_t *first = SUCCEEDED(result) ? static_cast<const uint8_t *>(GlobalLock(memory)) : nullptr;
    if (!first)
        return CheckCodec(FAILED(result) ? result : E_OUTOFMEMORY, "the codec failed", why);
    bytes->assign(first, first + status.cbSize.QuadPart);
    GlobalUnlock(memory);
    return true;
}

// A BMP is always in colour: its codec knows no grey.
static bool Encode(const GUID &container, const Picture &picture, bool swaps, Bytes *bytes,
                   std::string *why) {
    const bool hasAlpha = picture.hasAlpha && IsEqualGUID(container, GUID_ContainerFormatPng);
    const bool isColour = hasAlpha || IsEqualGUID(container, GUID_ContainerFormatBmp);
    const int32_t colourPlanes = isColour ? 3 : picture.colourPlanes;
    const PixelLayout *layout = LayoutForWriting(picture.depth, colourPlanes, hasAlpha);
    CodecSession session;
    ComPointer<IStream> stream;
    if (!layout || !OpenCodecs(&session, why) ||
        !CheckCodec(CreateStreamOnHGlobal(nullptr, TRUE, stream.Slot()), "not enough memory", why) ||
        !EncodeInto(session.factory.pointer, stream.pointer, container, picture, *layout, swaps, why) ||
        !TakeStream(stream.pointer, bytes, why))
        return false;
    if (DoesProfileFit(picture.iccProfile, colourPlanes))
        InsertProfile(picture.iccProfile, bytes);
    return true;
}

// Some systems' encoder leaves the bytes of 16-bit samples in the machine's order, which the format does not
// allow. One sample, written and read back, tells.
static bool DoesEncoderSwap() {
    constexpr uint16_t kProbe = 0x1234;
    Picture probe = MakePicture(1, 1, 16, 1, false);
    std::memcpy(probe.planes[0].data(), &kProbe, sizeof(kProbe));
    Bytes bytes;
    Picture readBack;
    std::string why;
    return Encode(GUID_ContainerFormatPng, probe, false, &bytes, &why) &&
           ReadWithCodecs(bytes, &readBack, &why) && readBack.planes != probe.planes;
}

bool WritePng(const Picture &picture, OutputFile *file, std::string *why) {
    Bytes bytes;
    const bool swaps = picture.depth == 16 && DoesEncoderSwap();
    return Encode(GUID_ContainerFormatPng, picture, swaps, &bytes, why) &&
           AppendOutput(file, bytes.data(), bytes.size(), why);
}

bool WriteJpeg(const Picture &picture, OutputFile *file, std::string *why) {
    Bytes bytes;
    return Encode(GUID_ContainerFormatJpeg, picture, false, &bytes, why) &&
           AppendOutput(file, bytes.data(), bytes.size(), why);
}

bool WriteBmp(const Picture &picture, OutputFile *file, std::string *why) {
    Bytes bytes;
    return Encode(GUID_ContainerFormatBmp, picture, false, &bytes, why) &&
           AppendOutput(file, bytes.data(), bytes.size(), why);
}

} // namespace host
