// BMP, through the system's own codec.
#include <initguid.h>

#include "host/pictures/BmpFiles.h"

#include "host/base/SystemText.h"

#include <wincodec.h>

#include <algorithm>
#include <cstdio>

namespace host {

constexpr int32_t kRowsAtOnce = 64;
constexpr size_t kBgr = 3;

// Holds one COM reference and gives it back.
template <typename Interface> struct ComPointer {
    Interface *pointer = nullptr;

    ComPointer() = default;
    ComPointer(const ComPointer &) = delete;
    ComPointer &operator=(const ComPointer &) = delete;
    ~ComPointer() {
        if (pointer)
            pointer->Release();
    }
    Interface *operator->() const { return pointer; }
    Interface **Slot() { return &pointer; }
};

// COM and the codecs' factory for the length of one reading or writing.
struct CodecSession {
    HRESULT comResult = E_FAIL;
    IWICImagingFactory *factory = nullptr;

    ~CodecSession() {
        if (factory)
            factory->Release();
        if (SUCCEEDED(comResult))
            CoUninitialize();
    }
};

static bool CheckCodec(HRESULT result, const char *what, std::string *why) {
    if (SUCCEEDED(result))
        return true;
    char code[32];
    std::snprintf(code, sizeof(code), " (code 0x%08lX)", static_cast<unsigned long>(result));
    return Fail(why, what + std::string(code));
}

static bool OpenCodecs(CodecSession *session, std::string *why) {
    // A thread that already has another apartment can use the codecs all the same.
    session->comResult = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    return CheckCodec(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                       IID_IWICImagingFactory, reinterpret_cast<void **>(&session->factory)),
                      "the system's picture codecs are not available", why);
}

// Plain 24-bit colour of whatever the file holds.
static bool OpenColours(IWICImagingFactory *factory, const Bytes &file, IWICStream *stream,
                        IWICFormatConverter *converter, std::string *why) {
    ComPointer<IWICBitmapDecoder> decoder;
    ComPointer<IWICBitmapFrameDecode> frame;
    // The codecs do not write to the memory, though the interface asks for more than const.
    HRESULT result =
        stream->InitializeFromMemory(const_cast<BYTE *>(file.data()), static_cast<DWORD>(file.size()));
    if (SUCCEEDED(result))
        result =
            factory->CreateDecoderFromStream(stream, nullptr, WICDecodeMetadataCacheOnDemand, decoder.Slot());
    if (SUCCEEDED(result))
        result = decoder->GetFrame(0, frame.Slot());
    if (SUCCEEDED(result))
        result = converter->Initialize(frame.pointer, GUID_WICPixelFormat24bppBGR, WICBitmapDitherTypeNone,
                                       nullptr, 0.0, WICBitmapPaletteTypeCustom);
    return CheckCodec(result, "the file is damaged or of an unusual kind", why);
}

static bool TakeColours(IWICFormatConverter *converter, Picture *picture, std::string *why) {
    const size_t width = static_cast<size_t>(picture->width);
    Bytes rows(width * kBgr * kRowsAtOnce);
    for (int32_t y = 0; y < picture->height; y += kRowsAtOnce) {
        const int32_t count = std::min(kRowsAtOnce, picture->height - y);
        const WICRect part = {0, y, picture->width, count};
        if (!CheckCodec(converter->CopyPixels(&part, static_cast<UINT>(width * kBgr),
                                              static_cast<UINT>(rows.size()), rows.data()),
                        "the file is damaged or ends early", why))
            return false;
        const size_t first = static_cast<size_t>(y) * width;
        for (size_t i = 0; i < width * static_cast<size_t>(count); i++)
            for (size_t plane = 0; plane < kBgr; plane++)
                picture->planes[plane][first + i] = rows[i * kBgr + (kBgr - 1 - plane)];
    }
    return true;
}

bool ReadBmp(const Bytes &file, Picture *picture, std::string *why) {
    CodecSession session;
    ComPointer<IWICStream> stream;
    ComPointer<IWICFormatConverter> converter;
    UINT width = 0, height = 0;
    if (!OpenCodecs(&session, why) ||
        !CheckCodec(session.factory->CreateStream(stream.Slot()), "no codec stream", why) ||
        !CheckCodec(session.factory->CreateFormatConverter(converter.Slot()), "no converter", why) ||
        !OpenColours(session.factory, file, stream.pointer, converter.pointer, why) ||
        !CheckCodec(converter->GetSize(&width, &height), "it has no size", why) ||
        !CheckPictureSize(width, height, why))
        return false;
    // The format packs eight pixels into a byte at most, its run lengths aside, of which 255 make two.
    if (uint64_t{width} * height / 128 > file.size())
        return Fail(why, "the file ends early");
    Picture read = MakePicture(static_cast<int32_t>(width), static_cast<int32_t>(height), 8, 3, false);
    if (!TakeColours(converter.pointer, &read, why))
        return false;
    if (AreColourPlanesEqual(read))
        CollapseToGrey(read);
    *picture = std::move(read);
    return true;
}

