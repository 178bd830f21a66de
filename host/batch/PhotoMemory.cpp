#include "host/batch/PhotoMemory.h"

#include "host/base/FileBytes.h"
#include "host/pictures/PictureMeasure.h"

#include <algorithm>

namespace host {

constexpr uint64_t kWorkerMemory = 60u << 20; // without a photo
constexpr uint64_t kCopies = 4;               // of the samples that live at a time
constexpr uint64_t kCompression = 3;          // of a file of which only the length is known

// The file itself lies in memory too while it is read.
uint64_t EstimateMemory(const std::wstring &path) {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (!GetFileAttributesExW(NativePath(path).c_str(), GetFileExInfoStandard, &data))
        return kWorkerMemory;
    const uint64_t length = uint64_t{data.nFileSizeHigh} << 32 | data.nFileSizeLow;
    const uint64_t samples = MeasureSamples(NativePath(path));
    return kWorkerMemory + kCopies * (samples != 0 ? samples : length * kCompression) + length;
}

uint64_t MemoryToUse() {
    MEMORYSTATUSEX memory = {};
    memory.dwLength = sizeof(memory);
    return GlobalMemoryStatusEx(&memory) ? memory.ullAvailPhys / 2 : UINT64_MAX;
}

} // namespace host
