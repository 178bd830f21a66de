#include "host/program/PhotoDocument.h"

#include <cstring>
#include <utility>

namespace host {

static Bytes ToHostPlane(const Bytes &plane) {
    Bytes converted(plane.size());
    for (size_t i = 0; i < plane.size(); i += 2) {
        const uint16_t sample = ToHost16(NumberAt<uint16_t>(plane.data() + i));
        std::memcpy(converted.data() + i, &sample, sizeof(sample));
    }
    return converted;
}

Document TakeDocument(Picture &picture) {
    Document document;
    document.width = picture.width;
    document.height = picture.height;
    document.depth = picture.depth;
    document.colourPlanes = picture.colourPlanes;
    document.hasTransparency = picture.hasAlpha;
    document.iccProfile = picture.iccProfile;
    if (picture.depth != 16) {
        document.planes = std::move(picture.planes);
        return document;
    }
    for (const Bytes &plane : picture.planes)
        document.planes.push_back(ToHostPlane(plane));
    return document;
}

static void PutHostPlane(const Bytes &filtered, Bytes &plane) {
    for (size_t i = 0; i < plane.size(); i += 2) {
        const uint16_t after = NumberAt<uint16_t>(filtered.data() + i);
        if (after == ToHost16(NumberAt<uint16_t>(plane.data() + i)))
            continue;
        const uint16_t sample = FromHost16(after);
        std::memcpy(plane.data() + i, &sample, sizeof(sample));
    }
}

void PutDocument(Document &&document, Picture &picture) {
    if (picture.depth != 16) {
        picture.planes = std::move(document.planes);
        return;
    }
    for (size_t plane = 0; plane < picture.planes.size(); plane++)
        PutHostPlane(document.planes[plane], picture.planes[plane]);
}

} // namespace host
