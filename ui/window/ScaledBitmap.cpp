#include "ui/window/ScaledBitmap.h"

#include "diag/module/ModuleInstance.h"
#include "resources/ResourceIds.h"

HBITMAP LoadFittingBitmap(int pictureId, int count, SIZE room, SIZE *size) {
    for (int step = count; step > 0; --step) {
        const HBITMAP bitmap = static_cast<HBITMAP>(
            LoadImageA(ModuleInstance(), MAKEINTRESOURCEA(pictureId + step * kBitmapScaleStep), IMAGE_BITMAP,
                       0, 0, LR_CREATEDIBSECTION));
        BITMAP info = {};
        if (bitmap && GetObjectA(bitmap, sizeof info, &info) &&
            (step == 1 || (info.bmWidth <= room.cx && info.bmHeight <= room.cy))) {
            *size = {info.bmWidth, info.bmHeight};
            return bitmap;
        }
        if (bitmap)
            DeleteObject(bitmap);
    }
    return nullptr;
}
