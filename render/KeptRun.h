// What a run leaves for a diagnostic caller: its light source table, its analysis image and its settings, and
// the four pictures made of them. Host's thread, while no run is on.
#pragma once

#include "engine/table/LightSourceTable.h"
#include "render/shape/RenderSettings.h"

#include <cstdint>

// What the runs from now on keep. Asking for nothing also gives back what is kept now.
void ChooseWhatToKeep(bool lights, bool images);

// At the end of a run that ended well, while its table is still there: the table, taken out of the global
// one, or an empty one when nothing is to be kept. The caller hands it to KeepRun.
LightSourceTable TakeTableToKeep();
// When the task has ended and the global table is free: puts the table back there.
void KeepRun(const LightSourceTable &table, const RenderSettings &settings, int32_t bytesPerSample);
// Gives back all that is kept, the global table included.
void ForgetRun();

// Whether a run is kept now.
bool IsRunKept();
// The cut level of the kept run's threshold.
uint32_t KeptCutLevel();

constexpr int32_t kDebugPictures = 4;
constexpr int32_t kAnalysisPicture = 0, kShadedPicture = 1, kLightsPicture = 2, kStampPicture = 3;

// Where a picture's pixels lie: the area is in picture pixels, and `scale` document pixels each. Pictures of
// the image count from the document's corner, the star's picture from its light.
struct DebugPicturePlace {
    IntRect area;
    double scale;
};

// False when there is no such picture.
bool FindDebugPicture(int32_t choice, DebugPicturePlace *place);
// Fills the picture of the place just found: blue, green, red, 255 for each pixel, from the top row down.
// False when there is none or memory ran out.
bool DrawDebugPicture(int32_t choice, const DebugPicturePlace &place, uint8_t *bgra);
