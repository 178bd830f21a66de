// Sine and rainbow tables over one turn, in tenths of a degree.
#pragma once

#include <cstdint>

constexpr int32_t kFullTurn = 3600;

// Read-only once built. An angle of 0 is the first entry.
extern float gSineTable[kFullTurn];       // sin of the angle
extern uint32_t gRainbowTable[kFullTurn]; // (1 + sin of the angle) / 2 as a fraction

// Fills both tables; does nothing when they are filled already. Before the first render, one thread.
void BuildAngleTables();

// Any angle as an index 0..3599.
inline int32_t ReduceAngle(int32_t angle) {
    const int32_t rest = angle % kFullTurn;
    return rest < 0 ? rest + kFullTurn : rest;
}
