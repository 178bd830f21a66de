#include <initguid.h>

#include "host/pictures/WicCodecs.h"

#include "host/base/SystemText.h"

namespace host {

CodecSession::~CodecSession() {
    if (factory.pointer)
        factory.pointer->Release();
    factory.pointer = nullptr;
    if (SUCCEEDED(comResult))
        CoUninitialize();
}

bool CheckCodec(HRESULT result, const char *what, std::string *why) {
    if (SUCCEEDED(result))
        return true;
    char code[32];
    std::snprintf(code, sizeof(code), "0x%08lX", static_cast<unsigned long>(result));
    *why = std::string(what) + " (code " + code + ")";
    return false;
}

bool OpenCodecs(CodecSession *session, std::string *why) {
    // A thread that already has another apartment can use the codecs all the same.
    session->comResult = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const HRESULT result =
        CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER, IID_IWICImagingFactory,
                         reinterpret_cast<void **>(session->factory.Slot()));
    return CheckCodec(result, "the system's picture codecs are not available", why);
}

static const PixelLayout kLayouts[] = {
    {&GUID_WICPixelFormat8bppGray, 8, 1, false, 1, {0}},
    {&GUID_WICPixelFormat16bppGray, 16, 1, false, 2, {0}},
    {&GUID_WICPixelFormat32bppGrayFloat, 32, 1, false, 4, {0}},
    {&GUID_WICPixelFormat24bppBGR, 8, 3, false, 3, {2, 1, 0}},
    {&GUID_WICPixelFormat24bppRGB, 8, 3, false, 3, {0, 1, 2}},
    {&GUID_WICPixelFormat32bppBGR, 8, 3, false, 4, {2, 1, 0}},
    {&GUID_WICPixelFormat32bppBGRA, 8, 3, true, 4, {2, 1, 0, 3}},
    {&GUID_WICPixelFormat32bppRGBA, 8, 3, true, 4, {0, 1, 2, 3}},
    {&GUID_WICPixelFormat48bppRGB, 16, 3, false, 6, {0, 2, 4}},
    {&GUID_WICPixelFormat48bppBGR, 16, 3, false, 6, {4, 2, 0}},
    {&GUID_WICPixelFormat64bppRGBA, 16, 3, true, 8, {0, 2, 4, 6}},
    {&GUID_WICPixelFormat64bppBGRA, 16, 3, true, 8, {4, 2, 0, 6}},
    {&GUID_WICPixelFormat96bppRGBFloat, 32, 3, false, 12, {0, 4, 8}},
    {&GUID_WICPixelFormat128bppRGBFloat, 32, 3, false, 16, {0, 4, 8}},
    {&GUID_WICPixelFormat128bppRGBAFloat, 32, 3, true, 16, {0, 4, 8, 12}},
};

const PixelLayout *FindLayout(const WICPixelFormatGUID &format) {
    for (const PixelLayout &layout : kLayouts)
        if (IsEqualGUID(*layout.format, format))
            return &layout;
    return nullptr;
}

const PixelLayout *LayoutForWriting(int32_t depth, int32_t colourPlanes, bool hasAlpha) {
    for (const PixelLayout &layout : kLayouts)
        if (layout.depth == depth && layout.colourPlanes == colourPlanes && layout.hasAlpha == hasAlpha)
            return &layout;
    return nullptr;
}

} // namespace host
