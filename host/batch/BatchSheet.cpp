#include "host/batch/BatchSheet.h"

#include "host/base/FileBytes.h"
#include "host/base/SystemText.h"
#include "host/pictures/PictureFiles.h"

#include <algorithm>

namespace host {

// A sheet that is there already is treated as results are; --resume writes a new one.
bool CheckSheet(const BatchOptions &options, const std::vector<BatchPhoto> &photos, std::string *why) {
    const std::wstring &path = options.contactSheet;
    if (path.empty())
        return true;
    const std::wstring name = ComparablePath(path);
    const bool isOfBatch = std::any_of(photos.begin(), photos.end(), [&](const BatchPhoto &photo) {
        return ComparablePath(photo.input) == name || ComparablePath(photo.output) == name;
    });
    const bool mayReplace = options.existing != ExistingRule::kFail || options.resumes;
    const std::string start = "cannot write " + ToUtf8(path) + ": ";
    if (isOfBatch)
        return Fail(why, start + "it is a photo of this batch, or its result");
    if (!mayReplace && DoesFileExist(NativePath(path)))
        return Fail(why, start + "it exists already; --existing overwrite replaces it");
    return (CanHoldPicture(path, {}, why) && CheckOutputPlace(NativePath(path), why)) ||
           Fail(why, start + *why);
}

void AskForSheet(const BatchOptions &options, size_t photos, BatchSheet *sheet,
                 std::vector<std::wstring> *words) {
    if (options.contactSheet.empty())
        return;
    sheet->side = PairSide(photos);
    words->insert(words->end(), {L"--sheet-side", std::to_wstring(sheet->side)});
}

static std::wstring FileName(const std::wstring &path) {
    return path.substr(NamePlace(path));
}

void AddToSheet(BatchSheet *sheet, size_t place, const BatchPhoto &photo, const PhotoResult &result) {
    if (sheet->side == 0 || result.after.width == 0 || place >= kMostSheetCells)
        return;
    std::wstring label = FileName(photo.input);
    if (result.stars >= 0)
        label += L": " + std::to_wstring(result.stars) + (result.stars == 1 ? L" star" : L" stars");
    sheet->cells[place] = {{result.before, result.after}, label};
}

bool WriteSheet(const BatchOptions &options, const BatchSheet &sheet, std::string *why) {
    std::vector<SheetCell> cells;
    for (const auto &[place, cell] : sheet.cells)
        cells.push_back(cell);
    if (cells.empty())
        return true;
    return WritePicture(NativePath(options.contactSheet), MakeContactSheet(cells, sheet.side), {}, why) ||
           Fail(why, "cannot write " + ToUtf8(options.contactSheet) + ": " + *why);
}

} // namespace host
