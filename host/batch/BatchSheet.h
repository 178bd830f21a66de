// The sheet of a batch: every photo before and after.
#pragma once

#include "host/batch/OutputNames.h"
#include "host/sheet/ContactSheet.h"
#include "host/workers/PhotoResult.h"

#include <map>
#include <string>
#include <vector>

namespace host {

struct BatchSheet {
    int32_t side = 0;                  // of the pictures; 0: no sheet is asked for
    std::map<size_t, SheetCell> cells; // by the photo's place in the batch
};

// Before work: false with a reason when the sheet cannot be written, or is a file of the batch itself.
bool CheckSheet(const BatchOptions &options, const std::vector<BatchPhoto> &photos, std::string *why);
// Begins the sheet of so many photos, and adds to the workers' words what they must know.
void AskForSheet(const BatchOptions &options, size_t photos, BatchSheet *sheet,
                 std::vector<std::wstring> *words);
void AddToSheet(BatchSheet *sheet, size_t place, const BatchPhoto &photo, const PhotoResult &result);
// Of the photos that were done; without any there is none.
bool WriteSheet(const BatchOptions &options, const BatchSheet &sheet, std::string *why);

} // namespace host
