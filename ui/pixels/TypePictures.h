// A small picture of each effect type, drawn by the renderer.
#pragma once

#include <cstdint>

constexpr int32_t kTypePictureSide = 96; // pixels

// Draws them, once for the life of the program, on the thread that renders and before its first render: the
// image's geometry is another one meanwhile.
void DrawTypePictures();

// The picture of a type's index in the table of types, reduced to side × side pixels, at most its own: rows
// from the top, 0x00RRGGBB. Any thread. False before the pictures are drawn, or when there was no memory.
bool ShrinkTypePicture(int32_t type, int32_t side, uint32_t *pixels);
