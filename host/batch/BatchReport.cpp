#include "host/batch/BatchReport.h"

#include "host/base/Console.h"
#include "host/base/FileBytes.h"
#include "host/base/SystemText.h"

#include <cstdio>
#include <set>
#include <sstream>

namespace host {

static const char kJsonStart[] = "{\"input\":";
static const char *const kStateNames[] = {"done", "failed", "skipped", "cancelled", "planned"};

static std::string JsonText(const std::string &text) {
    std::string quoted = "\"";
    for (const char c : text) {
        char code[8];
        if (c == '"' || c == '\\') {
            quoted += '\\';
            quoted += c;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            std::snprintf(code, sizeof(code), "\\u%04x", static_cast<unsigned>(c));
            quoted += code;
        } else {
            quoted += c;
        }
    }
    return quoted + "\"";
}

static std::string JsonNotes(const PhotoResult &result) {
    std::string list;
    for (const auto *texts : {&result.boxes, &result.losses, &result.notes})
        for (const std::string &text : *texts)
            list.append(list.empty() ? "" : ",").append(JsonText(text));
    return list.insert(0, 1, '[') + ']';
}

std::string JsonLine(const BatchPhoto &photo, const PhotoResult &result) {
    std::string line = kJsonStart + JsonText(ToUtf8(photo.input)) +
                       ",\"output\":" + JsonText(ToUtf8(photo.output)) + ",\"status\":\"" +
                       kStateNames[static_cast<int>(result.state)] +
                       "\",\"reason\":" + JsonText(result.reason) + ",\"notes\":" + JsonNotes(result);
    if (result.lights >= 0)
        line += ",\"lights\":" + std::to_string(result.lights) + ",\"stars\":" + std::to_string(result.stars);
    return line + ",\"milliseconds\":" + std::to_string(result.milliseconds) + "}";
}

static bool IsFile(const std::wstring &json) {
    return !json.empty() && json != L"-";
}

// Whether every line is a photo's name.
static bool IsPhotoList(const std::string &text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const std::wstring name = FromUtf8(line.substr(0, line.find_last_not_of('\r') + 1));
        if (!name.empty() && !IsPhotoName(name) && !DoesFileExist(NativePath(name)))
            return false;
    }
    return true;
}

static bool CheckReport(const std::wstring &path, bool isJson, std::string *why) {
    Bytes bytes;
    if (!DoesFileExist(NativePath(path)))
        return true;
    if (!ReadWholeFile(NativePath(path), &bytes, why))
        return false;
    const std::string text(bytes.begin(), bytes.end());
    return (isJson ? text.empty() || text.starts_with(kJsonStart) : IsPhotoList(text)) ||
           Fail(why, isJson ? "it is there and no report of a batch" : "it is there and no list of photos");
}

bool CheckReports(const BatchOptions &options, const std::vector<BatchPhoto> &photos, std::string *why) {
    std::set<std::wstring> taken = {ComparablePath(options.contactSheet)};
    for (const BatchPhoto &photo : photos)
        taken.insert({ComparablePath(photo.input), ComparablePath(photo.output)});
    for (const bool isJson : {false, true}) {
        const std::wstring &path = isJson ? options.json : options.failedList;
        const std::string start = "cannot write " + ToUtf8(path) + ": ";
        if (!IsFile(path))
            continue;
        if (!taken.insert(ComparablePath(path)).second)
            return Fail(why, start + "it is a photo of this batch, or its result");
        if (!CheckReport(path, isJson, why))
            return Fail(why, start + *why);
    }
    return true;
}

bool BeginReport(BatchReport *report, size_t total, std::string *why) {
    report->total = total;
    report->begun = GetTickCount64();
    const BatchOptions &options = report->options;
    if (options.isDryRun)
        return true;
    if (!options.failedList.empty() && !CheckOutputPlace(NativePath(options.failedList), why))
        return Fail(why, "cannot write " + ToUtf8(options.failedList) + ": " + *why);
    if (!options.writesJson || !IsFile(options.json))
        return true;
    report->json = CreateFileW(NativePath(options.json).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                               CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (report->json != INVALID_HANDLE_VALUE)
        return true;
    report->json = nullptr;
    return Fail(why, "cannot write " + ToUtf8(options.json) + ": " + SystemErrorText(GetLastError()));
}

static void WriteJson(const BatchReport &report, const BatchPhoto &photo, const PhotoResult &result) {
    const std::string line = JsonLine(photo, result) + "\n";
    DWORD written = 0;
    if (!report.options.writesJson)
        return;
    if (report.json)
        WriteFile(report.json, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
    else
        PrintOut(line);
}

static void PrintLines(const BatchPhoto &photo, const char *kind, const std::vector<std::string> &texts) {
    for (const std::string &text : texts)
        PrintError("brillatrix: " + ToUtf8(photo.input) + ": " + kind + text + "\n");
}

static void PrintProgress(const BatchReport &report, const BatchPhoto &photo, const PhotoResult &result) {
    if (report.options.progress == ProgressForm::kPlain)
        PrintError(std::string(1, '[') + std::to_string(report.told) + "/" + std::to_string(report.total) +
                   "] " + ToUtf8(photo.input) + " -> " + ToUtf8(photo.output) + ": " +
                   kStateNames[static_cast<int>(result.state)] + "\n");
    else if (report.options.progress == ProgressForm::kAutomatic && !report.options.isQuiet)
        ShowProgressBar(static_cast<int32_t>(report.told), static_cast<int32_t>(report.total));
}

void TellPhoto(BatchReport &report, const BatchPhoto &photo, const PhotoResult &result) {
    report.told++;
    report.counts[static_cast<int>(result.state)]++;
    if (result.state == PhotoState::kFailed) {
        report.failed.push_back(photo.input);
        PrintLines(photo, "", {result.reason});
    }
    PrintLines(photo, "", result.boxes);
    if (!report.options.isSilent)
        PrintLines(photo, "warning: ", result.losses);
    if (!report.options.isQuiet)
        PrintLines(photo, "note: ", result.notes);
    WriteJson(report, photo, result);
    PrintProgress(report, photo, result);
}

static std::string Summary(const BatchReport &report) {
    std::string text;
    for (size_t state = 0; state < std::size(kStateNames); state++)
        if (report.counts[state] > 0 || state == 0)
            text +=
                (text.empty() ? "" : ", ") + std::to_string(report.counts[state]) + " " + kStateNames[state];
    if (report.told < report.total)
        text += ", " + std::to_string(report.total - report.told) + " not begun";
    char seconds[32];
    std::snprintf(seconds, sizeof(seconds), " in %.1f s",
                  static_cast<double>(GetTickCount64() - report.begun) / 1000.0);
    return text + seconds;
}

bool EndReport(BatchReport *report, std::string *why) {
    EndProgressBar();
    if (report->json)
        CloseHandle(report->json);
    report->json = nullptr;
    if (!report->options.isQuiet)
        PrintError("brillatrix: " + Summary(*report) + "\n");
    if (report->options.failedList.empty() || report->options.isDryRun)
        return true;
    std::string list;
    for (const std::wstring &photo : report->failed)
        list += ToUtf8(photo) + "\n";
    return WriteWholeFile(NativePath(report->options.failedList), {list.begin(), list.end()}, why);
}

} // namespace host
