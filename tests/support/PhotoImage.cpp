#include "tests/support/PhotoImage.h"

#include "host/pictures/PictureFiles.h"
#include "host/program/PhotoDocument.h"

#include <cstring>
#include <string>

bool ReadPhotoImage(const std::filesystem::path &path, ImageBuffer *image) {
    host::Picture picture;
    std::string why;
    if (!std::filesystem::exists(path) || !host::ReadPicture(path.wstring(), &picture, &why))
        return false;
    const host::Document document = host::TakeDocument(picture);
    ImageBuffer photo{};
    if (AllocateImageBuffer(document.colourPlanes == 1 ? kModeGray8 : kModeRgb8,
                            host::BytesPerSample(document), 0, {0, 0, document.width, document.height}, false,
                            &photo, nullptr) != kNoError)
        return false;
    for (int32_t plane = 0; plane < photo.colorPlanes; ++plane)
        memcpy(photo.planes[plane], document.planes[plane].data(), document.planes[plane].size());
    *image = photo;
    return true;
}
