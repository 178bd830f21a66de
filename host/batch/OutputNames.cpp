#include "host/batch/OutputNames.h"

#include "host/base/FileBytes.h"
#include "host/base/SystemText.h"

#include <algorithm>
#include <cstdio>
#include <cwctype>
#include <map>
#include <set>

namespace host {

constexpr int kMostNumbers = 100000;
constexpr size_t kNoNumber = 0;
constexpr wchar_t kAnyNumber = 0xE000; // no letter, and in no name

static std::wstring Today() {
    SYSTEMTIME now;
    GetLocalTime(&now);
    wchar_t text[32];
    std::swprintf(text, std::size(text), L"%04d-%02d-%02d", now.wYear, now.wMonth, now.wDay);
    return text;
}

// The number with leading zeros, as "{n:04}" asks for. False for another form.
static bool FormatNumber(const std::wstring &form, size_t number, std::wstring *text) {
    *text = number == kNoNumber ? std::wstring(1, kAnyNumber) : std::to_wstring(number);
    if (form == L"n")
        return true;
    if (form.size() < 3 || form.size() > 4 || !form.starts_with(L"n:") ||
        form.find_first_not_of(L"0123456789", 2) != std::wstring::npos)
        return false;
    const size_t width = std::stoul(form.substr(2));
    text->insert(0, number != kNoNumber && width > text->size() ? width - text->size() : 0, L'0');
    return true;
}

static bool Fill(const std::wstring &word, const BatchOptions &options, const BatchInput &input,
                 size_t number, std::wstring *text) {
    const size_t name = NamePlace(input.path);
    const size_t dot = std::max(std::min(input.path.find_last_of(L'.'), input.path.size()), name);
    if (word == L"name")
        *text = input.path.substr(name, dot - name);
    else if (word == L"ext")
        *text = dot < input.path.size() ? input.path.substr(dot + 1) : L"";
    else if (word == L"dir")
        *text = input.below;
    else if (word == L"preset")
        *text = options.presetName;
    else if (word == L"date")
        *text = Today();
    else
        return FormatNumber(word, number, text);
    return true;
}

static bool FillPattern(const BatchOptions &options, const BatchInput &input, size_t number,
                        std::wstring *name, std::string *why) {
    const std::wstring &pattern = options.namePattern;
    name->clear();
    for (size_t at = 0; at < pattern.size(); at++) {
        const size_t end = pattern[at] == L'{' ? pattern.find(L'}', at) : at;
        std::wstring text(1, pattern[at]);
        if (end == std::wstring::npos ||
            (end > at && !Fill(pattern.substr(at + 1, end - at - 1), options, input, number, &text)))
            return Fail(why, "--name knows {name} {ext} {dir} {n} {n:04} {preset} {date}; not \"" +
                                 ToUtf8(pattern) + "\"");
        *name += text;
        at = end;
    }
    return !name->empty() || Fail(why, "--name gives an empty name");
}

// Sub-folders come again below the output folder, unless the pattern places them itself.
static std::wstring OutputFolder(const BatchOptions &options, const BatchInput &input) {
    if (options.outFolder.empty())
        return input.path.substr(0, NamePlace(input.path));
    const bool isPlaced = options.namePattern.find(L"{dir}") != std::wstring::npos;
    return isPlaced || input.below.empty() ? options.outFolder : JoinPath(options.outFolder, input.below);
}

static bool NameOutput(const BatchOptions &options, const BatchInput &input, size_t number,
                       std::wstring *output, std::string *why) {
    std::wstring name;
    if (!FillPattern(options, input, number, &name, why))
        return false;
    *output = JoinPath(OutputFolder(options, input), name);
    return true;
}

// The results that the photos would have, by what they are called without their numbers, and whose they are.
using ResultMap = std::map<std::wstring, const BatchInput *>;

// Whether the name, with some digits taken as the number, is what the batch gives to another photo.
static bool IsNumberedResult(const BatchOptions &options, const std::wstring &path, size_t most,
                             const ResultMap &results) {
    std::string why;
    std::wstring output;
    for (size_t from = NamePlace(path); from < path.size(); from++) {
        size_t number = 0;
        for (size_t to = from; to < path.size() && std::iswdigit(path[to]) && number <= most; to++) {
            number = number * 10 + static_cast<size_t>(path[to] - L'0');
            const auto found = results.find(path.substr(0, from) + kAnyNumber + path.substr(to + 1));
            if (found != results.end() && number > 0 && number <= most &&
                NameOutput(options, *found->second, number, &output, &why) && ComparablePath(output) == path)
                return true;
        }
    }
    return false;
}

// Photos that were only found and are results of others. The numbers of those that stay are not known yet, so
// any number makes a result, where the pattern has the photo's name too.
static bool DropResults(const BatchOptions &options, std::vector<BatchInput> *inputs, std::string *why) {
    const bool isNumbered = options.namePattern.find(L"{name}") != std::wstring::npos;
    ResultMap plain, numbered;
    std::wstring output;
    for (const BatchInput &input : *inputs) {
        if (!NameOutput(options, input, kNoNumber, &output, why))
            return false;
        const bool hasNumber = output.find(kAnyNumber) != std::wstring::npos;
        if (!hasNumber && ComparablePath(output) != ComparablePath(input.path))
            plain.emplace(ComparablePath(output), &input);
        else if (hasNumber && isNumbered)
            numbered.emplace(ComparablePath(output), &input);
    }
    std::vector<BatchInput> rest;
    for (const BatchInput &input : *inputs) {
        const std::wstring path = ComparablePath(input.path);
        if (!input.isFound ||
            !(plain.contains(path) ||
              (!numbered.empty() && IsNumberedResult(options, path, inputs->size(), numbered))))
            rest.push_back(input);
    }
    *inputs = std::move(rest);
    return true;
}

bool NameOutputs(const BatchOptions &options, std::vector<BatchInput> inputs, std::vector<BatchPhoto> *photos,
                 std::string *why) {
    photos->clear();
    if (!DropResults(options, &inputs, why))
        return false;
    for (const BatchInput &input : inputs) {
        BatchPhoto photo;
        photo.input = input.path;
        if (!NameOutput(options, input, photos->size() + 1, &photo.output, why))
            return false;
        photos->push_back(std::move(photo));
    }
    return true;
}

// name_2.jpg and so on: the first that nobody has.
static bool FindFreeName(std::wstring *output, const std::map<std::wstring, std::wstring> &taken) {
    const std::wstring path = *output;
    const size_t dot = std::max(std::min(path.find_last_of(L'.'), path.size()), NamePlace(path));
    for (int number = 2; number < kMostNumbers; number++) {
        *output = path.substr(0, dot) + L"_" + std::to_wstring(number) + path.substr(dot);
        if (!taken.contains(ComparablePath(*output)) && !DoesFileExist(NativePath(*output)))
            return true;
    }
    return false;
}

static bool SettleExisting(const BatchOptions &options, BatchPhoto *photo, std::string *why) {
    if (!DoesFileExist(NativePath(photo->output)) || options.existing == ExistingRule::kOverwrite)
        return true;
    if (options.existing == ExistingRule::kSkip) {
        photo->isSkipped = true;
        photo->reason = "the result exists";
        return true;
    }
    return Fail(why, ToUtf8(photo->output) +
                         " exists already; --existing skip, overwrite or number says what to do with it");
}

bool SettleOutputs(const BatchOptions &options, std::vector<BatchPhoto> *photos, std::string *why) {
    std::map<std::wstring, std::wstring> taken; // by which photo
    const bool numbers = options.existing == ExistingRule::kNumber;
    for (const BatchPhoto &photo : *photos)
        taken.emplace(ComparablePath(photo.input), L"");
    for (BatchPhoto &photo : *photos) {
        if (photo.isSkipped)
            continue;
        const auto place = taken.find(ComparablePath(photo.output));
        if (numbers && (place != taken.end() || DoesFileExist(NativePath(photo.output)))) {
            if (!FindFreeName(&photo.output, taken))
                return Fail(why, "there is no free name for " + ToUtf8(photo.output));
        } else if (place != taken.end()) {
            return Fail(why, place->second.empty()
                                 ? ToUtf8(photo.output) + " is a photo of this batch; \"brillatrix inplace\" "
                                                          "replaces photos"
                                 : ToUtf8(place->second) + " and " + ToUtf8(photo.input) +
                                       " would both become " + ToUtf8(photo.output) +
                                       "; --name or --existing number tells them apart");
        } else if (!SettleExisting(options, &photo, why)) {
            return false;
        }
        taken.emplace(ComparablePath(photo.output), photo.input);
    }
    return true;
}

} // namespace host
