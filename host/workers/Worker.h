// The worker's side of a batch: a process of its own that does photo after photo.
#pragma once

#include "host/workers/PhotoResult.h"
#include "host/workers/WorkerMessage.h"

#include <functional>
#include <string>

namespace host {

MessageTexts PackResult(const PhotoResult &result);
// False when the texts are no result.
bool UnpackResult(const MessageTexts &texts, PhotoResult *result);

// Serves what comes over standard input until it ends. `start` is the answer to being started: kDone, or why
// no photo can be done. An exit status.
using PhotoServer = std::function<PhotoResult(const std::wstring &input, const std::wstring &output)>;
int ServePhotos(const PhotoResult &start, const PhotoServer &serve);

} // namespace host
