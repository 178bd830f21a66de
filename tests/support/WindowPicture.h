// What a window shows, as pixels.
#pragma once

#include <cstdint>
#include <vector>
#include <windows.h>

// Top-down, 32 bits a pixel, red in bits 16 to 23.
struct Picture {
    int width = 0, height = 0;
    std::vector<uint32_t> pixels;
};

inline uint32_t PixelAt(const Picture &picture, int x, int y) {
    return picture.pixels[static_cast<size_t>(y) * picture.width + x] & 0xFFFFFF;
}

// The whole window, or its client area, with all child windows as they were painted last.
Picture CaptureWindow(HWND window);
Picture CaptureClient(HWND window);
