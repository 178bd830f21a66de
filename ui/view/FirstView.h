// Where the view stands when the light source table has become ready and nobody has moved it. Dialog's
// thread.
#pragma once

#include <cstdint>

// A view without a star moves to the brightest light that has one.
void ShowSomeStar(int32_t threshold);
