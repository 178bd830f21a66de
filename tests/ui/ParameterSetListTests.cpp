// The list of saved sets and the three commands, on the dialog's template.
#include "resources/DialogControlIds.h"
#include "storage/AppFolders.h"
#include "storage/ParameterFiles.h"
#include "tests/storage/TemporaryFolder.h"
#include "tests/support/RecordingDiag.h"
#include "tests/support/SystemObjects.h"
#include "tests/support/WindowDriver.h"
#include "ui/settings/ParameterFileCommands.h"
#include "ui/settings/ParameterSetList.h"
#include "ui/window/DialogMessages.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <tuple>
#include <vector>

#include <commdlg.h>

namespace {

constexpr ParameterBlock kIdentity = {{0, 0, 0, 0, 0, 0, 5, 0}};

ParameterBlock gCurrent; // stands for the frame's current set
bool gRefuses = false;

uintptr_t CurrentSetAccessor(int32_t operation, const ParameterBlock *block) {
    switch (operation) {
    case kIdentityBlock:
        return reinterpret_cast<uintptr_t>(&kIdentity);
    case kMakeCurrentBlock: {
        if (gRefuses)
            return 0;
        auto *made = static_cast<ParameterBlock *>(malloc(sizeof(ParameterBlock)));
        *made = gCurrent;
        return reinterpret_cast<uintptr_t>(made);
    }
    case kCommitBlock:
        if (gRefuses)
            return 0;
        gCurrent = *block;
        return 1;
    default:
        return 0;
    }
}

ParameterBlock MarkedBlock(char mark) {
    ParameterBlock block = kIdentity;
    memset(block.bytes + 8, mark, sizeof block.bytes - 8);
    return block;
}

INT_PTR CALLBACK SetListProc(HWND window, UINT message, WPARAM wParam, LPARAM) {
    if (message == WM_COMMAND && LOWORD(wParam) == kSettingsComboId && HIWORD(wParam) == CBN_SELCHANGE) {
        if (const ParameterBlock *block = ParameterSetAt(window, SelectedParameterSet(window)))
            ApplyParameterBlock(window, *block);
        return TRUE;
    }
    return message == WM_INITDIALOG;
}

struct Prompts {
    int box = IDCANCEL;              // what the person answers ...
    std::wstring file;               // ... empty: cancelled
    DWORD fileDialogError = 0;       // with an empty file: the dialog failed
    int files = 0;                   // how often was asked
    std::vector<std::wstring> boxes; // flags, title and text
} gPrompts;

template <bool Saves> BOOL WINAPI AskFile(OPENFILENAMEW *request) {
    ++gPrompts.files;
    EXPECT_EQ(request->lStructSize, sizeof *request);
    EXPECT_EQ(memcmp(request->lpstrFilter, L"Parameter Files\0*.sss\0", 23 * sizeof(wchar_t)), 0);
    EXPECT_STREQ(request->lpstrDefExt, L"sss");
    EXPECT_TRUE(std::wstring(request->lpstrInitialDir).size() > 3 && request->hwndOwner);
    EXPECT_STREQ(request->lpstrTitle,
                 Saves ? L"Save Brillatrix Pro Parameter File" : L"Load Brillatrix Pro Parameter File");
    EXPECT_TRUE(request->Flags & OFN_NOCHANGEDIR) << "the host's current folder is not ours to change";
    EXPECT_EQ((request->Flags & OFN_OVERWRITEPROMPT) != 0, Saves);
    if (gPrompts.file.empty() || gPrompts.file.size() >= request->nMaxFile)
        return FALSE;
    wcscpy(request->lpstrFile, gPrompts.file.c_str());
    return TRUE;
}

DWORD WINAPI FileDialogError() {
    return gPrompts.fileDialogError;
}

int WINAPI AskBox(HWND, LPCWSTR text, LPCWSTR title, UINT flags) {
    gPrompts.boxes.push_back(std::to_wstring(flags) + L" " + title + L": " + text);
    return gPrompts.box;
}

} // namespace

