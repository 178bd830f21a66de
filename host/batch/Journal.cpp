#include "host/batch/Journal.h"

#include "host/base/FileBytes.h"
#include "host/base/SystemText.h"

#include <set>
#include <sstream>

namespace host {

constexpr wchar_t kJournalName[] = L"brillatrix.journal";
static const char kAlreadyDone[] = "done by the earlier batch";

std::wstring JournalPath(const BatchOptions &options, const std::vector<BatchPhoto> &photos) {
    const std::wstring &first = photos.front().output;
    return NativePath(JoinPath(
        options.outFolder.empty() ? first.substr(0, NamePlace(first)) : options.outFolder, kJournalName));
}

// A photo that has changed since is another one.
static std::string Stamp(const std::wstring &path) {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (!GetFileAttributesExW(NativePath(path).c_str(), GetFileExInfoStandard, &data))
        return "none";
    std::ostringstream stamp;
    stamp << data.nFileSizeLow << '.' << data.nFileSizeHigh << '.' << data.ftLastWriteTime.dwLowDateTime
          << '.' << data.ftLastWriteTime.dwHighDateTime;
    return stamp.str();
}

static std::string Heading(const std::string &words) {
    return "brillatrix journal 1\t" + words;
}

static std::string Key(const std::wstring &input) {
    return Stamp(input) + "\t" + ToUtf8(ComparablePath(input));
}

bool ReadJournal(const std::wstring &path, const std::string &words, DoneBefore *done, std::string *why) {
    if (!DoesFileExist(path))
        return true;
    Bytes bytes;
    if (!ReadWholeFile(path, &bytes, why))
        return Fail(why, "cannot read " + ToUtf8(path) + ": " + *why);
    std::istringstream lines(std::string(bytes.begin(), bytes.end()));
    std::string line;
    if (!std::getline(lines, line) || line != Heading(words))
        return Fail(why, ToUtf8(path) + " is the journal of a batch with other options");
    while (std::getline(lines, line))
        if (const size_t tab = line.find_last_of('\t'); tab != std::string::npos)
            (*done)[line.substr(0, tab)] = FromUtf8(line.substr(tab + 1));
    return true;
}

void DropDone(const DoneBefore &done, std::vector<BatchInput> *inputs) {
    std::set<std::wstring> outputs;
    for (const auto &[key, output] : done)
        outputs.insert(ComparablePath(output));
    std::erase_if(*inputs,
                  [&](const BatchInput &input) { return outputs.contains(ComparablePath(input.path)); });
}

void MarkDone(const DoneBefore &done, std::vector<BatchPhoto> *photos) {
    for (BatchPhoto &photo : *photos) {
        const auto found = done.find(Key(photo.input));
        if (found == done.end() || !DoesFileExist(NativePath(found->second)))
            continue;
        photo.output = found->second;
        photo.isSkipped = true;
        photo.reason = kAlreadyDone;
    }
}

static void WriteLine(const Journal &journal, const std::string &line) {
    DWORD written = 0;
    const std::string ended = line + "\n";
    WriteFile(journal.file, ended.data(), static_cast<DWORD>(ended.size()), &written, nullptr);
}

bool BeginJournal(const std::wstring &path, const std::string &words, const std::vector<BatchPhoto> &photos,
                  Journal *journal, std::string *why) {
    journal->file = CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                                FILE_ATTRIBUTE_NORMAL, nullptr);
    if (journal->file == INVALID_HANDLE_VALUE)
        return Fail(why, "cannot write " + ToUtf8(path) + ": " + SystemErrorText(GetLastError()));
    journal->path = path;
    WriteLine(*journal, Heading(words));
    for (const BatchPhoto &photo : photos)
        if (photo.isSkipped && photo.reason == kAlreadyDone)
            AddToJournal(*journal, photo);
    return true;
}

void AddToJournal(Journal &journal, const BatchPhoto &photo) {
    WriteLine(journal, Key(photo.input) + "\t" + ToUtf8(photo.output));
}

void EndJournal(Journal *journal, bool isComplete) {
    if (journal->file == INVALID_HANDLE_VALUE)
        return;
    CloseHandle(journal->file);
    journal->file = INVALID_HANDLE_VALUE;
    if (isComplete)
        DeleteFileW(journal->path.c_str());
}

} // namespace host
