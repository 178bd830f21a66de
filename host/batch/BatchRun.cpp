#include "host/batch/BatchRun.h"

#include "host/base/CommandLine.h"
#include "host/base/Console.h"
#include "host/base/ExitStatus.h"
#include "host/base/FileBytes.h"
#include "host/base/SystemText.h"
#include "host/batch/BatchReport.h"
#include "host/batch/BatchSheet.h"
#include "host/batch/Journal.h"
#include "host/batch/PhotoMemory.h"
#include "host/workers/WorkerPool.h"
#include "host/workers/WorkerProcess.h"

#include <shlobj.h>

#include <algorithm>
#include <set>
#include <thread>

namespace host {

static int FailBatch(int status, const std::string &why) {
    PrintError("brillatrix: " + why + "\n");
    return status;
}

// Where the results go must be there, or be made, and must take a file.
static bool CheckFolders(const std::vector<BatchPhoto> &photos, std::string *why) {
    std::set<std::wstring> checked;
    for (const BatchPhoto &photo : photos) {
        const std::wstring path = NativePath(photo.output);
        const std::wstring folder = path.substr(0, NamePlace(path));
        if (photo.isSkipped || !checked.insert(folder).second)
            continue;
        if (!DoesFileExist(folder))
            SHCreateDirectoryExW(nullptr, folder.substr(0, folder.size() - 1).c_str(), nullptr);
        if (!CheckOutputPlace(path, why))
            return Fail(why, "cannot write " + ToUtf8(photo.output) + ": " + *why);
    }
    return true;
}

// Without the results of the earlier batch among the photos, so that each has the number it had.
static bool ResumePlan(const BatchOptions &options, const std::string &words, std::vector<BatchInput> inputs,
                       std::vector<BatchPhoto> *photos, std::string *why) {
    DoneBefore done;
    if (!ReadJournal(JournalPath(options, *photos), words, &done, why))
        return false;
    DropDone(done, &inputs);
    if (!NameOutputs(options, std::move(inputs), photos, why))
        return false;
    MarkDone(done, photos);
    return !photos->empty() || Fail(why, "there is no photo to work on");
}

// The photos with their names, in order. An exit status when that is all there is to do.
static int PlanBatch(const BatchOptions &options, const std::string &words, std::vector<BatchPhoto> *photos) {
    std::vector<BatchInput> inputs;
    std::string why;
    if (!FindInputs(options, &inputs, &why))
        return FailBatch(kExitFile, why);
    if (!NameOutputs(options, inputs, photos, &why))
        return FailBatch(kExitUsage, why);
    if (photos->empty())
        return FailBatch(kExitFile, "there is no photo to work on");
    if (options.resumes && !ResumePlan(options, words, std::move(inputs), photos, &why))
        return FailBatch(kExitFile, why);
    if (!SettleOutputs(options, photos, &why))
        return FailBatch(kExitFile, why);
    return kExitDone;
}

static void TellSkipped(BatchReport &report, const std::vector<BatchPhoto> &photos) {
    PhotoResult result;
    result.state = PhotoState::kSkipped;
    for (const BatchPhoto &photo : photos)
        if (photo.isSkipped) {
            result.reason = photo.reason;
            TellPhoto(report, photo, result);
        }
}

static int TellPlan(BatchReport &report, const std::vector<BatchPhoto> &photos) {
    PhotoResult result;
    std::string why;
    result.state = PhotoState::kPlanned;
    for (const BatchPhoto &photo : photos) {
        if (photo.isSkipped)
            continue;
        TellPhoto(report, photo, result);
        if (!report.options.writesJson)
            PrintOut(ToUtf8(photo.input) + " -> " + ToUtf8(photo.output) + "\n");
    }
    return EndReport(&report, &why) ? kExitDone : FailBatch(kExitFile, why);
}

static PoolSettings SettingsOf(const BatchOptions &options, const std::vector<std::wstring> &words,
                               size_t photos) {
    PoolSettings settings;
    const auto cores = static_cast<int32_t>(std::max(1u, std::thread::hardware_concurrency()));
    settings.words = words;
    settings.jobs = std::min(options.jobs > 0 ? options.jobs : cores, static_cast<int32_t>(photos));
    settings.memory = options.memory > 0 ? static_cast<uint64_t>(options.memory) << 20 : MemoryToUse();
    settings.timeout = int64_t{options.timeout} * 1000;
    return settings;
}

static int StatusOf(const BatchReport &report) {
    const size_t failed = report.counts[static_cast<int>(PhotoState::kFailed)];
    if (IsCancelled() &&
        (report.told < report.total || report.counts[static_cast<int>(PhotoState::kCancelled)]))
        return kExitCancelled;
    if (failed == 0)
        return kExitDone;
    return failed == report.total ? kExitFile : kExitSomeFailed;
}

static int RunPhotos(BatchReport &report, const std::vector<BatchPhoto> &photos, Journal &journal,
                     std::vector<std::wstring> words, BatchSheet *sheet) {
    std::vector<PoolTask> tasks;
    std::vector<const BatchPhoto *> tasked;
    for (const BatchPhoto &photo : photos)
        if (!photo.isSkipped) {
            tasks.push_back({photo.input, photo.output, EstimateMemory(photo.input)});
            tasked.push_back(&photo);
        }
    if (tasks.empty())
        return kExitDone;
    AskForSheet(report.options, tasks.size(), sheet, &words);
    const ResultTaker take = [&](size_t task, const PhotoResult &result) {
        TellPhoto(report, *tasked[task], result);
        if (result.state == PhotoState::kDone) {
            AddToJournal(journal, *tasked[task]);
            AddToSheet(sheet, task, *tasked[task], result);
        }
        return result.state != PhotoState::kFailed || !report.options.stopsOnError;
    };
    int status = kExitDone;
    std::string why;
    RunPool(SettingsOf(report.options, words, tasks.size()), tasks, take, &status, &why);
    return status == kExitDone ? kExitDone : FailBatch(status, why);
}

int RunBatch(const BatchOptions &options, const std::vector<std::wstring> &words) {
    std::vector<BatchPhoto> photos;
    std::string why;
    const std::string journalWords = ToUtf8(JoinWords(words));
    if (const int status = PlanBatch(options, journalWords, &photos))
        return status;
    BatchReport report{options, 0, 0, {}, nullptr, {}, 0};
    if (!CheckSheet(options, photos, &why) || !CheckReports(options, photos, &why) ||
        (!options.isDryRun && !CheckFolders(photos, &why)) || !BeginReport(&report, photos.size(), &why))
        return FailBatch(kExitFile, why);
    TellSkipped(report, photos);
    if (options.isDryRun)
        return TellPlan(report, photos);
    Journal journal;
    if (!BeginJournal(JournalPath(options, photos), journalWords, photos, &journal, &why))
        return FailBatch(kExitFile, why);
    BatchSheet sheet;
    const int broken = RunPhotos(report, photos, journal, words, &sheet);
    int status = broken != kExitDone ? broken : StatusOf(report);
    EndJournal(&journal, status == kExitDone || report.counts[0] + report.counts[2] == 0);
    if (!EndReport(&report, &why) || (!MustStopAtOnce() && !WriteSheet(options, sheet, &why)))
        return FailBatch(kExitFile, why);
    return status;
}

} // namespace host