// The linker takes an import's address from here instead of from the import library.
extern "C" {
decltype(&AskFile<false>) __imp_GetOpenFileNameW = AskFile<false>;
decltype(&AskFile<true>) __imp_GetSaveFileNameW = AskFile<true>;
decltype(&FileDialogError) __imp_CommDlgExtendedError = FileDialogError;
decltype(&AskBox) __imp_MessageBoxW = AskBox;
}

namespace {

class ParameterSetList : public testing::Test {
protected:
    ParameterSetList() {
        strcpy(gParametersFolder, folder.Path().c_str());
        gParameterBlockAccessor = CurrentSetAccessor;
        gCurrent = MarkedBlock('c');
        gRefuses = false;
        gPrompts = {};
        dialog = CreateDialogParamW(GetModuleHandleW(nullptr), kMainDialogName, nullptr, SetListProc, 0);
        list = GetDlgItem(dialog, kSettingsComboId);
        TakeReports();
    }
    ~ParameterSetList() override {
        FreeParameterSetList(dialog);
        DestroyWindow(dialog);
        PumpMessages();
        gParametersFolder[0] = '\0';
        gParameterBlockAccessor = nullptr;
        gPrompts = {};
        EXPECT_EQ(LiveObjects()["FindFirstFileW"], 0);
    }

    static std::wstring In(const TemporaryFolder &place, const std::wstring &name) {
        return std::wstring(place.Path().begin(), place.Path().end()) + L"\\" + name;
    }
    std::wstring Wide(const std::wstring &name) const { return In(folder, name); }
    std::wstring Elsewhere(const std::wstring &name) const { return In(elsewhere, name); }
    void WriteSet(const std::wstring &name, char mark) {
        ASSERT_TRUE(SaveParametersFile(MarkedBlock(mark), Wide(name).c_str()));
    }
    // Of the entries in their order; '-' has no block.
    std::string Marks() const {
        std::string marks;
        for (int i = 0; i < SendMessageW(list, CB_GETCOUNT, 0, 0); ++i)
            marks +=
                ParameterSetAt(dialog, i) ? static_cast<char>(ParameterSetAt(dialog, i)->bytes[50]) : '-';
        return marks;
    }
    std::wstring NameAt(int index) const {
        wchar_t name[kMaxPath] = L"<none>";
        ParameterSetName(dialog, index, name, kMaxPath);
        return name;
    }
    static char CurrentMark() { return static_cast<char>(gCurrent.bytes[50]); }
    void Pick(const std::wstring &path) { gPrompts.file = path; }

