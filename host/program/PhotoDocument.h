// The way from a picture file's samples to a host's document and back.
#pragma once

#include "host/pictures/Picture.h"
#include "host/services/Document.h"

#include <cstdint>

namespace host {

// The host's form. 8-bit and float samples are moved out of the picture; 16-bit ones stay behind, so that
// PutDocument can put them back where nothing changed.
Document TakeDocument(Picture &picture);
// The filtered samples, into the picture that TakeDocument was called with. A 16-bit sample of which the
// host's form is unchanged keeps its value exactly.
void PutDocument(Document &&document, Picture &picture);

// 0..65535 to the host's 0..32768 and back, to nearest; larger host values count as 32768.
constexpr uint16_t ToHost16(uint16_t sample) {
    return static_cast<uint16_t>((static_cast<uint32_t>(sample) * 32768u + 32767u) / 65535u);
}
constexpr uint16_t FromHost16(uint16_t sample) {
    const uint32_t bounded = sample > 32768 ? 32768u : sample;
    return static_cast<uint16_t>((bounded * 65535u + 16384u) / 32768u);
}

} // namespace host
