// Photos through the filter, one after another, with the module loaded once.
#pragma once

#include "host/base/ExitStatus.h"
#include "host/filter/FilterHost.h"
#include "host/module/FilterModule.h"
#include "host/options/Options.h"
#include "host/options/Parameters.h"
#include "host/sheet/SmallPicture.h"

#include <functional>
#include <string>

namespace host {

enum class NoteKind {
    kNote,
    kLoss, // something of the photo is lost
    kBox,  // what the filter wanted to show
};
// Hears what the user should know of a run, at once.
using NoteTaker = std::function<void(NoteKind kind, const std::string &text)>;

// What stays from photo to photo.
struct PhotoSession {
    Options options;
    NoteTaker say;
    bool remembersRuns = true; // the parameters and the registry are kept for the next program
    FilterModule module;
    HostMemory memory;
    Descriptor parameters;
    int32_t smallSide = 0; // more than 0: outcomes carry small pictures
    Bytes standardInput;   // read once, for however many runs
};

struct PhotoOutcome {
    int status = kExitDone;
    std::string reason;              // of any other status, a sentence
    int64_t lights = -1, stars = -1; // -1: the filter does not tell
    SmallPicture before, after;
};

std::wstring ModulePath(const Options &options);
// The parameters that the options ask for: the defaults, the last run's or a saved set's; then those given.
PhotoOutcome GatherParameters(const Options &options, const NoteTaker &say, const HostMemory &memory,
                              Descriptor *parameters);

// Loads the module and what every photo needs; EndPhotos takes it back, after a failure too.
PhotoOutcome BeginPhotos(PhotoSession *session);
void EndPhotos(PhotoSession *session);
// One photo. An empty `out` writes none.
PhotoOutcome RunPhoto(PhotoSession &session, const std::wstring &photo, const std::wstring &out);

} // namespace host
