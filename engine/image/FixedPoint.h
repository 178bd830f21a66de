// Unsigned 32-bit fractions of full scale, in which 4294967294 stands for 1.0, their product in the two
// precision modes, and the process-wide mode and visibility floor.
#pragma once

#include <cstdint>

constexpr uint32_t kFractionOne = 4294967294u; // 2^32 - 2: meant so, one less than the largest value
constexpr uint32_t kFullIntensity = 0xFFFFFF;  // full scale of a working pixel's channel

constexpr uint32_t kFloor8Bit = 16383;
constexpr uint32_t kFloor16Bit = 4095;
constexpr uint32_t kFloor32Bit = 2047; // smaller than the 16-bit floor: meant so
constexpr uint32_t kFloorPreview = 65535;

// Precision mode (true: precise) and visibility floor. One run at a time uses them, so neither is locked.
// Precise: set by the table's task before it analyses (TableBuild), and by the host's thread before the final
// render (FinalRender) and a diagnostic caller's pictures (KeptRun), while no preview runs. Fast: set by the
// preview's task, once the table is complete (ProxyUpdateTask).
extern bool gPreciseMode;
extern uint32_t gFloor;
void UsePreciseMode(int32_t bytesPerSample); // of the image
void UseFastMode();

inline uint32_t FloorForBytesPerSample(int32_t bytesPerSample) {
    if (bytesPerSample == 2)
        return kFloor16Bit;
    return bytesPerSample == 4 ? kFloor32Bit : kFloor8Bit;
}

inline uint32_t MulPrecise(uint32_t a, uint32_t b) {
    return static_cast<uint32_t>((static_cast<uint64_t>(a) * b) >> 32);
}

// The preview's cheap form. The operand near 1.0 goes first and loses 18 bits, the small one second and loses
// only 14: the other way round every entry laid would lose 1/64 of its brightness.
inline uint32_t MulFast(uint32_t nearOne, uint32_t small) {
    return (nearOne >> 18) * (small >> 14);
}

inline uint32_t Mul(uint32_t nearOne, uint32_t small) {
    return gPreciseMode ? MulPrecise(nearOne, small) : MulFast(nearOne, small);
}
