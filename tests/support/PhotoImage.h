// Photos of the file system as images for tests.
#pragma once

#include "engine/image/ImageBuffer.h"

#include <filesystem>

// An 8-bit colour photo. False, with *image unchanged, when it cannot be read as one.
bool ReadPhotoImage(const std::filesystem::path &path, ImageBuffer *image);
