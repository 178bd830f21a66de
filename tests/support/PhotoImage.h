// Photos of the file system as images for tests.
#pragma once

#include "engine/image/ImageBuffer.h"

#include <filesystem>

// A grey or colour photo of any depth. False, with *image unchanged, when it cannot be read.
bool ReadPhotoImage(const std::filesystem::path &path, ImageBuffer *image);