    TemporaryFolder folder, elsewhere;
    HWND dialog, list;
};

TEST_F(ParameterSetList, IsFilledFromTheFolderAndOwnsTheBlocks) {
    WriteSet(L"\u65E5\u672C \u2605.sss", '2');
    FillParameterSetList(dialog);
    EXPECT_EQ(NameAt(0), L"\u65E5\u672C \u2605");
    for (const int index : {-1, 3, 1000000}) {
        EXPECT_EQ(ParameterSetAt(dialog, index), nullptr);
        EXPECT_EQ(NameAt(index), L"<none>");
    }
    wchar_t tooSmall[3] = L"x";
    EXPECT_FALSE(ParameterSetName(dialog, 0, tooSmall, 3));
    EXPECT_STREQ(tooSmall, L"x");
    FreeParameterSetList(dialog);
    EXPECT_EQ(ParameterSetAt(dialog, 0), nullptr);
}

TEST_F(ParameterSetList, SavingWritesTheCurrentSetAndListsIt) {
    WriteSet(L"One.sss", '1');
    FillParameterSetList(dialog);
    const auto Save = [&](char mark, const std::wstring &path) {
        gCurrent = MarkedBlock(mark);
        Pick(path);
        SaveParameterFileDialog(dialog, {});
        return Marks();
    };
    EXPECT_EQ(Save('c', Wide(L"New \u2605.sss")), "1c");
    EXPECT_EQ(NameAt(1), L"New \u2605");
    EXPECT_EQ(Save('d', Wide(L"ONE.sss")), "dc") << "the saved-over entry has the new values";
    EXPECT_EQ(Save('d', Elsewhere(L"Out.sss")), "dcd");
    EXPECT_EQ(ReadWholeFile(elsewhere / "Out.sss"),
              std::string(reinterpret_cast<const char *>(gCurrent.bytes), sizeof gCurrent.bytes));
    // A name with a point, and one without the ending: neither may vanish, nor a namesake be lost unasked.
    EXPECT_EQ(Save('e', Wide(L"Night f2.8")), "dcde");
    EXPECT_EQ(NameAt(3), L"Night f2.8");
    EXPECT_TRUE(gPrompts.boxes.empty());
    EXPECT_EQ(Save('f', Wide(L"Night f2.8")), "dcde") << "cancelled";
    gPrompts.box = IDOK;
    EXPECT_EQ(Save('f', Wide(L"Night f2.8")), "dcdf");
    ASSERT_EQ(gPrompts.boxes.size(), 2u);
    EXPECT_TRUE(
        gPrompts.boxes[0].ends_with(L": The file 'Night f2.8.sss' already exists and will be replaced."));
    EXPECT_EQ(Save('g', Elsewhere(L"OUT")), "dcgf") << "the entry that stands for the file";
    EXPECT_EQ(Save('h', Elsewhere(L"One.sss")), "dcgfh") << "a namesake elsewhere";
    EXPECT_EQ(Save('i', Wide(L"One.sss")), "icgfh");
    EXPECT_TRUE(Exists(folder / "Night f2.8.sss") && !Exists(folder / "Night f2.8"));
    EXPECT_TRUE(TakeReports().empty());
}

TEST_F(ParameterSetList, WhatFailsIsToldAndChangesNothing) {
    const auto LastReport = [] {
        const auto reports = TakeReports();
        return reports.empty() ? std::string() : reports.back().message;
    };
    for (const DWORD error : {0, 0x3003}) { // cancelled, failed
        gPrompts.fileDialogError = error;
        LoadParameterFileDialog(dialog);
        EXPECT_EQ(LastReport(), error ? "GetOpenFileName() failed with error = '12291'" : "");
        SaveParameterFileDialog(dialog, {});
        EXPECT_EQ(LastReport(), error ? "GetSaveFileName() failed with error = '12291'" : "");
    }
    EXPECT_EQ(gPrompts.files, 4);
    WriteWholeFile(folder / "bad.sss", "");
    Pick(Wide(L"bad.sss"));
    LoadParameterFileDialog(dialog);
    EXPECT_EQ(LastReport(), "LoadParameterStructure() failed with FilePath = '" + (folder / "bad.sss") + "'");
    Pick(Wide(L"missing folder\\x.sss"));
    SaveParameterFileDialog(dialog, {});
    EXPECT_EQ(LastReport(),
              "SaveParametersFile() failed with FilePath = '" + (folder / "missing folder\\x.sss") + "'");
    gRefuses = true;
    EXPECT_FALSE(ApplyParameterBlock(dialog, kIdentity));
    TakeReports();
    Pick(Wide(L"x.sss"));
    SaveParameterFileDialog(dialog, {});
    EXPECT_EQ(TakeReports().size(), 1u);
    EXPECT_EQ(CurrentMark(), 'c');
    EXPECT_EQ(Marks(), "");
    EXPECT_TRUE(folder.Names().empty()) << "the bad file is gone";
    gParametersFolder[0] = '\0';
    FillParameterSetList(dialog);
    LoadParameterFileDialog(dialog);
    SaveParameterFileDialog(dialog, {});
    EXPECT_EQ(gPrompts.files, 7);
    EXPECT_EQ(TakeReports().size(), 6u);
}

TEST_F(ParameterSetList, DeletingAsksFirst) {
    WriteSet(L"One \u2605.sss", '1');
    WriteSet(L"Two.sss", '2');
    FillParameterSetList(dialog);
    DeleteParameterFile(dialog);
    EXPECT_TRUE(gPrompts.boxes.empty()) << "nothing is selected";
    SelectParameterSet(dialog, 0);
    DeleteParameterFile(dialog);
    EXPECT_EQ(gPrompts.boxes,
              std::vector<std::wstring>{L"49 Delete Brillatrix Pro Parameter File: The Brillatrix Pro saved "
                                        L"parameter file 'One \u2605.sss' will be deleted."});
    EXPECT_EQ(Marks(), "12");
    gPrompts.box = IDOK;
    DeleteParameterFile(dialog);
    EXPECT_EQ(Marks(), "2");
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"Two.sss"});
    SelectParameterSet(dialog, 0);
    DeleteFileW(Wide(L"Two.sss").c_str());
    DeleteParameterFile(dialog);
    EXPECT_EQ(Marks(), "");
    EXPECT_EQ(TakeReports().size(), 1u) << "a file that was gone already is told";
}

