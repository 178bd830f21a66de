// What is kept in files between runs: any bytes are read within bounds, no file is lost that could be read or
// was never ours, one that is held stays, and what is kept reads as the same.
#include "host/options/Parameters.h"
#include "plugin/parameters/ParameterAccessor.h"
#include "plugin/record/PluginState.h"
#include "storage/AppFolders.h"
#include "storage/ParameterFiles.h"
#include "storage/UISettings.h"
#include "tests/fuzz/CaseBytes.h"
#include "tests/storage/TemporaryFolder.h"
#include "tests/support/ParameterKeys.h"
#include "tests/support/RecordingDiag.h"
#include "tests/update/LoopbackServer.h"
#include "web/UpdateNotice.h"
#include "web/UpdateRecord.h"
#include "web/UpdateRequest.h"
#include "web/UpdateService.h"

#include <algorithm>
#include <optional>
#include <windows.h>

static std::string gAddress = "https://nowhere.invalid/";

UpdateService CurrentUpdateService() {
    return {gAddress.c_str(), true};
}

namespace {

// A file of a case's bytes, which another program may hold.
struct GivenFile {
    std::string path, bytes;
    std::optional<ExclusiveOpening> holder;

    GivenFile(CaseBytes *from, const std::string &givenPath, bool mayBeHeld) : path(givenPath) {
        const bool isHeld = mayBeHeld && from->Pick(0, 31) == 31;
        bytes.assign(reinterpret_cast<const char *>(from->bytes), from->length);
        WriteWholeFile(path, bytes);
        if (isHeld)
            holder.emplace(path);
    }
    bool IsThere() { // let go
        holder.reset();
        return ReadWholeFile(path) == bytes;
    }
    template <typename Record> bool Starts(Record *record) const {
        if (bytes.size() < sizeof *record)
            return false;
        std::memcpy(record, bytes.data(), sizeof *record);
        return true;
    }
};

template <typename Record> bool AreSame(const Record &a, const Record &b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

void RequireInRange(const ParameterSet &set) {
    const RenderSettings settings = MakeRenderSettings(set, 100.0);
    for (const ParameterInfo &parameter : kParameters)
        Require(settings.*parameter.setting >= parameter.minimum &&
                    settings.*parameter.setting <= parameter.maximum,
                "what is rendered with is in range");
}

// What a set's bytes mean: the switch is 0 or 1, padding is 0.
bool MeansSet(const GivenFile &file, ParameterSet *set) {
    if (!file.Starts(set) || std::memcmp(set->version, kDefaultParameters.version, sizeof set->version) != 0)
        return false;
    set->outputSpikesOnly = set->outputSpikesOnly != 0;
    std::memset(set->padding1, 0, sizeof set->padding1);
    std::memset(set->padding2, 0, sizeof set->padding2);
    return true;
}

void ReadSet(CaseBytes *from, const TemporaryFolder &folder) {
    constexpr const char *kNames[] = {"a.sss", "b.SSS", "c.sss.bak", "sss"};
    const int name = from->Pick(0, 3);
    GivenFile file(from, folder / kNames[name], true);
    const ParameterSet before = kDefaultParameters;
    ParameterSet current = before, expected;
    gParameters = &current;
    const bool isSet = MeansSet(file, &expected) && !file.holder, isHeld = file.holder.has_value();
    host::Descriptor described, again;
    std::string why;
    const std::wstring path(file.path.begin(), file.path.end());
    const bool isWhole = isSet && file.bytes.size() == kParameterBlockSize;
    Require(host::ReadSettingsFile(path, &described, &why) == isWhole && described.values.empty() != isWhole,
            "the program that plays the filter reads whole sets only");
    Require(!isWhole || host::FindValue(described, kKeyAngle)->real == expected.angle / 10.0, "in degrees");
    Require(ReadInitialSettings(file.path.c_str()) == isSet, "a set's file is read, and no other");
    Require(AreSame(current, isSet ? expected : before), "the set is the file's, or as it was");
    RequireInRange(current);
    Require(!isHeld || !SaveParametersFile({}, file.path.c_str()), "what is held is not replaced");
    const bool mayGo = !isSet && !isHeld && name < 2;
    Require(file.IsThere() != mayGo, "only what is named as a set and is none goes");
    Require(TakeReports().empty() == isSet, "what could not be read is told");
    const auto block = reinterpret_cast<ParameterBlock *>(AccessParameterBlock(kMakeCurrentBlock, nullptr));
    Require(SaveParametersFile(*block, file.path.c_str()) && ReadInitialSettings(file.path.c_str()) &&
                AreSame(current, isSet ? expected : before),
            "a kept set comes back");
    std::free(block);
    Require(host::ReadSettingsFile(path, &described, &why), "a kept set is one for the program too");
    const std::vector<uint8_t> made = host::SettingsFileBytes(described);
    WriteWholeFile(file.path, {made.begin(), made.end()});
    Require(host::ReadSettingsFile(path, &again, &why) && again == described, "and comes back from it");
}

UISettings HeldSettings() {
    UISettings held = kDefaultUISettings;
    held.dialogRect = GetDialogRect();
    held.viewTool = GetViewTool();
    held.previewFlag = GetPreviewFlag();
    held.debugViewerRect = GetDebugViewerRect();
    held.debugDisplayChoice = GetDebugDisplayChoice();
    return held;
}

bool HasMeaning(const UISettings &s) {
    const auto isPlace = [](const ScreenRect &rect) {
        return !IsEmptyScreenRect(rect) || AreSame(rect, ScreenRect{});
    };
    return s.viewTool - 1 < 4 && s.previewFlag <= 1 && s.debugDisplayChoice <= 3 && isPlace(s.dialogRect) &&
           isPlace(s.debugViewerRect);
}

void ReadUISettings(CaseBytes *from, const TemporaryFolder &folder) {
    const UISettings before = HeldSettings();
    GivenFile file(from, folder / "UISettings.bin", true);
    UISettings given;
    const bool isRead = !file.holder && file.Starts(&given) &&
                        std::memcmp(given.version, before.version, sizeof given.version) == 0;
    LoadUISettings();
    const UISettings held = HeldSettings();
    Require(isRead ? AreUISettingsLoaded() : AreSame(held, before), "only a good file changes anything");
    Require(TakeReports().empty() == isRead, "what is not good is told");
    Require(HasMeaning(held) && (!isRead || !HasMeaning(given) || AreSame(given, held)),
            "what has a meaning is kept, the rest gets one");
    Require(file.IsThere(), "reading changes no file");
    SetDialogRect(held.debugViewerRect);
    SetViewTool(held.previewFlag + 3);
    SetPreviewFlag(held.previewFlag ^ 1);
    SetDebugViewerRect(held.dialogRect);
    SetDebugDisplayChoice(held.debugDisplayChoice ^ 3);
    const UISettings set = {{0, 0, 0, 11},        held.debugViewerRect, held.previewFlag + 3,
                            held.previewFlag ^ 1, held.dialogRect,      held.debugDisplayChoice ^ 3};
    Require(SaveUISettings() &&
                ReadWholeFile(file.path) == std::string(reinterpret_cast<const char *>(&set), sizeof set),
            "what is set is what is kept");
    Require(LoadUISettings() && AreSame(HeldSettings(), set), "and comes back");
}

void ReadRecord(CaseBytes *from, const TemporaryFolder &folder) {
    const int capacity = from->Pick(0, 60);
    GivenFile file(from, folder / "UpdateNotice.bin", true);
    UpdateRecord given, found;
    const bool isGood = !file.holder && file.Starts(&given) && given.magic == kUpdateRecordMagic &&
                        given.isOn <= 1 && given.lastAsked >= 0;
    Require(ReadUpdateRecord(&found) == !file.holder, "only what is held could be a record all the same");
    Require(AreSame(found, isGood ? given : kDefaultUpdateRecord), "a record as it stands, or the default");
    std::string notice(61, '#');
    const bool isTold = NewVersionKnown(notice.data(), static_cast<size_t>(capacity));
    Require(notice.find_last_not_of('#') + 1 <= static_cast<size_t>(isTold ? capacity : 0),
            "a notice stays in its room");
    Require(isTold == (isGood && given.isOn && capacity > 49 && CompareVersions(given.newest, {}) > 0),
            "a newer version is told when that is wanted");
    const bool wasHeld = file.holder.has_value();
    Require(SetUpdateNotice(true) == !wasHeld, "a choice is kept unless the file is held");
    Require(!wasHeld || file.IsThere(), "a held record stays");
    if (!wasHeld) {
        UpdateRecord expected = isGood ? given : kDefaultUpdateRecord;
        expected.isOn = 1;
        Require(AreSame(LoadUpdateRecord(), expected), "a choice changes nothing else");
    }
    TakeReports();
}

void ReadMemory(CaseBytes *from, const TemporaryFolder &folder) {
    SetEnvironmentVariableA("BRILLATRIX_HOST_FOLDER", folder.Path().c_str());
    GivenFile file(from, folder / "Registry.bin", true);
    const bool isHeld = file.holder.has_value();
    host::HostMemory memory;
    std::string why;
    const bool isGood = host::LoadHostMemory(&memory, &why);
    Require(!isHeld || !isGood, "a held memory is not read");
    Require(isGood || (!why.empty() && !memory.lastParameters && memory.registry.empty()),
            "a damaged memory is none and has a reason");
    file.holder.reset();
    Require(host::SaveHostMemory(memory, &why) == !isHeld, "a memory that was held is not written over");
    Require(!isHeld || file.IsThere(), "it stays");
    host::HostMemory again;
    Require(isHeld || host::LoadHostMemory(&again, &why), "a kept memory can be read");
    Require(again.registry.size() == memory.registry.size(), "with every entry");
    for (size_t i = 0; i < memory.registry.size(); ++i)
        Require(again.registry[i].key == memory.registry[i].key &&
                    PackDescriptor(again.registry[i].descriptor) ==
                        PackDescriptor(memory.registry[i].descriptor),
                "as it was");
    if (!memory.lastParameters)
        return;
    Require(PackDescriptor(*again.lastParameters) == PackDescriptor(*memory.lastParameters),
            "and parameters");
    const std::vector<uint8_t> made = host::SettingsFileBytes(*memory.lastParameters);
    ParameterSet set;
    std::memcpy(&set, made.data(), sizeof set);
    Require(set.outputSpikesOnly <= 1, "a switch is on or off");
    RequireInRange(set);
}

// A server that answers with a version, or anything.
void ReadAnswer(CaseBytes *from, const TemporaryFolder &) {
    const int way = from->Pick(0, 7);
    const std::string rest(reinterpret_cast<const char *>(from->bytes), from->length);
    const std::string answer =
        way == 0 ? rest : HttpAnswer(rest, way == 1 ? "302 Found" : "200 OK", way == 2 ? rest + "\r\n" : "");
    Require(SaveUpdateRecord({kUpdateRecordMagic, 1, 0, {{1, 2, 3, 4}}}), "a record is kept");
    const LoopbackServer server([&](const ServedConnection &connection) { connection.Send(answer); });
    gAddress = server.Address();
    const ULONGLONG begun = GetTickCount64();
    StartUpdateCheck();
    while (IsUpdateCheckRunning())
        Sleep(1);
    Require(GetTickCount64() - begun < kUpdateTimeLimit + 3000, "an answer is not waited for for long");
    const UpdateRecord record = LoadUpdateRecord();
    ModuleVersion told = {{1, 2, 3, 4}};
    const size_t line = rest.ends_with("\r\n") ? rest.size() - 2 : rest.size() - rest.ends_with("\n");
    if (way > 2 && rest.size() <= kMostUpdateAnswer)
        ParseVersion(rest.data(), line, &told);
    Require(way == 0 || way == 2 || CompareVersions(record.newest, told) == 0, "only a version is an answer");
    Require(record.magic == kUpdateRecordMagic && record.isOn == 1 && record.lastAsked > 0,
            "the question is noted");
    TakeReports();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t length) {
    CaseBytes from{bytes, length};
    const TemporaryFolder folder;
    gParameterBlockAccessor = AccessParameterBlock;
    std::snprintf(gSettingsFolder, sizeof gSettingsFolder, "%s", folder.Path().c_str());
    constexpr void (*kReaders[])(CaseBytes *, const TemporaryFolder &) = {ReadSet, ReadUISettings, ReadRecord,
                                                                          ReadMemory, ReadAnswer};
    kReaders[from.Pick(0, 4)](&from, folder);
    const std::vector<std::string> left = folder.Names();
    Require(std::none_of(left.begin(), left.end(),
                         [](const std::string &name) { return name.ends_with(".tmp"); }),
            "no unfinished file is left");
    return 0;
}
