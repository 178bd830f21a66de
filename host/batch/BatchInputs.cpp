#include "host/batch/BatchInputs.h"

#include "host/base/FileBytes.h"
#include "host/base/SystemText.h"

#include <algorithm>
#include <set>
#include <sstream>

namespace host {

constexpr int kMostFolders = 64; // one in another

// What a folder's photos are told by.
static const wchar_t *const kPhotoPatterns[] = {L"*.jpg",  L"*.jpeg", L"*.png", L"*.tif", L"*.tiff",
                                                L"*.webp", L"*.avif", L"*.gif", L"*.bmp", L"*.ppm",
                                                L"*.pgm",  L"*.pam",  L"*.pfm"};

static wchar_t Small(wchar_t letter) {
    return static_cast<wchar_t>(reinterpret_cast<uintptr_t>(CharLowerW(reinterpret_cast<LPWSTR>(letter))));
}

bool MatchesPattern(const std::wstring &name, const std::wstring &pattern) {
    size_t at = 0, in = 0, star = std::wstring::npos, resume = 0;
    while (at < name.size()) {
        const bool isStar = in < pattern.size() && pattern[in] == L'*';
        if (isStar) {
            star = in++;
            resume = at;
        } else if (in < pattern.size() && (pattern[in] == L'?' || Small(pattern[in]) == Small(name[at]))) {
            in++, at++;
        } else if (star != std::wstring::npos) {
            in = star + 1;
            at = ++resume;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(L'*', in) == std::wstring::npos;
}

std::wstring ComparablePath(const std::wstring &path) {
    std::wstring small = NativePath(path);
    CharLowerBuffW(small.data(), static_cast<DWORD>(small.size()));
    return small;
}

size_t NamePlace(const std::wstring &path) {
    return path.find_last_of(L"\\/") + 1; // 0 without a folder
}

std::wstring JoinPath(const std::wstring &folder, const std::wstring &name) {
    if (folder.empty() || folder.back() == L'/' || folder.back() == L'\\')
        return folder + name;
    return folder + (folder.find(L'/') != std::wstring::npos ? L"/" : L"\\") + name;
}

struct FolderEntry {
    std::wstring name;
    bool isFolder;
};

static std::vector<FolderEntry> ListFolder(const std::wstring &pattern) {
    std::vector<FolderEntry> entries;
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW(NativePath(pattern).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return entries;
    do {
        const std::wstring name = found.cFileName;
        if (name != L"." && name != L"..")
            entries.push_back({name, (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0});
    } while (FindNextFileW(search, &found));
    FindClose(search);
    std::sort(entries.begin(), entries.end(),
              [](const FolderEntry &a, const FolderEntry &b) { return a.name < b.name; });
    return entries;
}

static bool MatchesAny(const std::wstring &name, const std::vector<std::wstring> &patterns) {
    return std::any_of(patterns.begin(), patterns.end(),
                       [&](const std::wstring &pattern) { return MatchesPattern(name, pattern); });
}

bool IsPhotoName(const std::wstring &name) {
    return std::any_of(std::begin(kPhotoPatterns), std::end(kPhotoPatterns),
                       [&](const wchar_t *pattern) { return MatchesPattern(name, pattern); });
}

struct Search {
    const BatchOptions &options;
    std::vector<BatchInput> *inputs;
    std::set<std::wstring> known;

    void Add(BatchInput input) {
        const std::wstring name = input.path.substr(NamePlace(input.path));
        const bool isWanted = (options.includes.empty() || MatchesAny(name, options.includes)) &&
                              !MatchesAny(name, options.excludes);
        if (isWanted && known.insert(ComparablePath(input.path)).second)
            inputs->push_back(std::move(input));
    }
};

static void AddFolder(Search *search, const std::wstring &folder, const std::wstring &below, int depth) {
    const std::vector<FolderEntry> entries = ListFolder(JoinPath(folder, L"*"));
    for (const FolderEntry &entry : entries)
        if (!entry.isFolder && IsPhotoName(entry.name))
            search->Add({JoinPath(folder, entry.name), below, true});
    for (const FolderEntry &entry : entries)
        if (entry.isFolder && search->options.isRecursive && depth < kMostFolders)
            AddFolder(search, JoinPath(folder, entry.name), JoinPath(below, entry.name), depth + 1);
}

static bool AddPattern(Search *search, const std::wstring &pattern, std::string *why) {
    const std::wstring folder = pattern.substr(0, NamePlace(pattern));
    bool isAny = false;
    for (const FolderEntry &entry : ListFolder(folder + L"*"))
        if (!entry.isFolder && MatchesPattern(entry.name, pattern.substr(NamePlace(pattern)))) {
            search->Add({folder + entry.name, L"", true});
            isAny = true;
        }
    return isAny || Fail(why, "nothing matches " + ToUtf8(pattern));
}

static bool AddWord(Search *search, const std::wstring &word, std::string *why) {
    const DWORD attributes = GetFileAttributesW(NativePath(word).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES &&
        word.find_first_of(L"*?", NamePlace(word)) != std::wstring::npos)
        return AddPattern(search, word, why);
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY))
        AddFolder(search, word, L"", 0);
    else
        search->Add({word, L"", false});
    return true;
}

// A name a line, in UTF-8.
static bool AddLines(Search *search, std::string text, std::string *why) {
    if (text.starts_with("\xEF\xBB\xBF"))
        text.erase(0, 3);
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (!line.empty() && !AddWord(search, FromUtf8(line), why))
            return false;
    }
    return true;
}

static bool AddInput(Search *search, const std::wstring &input, std::string *why) {
    Bytes list;
    if (input == kStandardStream)
        return (ReadStandardInput(&list, why) || Fail(why, "cannot read standard input: " + *why)) &&
               AddLines(search, {list.begin(), list.end()}, why);
    if (input[0] != L'@' || DoesFileExist(NativePath(input)))
        return AddWord(search, input, why);
    if (!ReadWholeFile(NativePath(input.substr(1)), &list, why))
        return Fail(why, "cannot read " + ToUtf8(input.substr(1)) + ": " + *why);
    return AddLines(search, {list.begin(), list.end()}, why);
}

bool FindInputs(const BatchOptions &options, std::vector<BatchInput> *inputs, std::string *why) {
    Search search{options, inputs, {}};
    for (const std::wstring &input : options.inputs)
        if (!input.empty() && !AddInput(&search, input, why))
            return false;
    return !inputs->empty() || Fail(why, "there is no photo to work on");
}

} // namespace host