static HRESULT WriteRows(IWICBitmapFrameEncode *frame, const Picture &picture) {
    const size_t width = static_cast<size_t>(picture.width);
    const size_t stride = (width * kBgr + 3) / 4 * 4;
    Bytes rows(stride * kRowsAtOnce);
    HRESULT result = S_OK;
    for (int32_t y = 0; SUCCEEDED(result) && y < picture.height; y += kRowsAtOnce) {
        const int32_t count = std::min(kRowsAtOnce, picture.height - y);
        for (int32_t row = 0; row < count; row++)
            for (size_t plane = 0; plane < kBgr; plane++) {
                const uint8_t *from = picture.planes[picture.colourPlanes == 3 ? plane : 0].data() +
                                      static_cast<size_t>(y + row) * width;
                uint8_t *to = rows.data() + static_cast<size_t>(row) * stride + (kBgr - 1 - plane);
                for (size_t x = 0; x < width; x++)
                    to[x * kBgr] = from[x];
            }
        result = frame->WritePixels(static_cast<UINT>(count), static_cast<UINT>(stride),
                                    static_cast<UINT>(stride * static_cast<size_t>(count)), rows.data());
    }
    return result;
}

// In memory, so that the output file keeps one owner. Always in colour: the codec knows no grey.
static HRESULT Encode(IWICImagingFactory *factory, IStream *stream, const Picture &picture) {
    ComPointer<IWICBitmapEncoder> encoder;
    ComPointer<IWICBitmapFrameEncode> frame;
    WICPixelFormatGUID format = GUID_WICPixelFormat24bppBGR;
    HRESULT result = factory->CreateEncoder(GUID_ContainerFormatBmp, nullptr, encoder.Slot());
    if (SUCCEEDED(result))
        result = encoder->Initialize(stream, WICBitmapEncoderNoCache);
    if (SUCCEEDED(result))
        result = encoder->CreateNewFrame(frame.Slot(), nullptr);
    if (SUCCEEDED(result))
        result = frame->Initialize(nullptr);
    if (SUCCEEDED(result))
        result = frame->SetSize(static_cast<UINT>(picture.width), static_cast<UINT>(picture.height));
    if (SUCCEEDED(result))
        result = frame->SetPixelFormat(&format);
    // A codec may take another format than the wanted one and still say yes.
    if (SUCCEEDED(result) && !IsEqualGUID(format, GUID_WICPixelFormat24bppBGR))
        result = E_FAIL;
    if (SUCCEEDED(result))
        result = WriteRows(frame.pointer, picture);
    if (SUCCEEDED(result))
        result = frame->Commit();
    return SUCCEEDED(result) ? encoder->Commit() : result;
}

static bool AppendStream(IStream *stream, OutputFile *file, std::string *why) {
    STATSTG status = {};
    HGLOBAL memory = nullptr;
    HRESULT result = stream->Stat(&status, STATFLAG_NONAME);
    if (SUCCEEDED(result))
        result = GetHGlobalFromStream(stream, &memory);
    const void *bytes = SUCCEEDED(result) ? GlobalLock(memory) : nullptr;
    if (!bytes)
        return CheckCodec(FAILED(result) ? result : E_OUTOFMEMORY, "the codec failed", why);
    const bool isWritten = AppendOutput(file, bytes, static_cast<size_t>(status.cbSize.QuadPart), why);
    GlobalUnlock(memory);
    return isWritten;
}

bool WriteBmp(const Picture &picture, OutputFile *file, std::string *why) {
    CodecSession session;
    ComPointer<IStream> stream;
    return OpenCodecs(&session, why) &&
           CheckCodec(CreateStreamOnHGlobal(nullptr, TRUE, stream.Slot()), "not enough memory", why) &&
           CheckCodec(Encode(session.factory, stream.pointer, picture), "the codec failed", why) &&
           AppendStream(stream.pointer, file, why);
}

} // namespace host
