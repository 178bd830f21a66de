// What became of one photo of a batch.
#pragma once

#include "host/sheet/SmallPicture.h"

#include <cstdint>
#include <string>
#include <vector>

namespace host {

enum class PhotoState { kDone, kFailed, kSkipped, kCancelled, kPlanned };

struct PhotoResult {
    PhotoState state = PhotoState::kCancelled;
    int status = 0;                                // an exit status, of kFailed
    std::string reason;                            // of all but kDone
    std::vector<std::string> losses, notes, boxes; // what the user should know
    int64_t lights = -1, stars = -1;               // -1: not told
    int64_t milliseconds = 0;
    SmallPicture before, after; // empty: not asked for
};

} // namespace host
