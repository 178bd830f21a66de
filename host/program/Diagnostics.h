// What the filter module tells a diagnostic caller about a run: its lights and its debug pictures.
#pragma once

#include "host/pictures/Picture.h"
#include "plugin/interface/DiagnosticInterface.h"

#include <windows.h>

#include <string>
#include <vector>

namespace host {

struct DiagnosticCaller {
    HMODULE module = nullptr;
    DLGPROC lightProcedure = nullptr;
    DLGPROC imageProcedure = nullptr;
};

// Before a run: tells the module what to keep. False with a reason when the module takes no such calls.
bool BeginDiagnostics(HMODULE module, bool withPictures, DiagnosticCaller *caller, std::string *why);

struct Diagnostics {
    std::string table; // the viewer's lines, each ended
    std::vector<DiagnosticLight> lights;
    std::vector<Picture> pictures; // none, or kDiagnosticPictures
};

// After Start and before Finish. False with a reason; *diagnostics is then left alone.
bool TakeDiagnostics(const DiagnosticCaller &caller, bool withPictures, Diagnostics *diagnostics,
                     std::string *why);

// Likewise; they return when the user closes the window. False when it could not be opened.
bool ShowLightViewer(const DiagnosticCaller &caller);
bool ShowImageViewer(const DiagnosticCaller &caller);

} // namespace host
