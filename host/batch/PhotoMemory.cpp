#include "host/batch/PhotoMemory.h"

#include "host/base/ByteStream.h"
#include "host/base/FileBytes.h"

#include <algorithm>

namespace host {

constexpr uint64_t kWorkerMemory = 60u << 20; // without a photo
constexpr uint64_t kCopies = 4;               // of the samples that live at a time
constexpr uint64_t kCompression = 3;          // of a file of which only the length is known
constexpr int kMostSegments = 1000;

static bool ReadAt(HANDLE file, uint64_t at, uint8_t *bytes, DWORD length) {
    LARGE_INTEGER place;
    place.QuadPart = static_cast<LONGLONG>(at);
    DWORD count = 0;
    return SetFilePointerEx(file, place, nullptr, FILE_BEGIN) &&
           ReadFile(file, bytes, length, &count, nullptr) && count == length;
}

// The frame's segment says how large it is; those before it are stepped over.
static uint64_t JpegSamples(HANDLE file) {
    uint8_t head[10];
    uint64_t at = 2;
    for (int i = 0; i < kMostSegments && ReadAt(file, at, head, sizeof(head)) && head[0] == 0xFF; i++) {
        const uint8_t kind = head[1];
        if (kind >= 0xC0 && kind <= 0xCF && kind != 0xC4 && kind != 0xC8 && kind != 0xCC)
            return uint64_t{NumberAt<uint16_t>(head + 5, ByteOrder::kBig)} *
                   NumberAt<uint16_t>(head + 7, ByteOrder::kBig) * head[9];
        at += 2u + NumberAt<uint16_t>(head + 2, ByteOrder::kBig);
    }
    return 0;
}

static uint64_t PngSamples(const uint8_t *head) {
    const uint64_t width = NumberAt<uint32_t>(head + 16, ByteOrder::kBig);
    const uint64_t height = NumberAt<uint32_t>(head + 20, ByteOrder::kBig);
    return width < 65536 && height < 65536 ? width * height * 3 * (head[24] > 8 ? 2 : 1) : 0;
}

static uint64_t SampleBytes(HANDLE file) {
    uint8_t head[26];
    LARGE_INTEGER size = {};
    GetFileSizeEx(file, &size);
    uint64_t bytes = 0;
    if (ReadAt(file, 0, head, sizeof(head)) && head[0] == 0xFF && head[1] == 0xD8)
        bytes = JpegSamples(file);
    else if (head[0] == 0x89 && head[1] == 'P')
        bytes = PngSamples(head);
    const auto length = static_cast<uint64_t>(size.QuadPart);
    return bytes != 0 ? bytes + length : length * kCompression;
}

uint64_t EstimateMemory(const std::wstring &path) {
    const HANDLE file = CreateFileW(NativePath(path).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return kWorkerMemory;
    const uint64_t bytes = SampleBytes(file);
    CloseHandle(file);
    return kWorkerMemory + kCopies * bytes;
}

uint64_t MemoryToUse() {
    MEMORYSTATUSEX memory = {};
    memory.dwLength = sizeof(memory);
    return GlobalMemoryStatusEx(&memory) ? memory.ullAvailPhys / 2 : UINT64_MAX;
}

} // namespace host
