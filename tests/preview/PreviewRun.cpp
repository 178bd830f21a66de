#include "tests/preview/PreviewRun.h"

#include "engine/InitializationTask.h"
#include "render/RenderDriver.h"
#include "render/RenderState.h"
#include "render/shape/AngleTables.h"
#include "tests/support/NightScene.h"
#include "ui/preview/PreviewImages.h"
#include "ui/preview/ProxyUpdateTask.h"
#include "ui/window/DialogMessages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace {

constexpr ParameterSet kStrongStars = {{}, 70, 60, 150,           6,  50, 30, 50, 50, 40,
                                       50, 0,  {}, kStandardStar, 80, {}};

HWND MakeWindow() {
    return CreateWindowExA(0, "STATIC", "", WS_POPUP, 0, 0, 400, 300, nullptr, nullptr,
                           GetModuleHandleA(nullptr), nullptr);
}

} // namespace

PreviewRun::PreviewRun(int32_t width, int32_t height, int32_t lights, int32_t mode, int32_t bytesPerSample) {
    EXPECT_EQ(AllocateImageBuffer(mode, bytesPerSample, 0, {0, 0, width, height}, false, &image, nullptr),
              kNoError);
    PaintNightScene(MakeSceneLights(width, height, lights, 3), 0.05, 7, &image);
    Open();
}

PreviewRun::PreviewRun(const ImageBuffer &picture) : image(picture) {
    Open();
}

void PreviewRun::Open() {
    SetImageGeometry(image.bounds);
    BuildAngleTables();
    ResetRenderState();
    StartLightSourceTableInit(image);
    dialog = MakeWindow();
    display = MakeWindow();
}

PreviewRun::~PreviewRun() {
    StopProxyUpdateTask();
    StopLightSourceTableInit();
    CloseLightSourceTableThread();
    FreeRenderState();
    DestroyWindow(display);
    DestroyWindow(dialog);
    FreeImageBuffer(&image);
}

bool PreviewRun::Start(const void *profile, uint32_t profileBytes) {
    messages.clear();
    isTableReady = false;
    served = 0;
    return StartProxyUpdateTask(display, {&image, profile, profileBytes, dialog});
}

void PreviewRun::TakeMessages() {
    MSG message;
    while (PeekMessageA(&message, dialog, WM_APP, WM_APP + 100, PM_REMOVE)) {
        messages.push_back({message.message, message.wParam, message.lParam, GetTickCount()});
        isTableReady = isTableReady || message.message == kMsgTableReady;
        // While the table is being built its own progress may be 0 of 0.
        served +=
            isTableReady && message.message == kMsgProgress && message.wParam == 0 && message.lParam == 0;
    }
}

bool PreviewRun::WaitUntil(const std::function<bool()> &condition, uint32_t timeoutMs) {
    constexpr DWORD kLongestTurn = 50; // more is time in which the machine did not let the run go on
    const char *patience = std::getenv("BRILLATRIX_TEST_PATIENCE"); // times as long; counters are slow
    DWORD waited = 0, last = GetTickCount();
    for (;;) {
        TakeMessages();
        if (condition())
            return true;
        const DWORD turn = GetTickCount() - std::exchange(last, GetTickCount());
        waited += std::min(turn, kLongestTurn);
        if (waited >= timeoutMs * (patience ? std::strtoul(patience, nullptr, 10) : 1))
            return false;
        Sleep(1);
    }
}

bool PreviewRun::WaitFor(UINT wanted, uint32_t timeoutMs) {
    size_t seen = messages.size();
    return WaitUntil(
        [&] {
            for (; seen < messages.size(); ++seen)
                if (messages[seen].message == wanted)
                    return true;
            return false;
        },
        timeoutMs);
}

bool PreviewRun::WaitUntilServed(uint32_t timeoutMs) {
    return WaitUntil([&, before = served] { return served != before; }, timeoutMs);
}

bool PreviewRun::Serve(const PreviewRequest &request) {
    RequestPreview(request);
    return WaitUntilServed();
}

PreviewGeometry PreviewRun::View(double zoom, int32_t width, int32_t height) const {
    PreviewGeometry geometry{image.bounds, {1, 1, 1 + width, 1 + height}, 0, 0, zoom};
    const IntRect scaled = ScaledImage(geometry);
    geometry.centerX = (scaled.left + scaled.right) / 2;
    geometry.centerY = (scaled.top + scaled.bottom) / 2;
    return geometry;
}

std::vector<uint32_t> PreviewRun::Paint(const PreviewGeometry &geometry, uint32_t beside) const {
    const IntRect &area = geometry.display;
    const int32_t width = area.right, height = area.bottom;
    BITMAPINFO info{};
    info.bmiHeader = {sizeof info.bmiHeader, width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void *bits = nullptr;
    const HDC dc = CreateCompatibleDC(nullptr);
    const HBITMAP bitmap = CreateDIBSection(dc, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    const HGDIOBJ before = SelectObject(dc, bitmap);
    auto *pixels = static_cast<uint32_t *>(bits);
    std::fill_n(pixels, width * height, beside);
    const int32_t half = area.left + (area.right - area.left) / 2;
    EXPECT_TRUE(PaintPreviewImage(dc, {0, 0, half, height}, geometry));
    EXPECT_TRUE(PaintPreviewImage(dc, {half, 0, width + 50, height + 50}, geometry));
    GdiFlush();
    std::vector<uint32_t> painted;
    for (int32_t y = area.top; y < area.bottom; ++y)
        for (int32_t x = area.left; x < area.right; ++x)
            painted.push_back(pixels[y * width + x] & 0xFFFFFF);
    SelectObject(dc, before);
    DeleteObject(bitmap);
    DeleteDC(dc);
    return painted;
}

PreviewRequest MakeTestRequest(const PreviewGeometry &geometry, bool previewOn) {
    return MakePreviewRequest(geometry, previewOn, kStrongStars);
}

PreviewRequest MakeDefaultRequest(const PreviewGeometry &geometry, int16_t length) {
    ParameterSet parameters = kDefaultParameters;
    parameters.length = length;
    return MakePreviewRequest(geometry, true, parameters);
}
