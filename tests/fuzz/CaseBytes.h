// A case as a fuzzer hands it over: choices are taken from its bytes, front to back; behind the end all are
// 0.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t length); // each target defines it

struct CaseBytes {
    const uint8_t *bytes;
    size_t length;

    template <typename Number> Number Take() {
        Number number{};
        const size_t count = length < sizeof number ? length : sizeof number;
        if (count > 0)
            std::memcpy(&number, bytes, count);
        bytes += count;
        length -= count;
        return number;
    }
    // Both included; at most 65536 numbers. Small ranges take one byte.
    int32_t Pick(int32_t low, int32_t high) {
        const uint32_t span = static_cast<uint32_t>(high - low) + 1;
        return low + static_cast<int32_t>((span > 256 ? Take<uint16_t>() : Take<uint8_t>()) % span);
    }
};

// Ends the process, as a sanitizer does, when a result is not what it must be.
inline void Require(bool holds, const char *what) {
    if (holds)
        return;
    std::fprintf(stderr, "NOT SO: %s\n", what);
    std::abort();
}
