#include "host/program/EffectSheet.h"

#include "host/base/Console.h"
#include "host/base/FileBytes.h"
#include "host/base/SystemText.h"
#include "host/pictures/PictureFiles.h"
#include "host/sheet/ContactSheet.h"
#include "plugin/interface/ScriptKeys.h"
#include "render/shape/EffectTypes.h"
#include "render/shape/ParameterTable.h"

#include <algorithm>

namespace host {

constexpr int32_t kEffectSide = 488;
constexpr uint32_t kKeyPoints = kParameters[kNumberOfPoints].key;

bool CheckSheetPlace(const std::wstring &path, std::string *why) {
    return CanHoldPicture(path, {}, why) && CheckOutputPlace(NativePath(path), why);
}

// Without what belongs to a photo's one run.
static void BecomeSheetSession(PhotoSession *session) {
    Options &options = session->options;
    options.showDialog = options.showLights = options.showDebug = options.printLights = false;
    options.lightsCsv.clear();
    options.lightsSvg.clear();
    options.debugImages.clear();
    session->remembersRuns = false;
    session->smallSide = kEffectSide;
}

static std::wstring FileName(const std::wstring &path) {
    return path.substr(path.find_last_of(L"\\/") + 1);
}

static bool IsGiven(const Options &options, uint32_t key) {
    return std::any_of(options.values.begin(), options.values.end(),
                       [key](const DescriptorValue &value) { return value.key == key; });
}

// A whole set of parameters has its own number of points.
static bool ProposesPoints(const Options &options) {
    return !IsGiven(options, kKeyPoints) && options.preset.empty() && options.settings.empty() &&
           !options.useLast;
}

static std::wstring ChooseEffect(const EffectType &effect, PhotoSession *session) {
    PutValue(session->parameters, EnumeratedValue(kKeyEffect, kTypeEffect, effect.code));
    if (!ProposesPoints(session->options))
        return effect.name;
    PutValue(session->parameters, IntegerValue(kKeyPoints, effect.presetPoints));
    return std::wstring(effect.name) + L", " + std::to_wstring(effect.presetPoints) + L" points";
}

PhotoOutcome MakeEffectSheet(PhotoSession &session) {
    std::vector<SheetCell> cells;
    const std::wstring photo = session.options.photo, sheet = session.options.contactSheet;
    BecomeSheetSession(&session);
    for (const EffectType &effect : kEffectTypes) {
        const std::wstring label = ChooseEffect(effect, &session);
        PhotoOutcome outcome = RunPhoto(session, photo, L"");
        if (outcome.status != kExitDone)
            return outcome;
        if (cells.empty())
            cells.push_back({{std::move(outcome.before)}, IsStream(photo) ? L"the photo" : FileName(photo)});
        cells.push_back({{std::move(outcome.after)}, label});
        session.say = [](NoteKind, const std::string &) {}; // what is to be said of the photo was said
    }
    PhotoOutcome outcome;
    std::string why;
    if (!WritePicture(NativePath(sheet), MakeContactSheet(cells, kEffectSide), IsCancelled, &why)) {
        outcome.status = why.empty() ? kExitCancelled : kExitFile;
        outcome.reason = why.empty() ? "cancelled" : "cannot write " + ToUtf8(sheet) + ": " + why;
    }
    return outcome;
}

} // namespace host
