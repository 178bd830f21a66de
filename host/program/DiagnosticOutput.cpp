#include "host/program/DiagnosticOutput.h"

#include "host/base/Console.h"
#include "host/base/FileBytes.h"
#include "host/base/SystemText.h"
#include "host/pictures/PictureFiles.h"
#include "host/program/LightFiles.h"

namespace host {

static const wchar_t *const kPictureNames[kDiagnosticPictures] = {L"analysis.png", L"selection.png",
                                                                  L"lights.png", L"star.png"};

static std::wstring PicturePath(const Options &options, uint32_t choice) {
    return NativePath(options.debugImages + L"\\" + kPictureNames[choice]);
}

std::vector<std::wstring> ListDiagnosticFiles(const Options &options) {
    std::vector<std::wstring> files;
    for (const std::wstring &file : {options.lightsCsv, options.lightsSvg, options.contactSheet})
        if (!file.empty())
            files.push_back(file);
    for (const wchar_t *name : kPictureNames)
        if (!options.debugImages.empty())
            files.push_back(options.debugImages + L"\\" + name);
    return files;
}

static bool CanWrite(const std::wstring &path, OutputFailure *failure) {
    failure->path = path;
    return CheckOutputPlace(NativePath(path), &failure->why);
}

static bool MakeFolder(const std::wstring &path, OutputFailure *failure) {
    const std::wstring native = NativePath(path);
    if (CreateDirectoryW(native.c_str(), nullptr))
        return true;
    const DWORD error = GetLastError();
    const DWORD attributes = GetFileAttributesW(native.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY))
        return true;
    *failure = {path, attributes == INVALID_FILE_ATTRIBUTES ? SystemErrorText(error) : "it is no folder"};
    return false;
}

bool CheckDiagnosticPlaces(const Options &options, OutputFailure *failure) {
    for (const std::wstring &path : {options.lightsCsv, options.lightsSvg})
        if (!path.empty() && !CanWrite(path, failure))
            return false;
    if (options.debugImages.empty())
        return true;
    return MakeFolder(options.debugImages, failure) &&
           CanWrite(options.debugImages + L"\\" + kPictureNames[0], failure);
}

static bool WriteTextFile(const std::wstring &path, const Bytes &bytes, OutputFailure *failure) {
    if (path.empty() || WriteWholeFile(NativePath(path), bytes, &failure->why))
        return true;
    failure->path = path;
    return false;
}

bool WriteDiagnostics(const Options &options, const Diagnostics &diagnostics, int32_t width, int32_t height,
                      OutputFailure *failure) {
    if (options.printLights)
        PrintOut(diagnostics.table);
    if (!WriteTextFile(options.lightsCsv, LightsAsCsv(diagnostics.lights), failure) ||
        !WriteTextFile(options.lightsSvg, LightsAsSvg(diagnostics.lights, width, height), failure))
        return false;
    if (options.debugImages.empty())
        return true;
    for (uint32_t choice = 0; choice < kDiagnosticPictures; choice++)
        if (!WritePicture(PicturePath(options, choice), diagnostics.pictures.at(choice), {}, &failure->why)) {
            failure->path = options.debugImages + L"\\" + kPictureNames[choice];
            return false;
        }
    return true;
}

} // namespace host
