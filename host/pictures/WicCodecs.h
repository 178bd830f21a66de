// The system's own picture codecs, as far as reader and writer share them.
#pragma once

#include "host/pictures/PictureFormat.h"

#include <wincodec.h>

#include <cstdio>

namespace host {

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
    ComPointer<IWICImagingFactory> factory;

    ~CodecSession();
};
bool OpenCodecs(CodecSession *session, std::string *why);

// False, with the code in words, for a failed call.
bool CheckCodec(HRESULT result, const char *what, std::string *why);

// How a pixel format lays out its samples: byte positions of the planes in a pixel.
struct PixelLayout {
    const WICPixelFormatGUID *format;
    int32_t depth;
    int32_t colourPlanes;
    bool hasAlpha;
    int32_t pixelSize;  // bytes
    int32_t offsets[4]; // bytes, in the order of a picture's planes
};
// Null for a format that is not taken as it is.
const PixelLayout *FindLayout(const WICPixelFormatGUID &format);
const PixelLayout *LayoutForWriting(int32_t depth, int32_t colourPlanes, bool hasAlpha);

} // namespace host
