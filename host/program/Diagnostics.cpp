#include "host/program/Diagnostics.h"

#include "resources/ResourceIds.h"

namespace host {

// More lights than pixels would be a fault.
constexpr intptr_t kMostLights = intptr_t{1} << 26;

static intptr_t Request(const DiagnosticCaller &caller, uint32_t message, uintptr_t number, void *record) {
    return caller.lightProcedure(nullptr, message, number, reinterpret_cast<LPARAM>(record));
}

static DLGPROC FindProcedure(HMODULE module, const char *name) {
    return reinterpret_cast<DLGPROC>(reinterpret_cast<void *>(GetProcAddress(module, name)));
}

bool BeginDiagnostics(HMODULE module, bool withPictures, DiagnosticCaller *caller, std::string *why) {
    const DiagnosticCaller found = {module, FindProcedure(module, "DisplayLightSourceTableProc"),
                                    FindProcedure(module, "DebugImageProc")};
    if (!found.lightProcedure || !found.imageProcedure ||
        Request(found, kDiagnosticVersion, 0, nullptr) != kDiagnosticVersionNumber ||
        Request(found, kDiagnosticKeep, kKeepLights | (withPictures ? kKeepImages : 0), nullptr) != 1) {
        *why = "it tells nothing about its lights";
        return false;
    }
    *caller = found;
    return true;
}

static bool TakeLights(const DiagnosticCaller &caller, std::vector<DiagnosticLight> *lights) {
    const intptr_t count = Request(caller, kDiagnosticLightCount, 0, nullptr);
    if (count < 0 || count > kMostLights)
        return false;
    lights->resize(static_cast<size_t>(count));
    return count == 0 || Request(caller, kDiagnosticCopyLights, lights->size(), lights->data()) == count;
}

// The count line ends with its own line feeds.
static std::string TakeTable(const DiagnosticCaller &caller) {
    std::string table;
    DiagnosticLine line = {};
    for (uintptr_t first = 1; Request(caller, kDiagnosticLine, first, &line) != 0; first = 0) {
        line.text[sizeof(line.text) - 1] = 0;
        table += line.text;
        if (first == 0)
            table += '\n';
    }
    return table;
}

static Picture PictureOf(const DiagnosticPicture &told, const Bytes &pixels) {
    Picture picture = MakePicture(told.width, told.height, 8, 3, false);
    for (size_t plane = 0; plane < 3; plane++)
        for (size_t i = 0; i < picture.planes[plane].size(); i++)
            picture.planes[plane][i] = pixels[i * 4 + 2 - plane]; // blue comes first
    return picture;
}

static bool TakePicture(const DiagnosticCaller &caller, uint32_t choice, Picture *picture, std::string *why) {
    DiagnosticPicture told = {};
    Bytes pixels;
    bool isTold = Request(caller, kDiagnosticCopyPicture, choice, &told) == 1;
    if (isTold) {
        const uint64_t width = static_cast<uint32_t>(told.width), height = static_cast<uint32_t>(told.height);
        if (!CheckPictureSize(width, height, why))
            return false;
        pixels.resize(width * height * 4);
        told.pixelBytes = pixels.size();
        told.pixels = pixels.data();
        isTold = Request(caller, kDiagnosticCopyPicture, choice, &told) == 1;
    }
    if (!isTold) {
        *why = "the module has no debug picture " + std::to_string(choice);
        return false;
    }
    *picture = PictureOf(told, pixels);
    return true;
}

bool TakeDiagnostics(const DiagnosticCaller &caller, bool withPictures, Diagnostics *diagnostics,
                     std::string *why) {
    Diagnostics taken;
    if (!TakeLights(caller, &taken.lights)) {
        *why = "the module did not tell its lights";
        return false;
    }
    taken.table = TakeTable(caller);
    for (uint32_t choice = 0; withPictures && choice < kDiagnosticPictures; choice++)
        if (!TakePicture(caller, choice, &taken.pictures.emplace_back(), why))
            return false;
    *diagnostics = std::move(taken);
    return true;
}

static bool ShowViewer(const DiagnosticCaller &caller, int dialogId, DLGPROC procedure) {
    return DialogBoxParamA(caller.module, MAKEINTRESOURCEA(dialogId), nullptr, procedure, 0) != -1;
}

bool ShowLightViewer(const DiagnosticCaller &caller) {
    return ShowViewer(caller, kLightSourceTableDialogId, caller.lightProcedure);
}

bool ShowImageViewer(const DiagnosticCaller &caller) {
    return ShowViewer(caller, kDebugImageDialogId, caller.imageProcedure);
}

} // namespace host
