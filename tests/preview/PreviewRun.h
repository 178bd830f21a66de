// A run with an image, its light source table, and a dialog and a display that nobody sees.
#pragma once

#include "engine/image/ImageBuffer.h"
#include "ui/pixels/PreviewGeometry.h"
#include "ui/preview/PreviewRequest.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>
#include <windows.h>

struct SentMessage {
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time; // when it was taken from the queue
};

struct PreviewRun {
    ImageBuffer image{};
    HWND dialog = nullptr, display = nullptr;
    std::vector<SentMessage> messages; // taken so far
    bool isTableReady = false;         // by the messages taken
    int served = 0;                    // requests that were served to their end, likewise

    // A generated night scene. The table is being built when the constructor returns.
    PreviewRun(int32_t width, int32_t height, int32_t lights, int32_t mode = 3, int32_t bytesPerSample = 1);
    explicit PreviewRun(const ImageBuffer &picture); // takes it over
    ~PreviewRun();
    PreviewRun(const PreviewRun &) = delete;
    PreviewRun &operator=(const PreviewRun &) = delete;

    bool Start(const void *profile = nullptr, uint32_t profileBytes = 0);
    // Asks for a preview and takes messages until a request has been served, or the time is over.
    bool Serve(const PreviewRequest &request);
    bool WaitUntilServed(uint32_t timeoutMs = 30000);
    // Takes messages until one of this kind is there, or until something holds.
    bool WaitFor(UINT message, uint32_t timeoutMs = 30000);
    bool WaitUntil(const std::function<bool()> &condition, uint32_t timeoutMs = 30000);
    void TakeMessages();

    // A view of the middle of the image.
    PreviewGeometry View(double zoom, int32_t width = 300, int32_t height = 200) const;
    // What the display shows of a view, painted piece by piece as the display does it: rows of the display's
    // width, 0xRRGGBB, and `beside` where nothing was painted.
    std::vector<uint32_t> Paint(const PreviewGeometry &geometry, uint32_t beside = 0x123456) const;

private:
    void Open();
};

// A request with strong stars.
PreviewRequest MakeTestRequest(const PreviewGeometry &geometry, bool previewOn = true);
// What a user has at first, with another length.
PreviewRequest MakeDefaultRequest(const PreviewGeometry &geometry, int16_t length);