// Two files of one name, and the dialog's own entry of that name: each entry's own file goes, and no other.
TEST_F(ParameterSetList, DeletingNeverTakesANamesake) {
    gPrompts.box = IDOK;
    AddParameterSet(dialog, L"One", nullptr);
    WriteSet(L"One.sss", '1');
    FillParameterSetList(dialog);
    Pick(Elsewhere(L"One.sss"));
    SaveParameterFileDialog(dialog, {});
    EXPECT_EQ(Marks(), "-1c");
    for (const auto &[selected, left, inFolder, outside] :
         {std::tuple(0, "-1c", 1u, 1u), {2, "-1", 1u, 0u}, {1, "-", 0u, 0u}}) {
        SelectParameterSet(dialog, selected);
        DeleteParameterFile(dialog);
        EXPECT_EQ(Marks(), left);
        EXPECT_EQ(folder.Names().size(), inFolder);
        EXPECT_EQ(elsewhere.Names().size(), outside);
    }
    EXPECT_TRUE(TakeReports().empty());
}

// Whatever name is typed: what is no set, and not named as one, is told and stays.
TEST_F(ParameterSetList, LoadingRefusesWhatIsNoSet) {
    const std::string diary = "Dear diary, there is more in here than forty characters.";
    for (const auto &[name, content, told, stays] :
         {std::tuple(L"diary.txt", diary, "The file '%s' is no Parameter Set file and stays as it is.", true),
          {L"empty.txt", std::string(), "The file '%s' is no Parameter Set file and stays as it is.", true},
          {L"empty.sss", std::string(), "Your Parameter Set file '%s' is invalid and is being deleted.\r\n",
           false},
          {L"missing\\x.sss", std::string("-"), "Your Parameter Set file '%s' does not exist.", false}}) {
        const std::string path = elsewhere / std::string(name, name + wcslen(name));
        if (content != "-")
            WriteWholeFile(path, content);
        Pick(Elsewhere(name));
        LoadParameterFileDialog(dialog);
        char expected[500];
        snprintf(expected, sizeof expected, told, path.c_str());
        std::vector<std::string> shown;
        for (const RecordedReport &report : TakeReports())
            if (report.record.kind == kUserMessage)
                shown.push_back(report.message);
        EXPECT_EQ(shown, std::vector<std::string>{expected});
        EXPECT_EQ(ReadWholeFile(path), stays ? content : "<missing>");
    }
    EXPECT_EQ(Marks(), "");
    EXPECT_EQ(CurrentMark(), 'c');
}

} // namespace
