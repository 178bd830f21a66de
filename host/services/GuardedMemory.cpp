#include "host/services/GuardedMemory.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace host {

constexpr size_t kGuardLength = 16;
constexpr uint8_t kNewByte = 0xCD;
constexpr uint8_t kFreedByte = 0xDD;

char *AllocateGuarded(size_t size) {
    if (size > static_cast<size_t>(kLargestBlock))
        return nullptr;
    char *data = static_cast<char *>(std::malloc(size + kGuardLength));
    if (data) {
        std::memset(data, kNewByte, size);
        std::memset(data + size, kGuardByte, kGuardLength);
    }
    return data;
}

bool FreeGuarded(char *data, size_t size) {
    const char *guard = data + size;
    const bool isIntact = std::all_of(guard, guard + kGuardLength,
                                      [](char byte) { return static_cast<uint8_t>(byte) == kGuardByte; });
    std::memset(data, kFreedByte, size);
    std::free(data);
    return isIntact;
}

} // namespace host
