#include "tests/support/PhotoImage.h"

#include "host/pictures/PictureFiles.h"

#include <cstring>
#include <string>

bool ReadPhotoImage(const std::filesystem::path &path, ImageBuffer *image) {
    host::Picture picture;
    std::string why;
    if (!std::filesystem::exists(path) || !host::ReadPicture(path.wstring(), &picture, &why))
        return false;
    const host::Document document = host::TakeDocument(picture);
    ImageBuffer photo{};
    if (document.colourPlanes != 3 || document.planes[0].size() != size_t(document.width) * document.height ||
        AllocateImageBuffer(kModeRgb8, 1, 0, {0, 0, document.width, document.height}, false, &photo,
                            nullptr) != kNoError)
        return false;
    for (size_t plane = 0; plane < 3; ++plane)
        memcpy(photo.planes[plane], document.planes[plane].data(), document.planes[plane].size());
    *image = photo;
    return true;
}
