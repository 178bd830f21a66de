// Rows of pixels to rows of planes and back.
#pragma once

#include <cstddef>
#include <cstdint>

namespace host {

// `count` pixels of `bands` samples of 1, 2 or 4 bytes; the first `planes` samples of each go to one plane
// each.
void SplitPixels(uint8_t *const *to, size_t planes, const uint8_t *from, size_t bands, size_t count,
                 size_t size);
// The other way: all samples of a pixel are given.
void JoinPixels(uint8_t *to, const uint8_t *const *from, size_t planes, size_t count, size_t size);

// Samples at a step from each other; the steps are in bytes.
void CopyRow(uint8_t *to, size_t toStep, const uint8_t *from, size_t fromStep, size_t count, size_t size);

} // namespace host
