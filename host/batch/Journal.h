// What a batch has done, written down as it goes, so that another run can go on from there.
#pragma once

#include "host/batch/OutputNames.h"

#include <windows.h>

#include <map>
#include <string>
#include <vector>

namespace host {

struct Journal {
    HANDLE file = INVALID_HANDLE_VALUE;
    std::wstring path;
};

// Beside the first result.
std::wstring JournalPath(const BatchOptions &options, const std::vector<BatchPhoto> &photos);

// What an earlier batch has done: photos as they were then, and their results.
using DoneBefore = std::map<std::string, std::wstring>;

// Of an earlier batch with the same words; nothing without a journal. False with a reason when it is another
// batch's, or cannot be read.
bool ReadJournal(const std::wstring &path, const std::string &words, DoneBefore *done, std::string *why);
// Its results are no photos, whoever names them.
void DropDone(const DoneBefore &done, std::vector<BatchInput> *inputs);
// Its photos are skipped.
void MarkDone(const DoneBefore &done, std::vector<BatchPhoto> *photos);

// Begins a new one, with the photos that are done already.
bool BeginJournal(const std::wstring &path, const std::string &words, const std::vector<BatchPhoto> &photos,
                  Journal *journal, std::string *why);
void AddToJournal(Journal &journal, const BatchPhoto &photo);
// Of a batch of which nothing is left to do, no journal stays.
void EndJournal(Journal *journal, bool isComplete);

} // namespace host
