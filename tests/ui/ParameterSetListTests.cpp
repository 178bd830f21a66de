// The list of saved sets and the three commands, in a dialog that does with them what the main dialog does.
#include "tests/storage/TemporaryFolder.h"
#include "tests/support/RecordingDiag.h"
#include "tests/ui/PairDialog.h"
#include "tests/ui/UserPrompts.h"
#include "storage/AppFolders.h"
#include "storage/ParameterFiles.h"
#include "ui/DialogMessages.h"
#include "ui/ParameterFileCommands.h"
#include "ui/ParameterSetList.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>

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

int gReplacedMessages, gPreviewMessages, gChoices;

INT_PTR CALLBACK SetListProc(HWND window, UINT message, WPARAM wParam, LPARAM) {
    gReplacedMessages += message == kMsgParametersReplaced;
    gPreviewMessages += message == kMsgRequestPreview;
    if (message == WM_COMMAND && LOWORD(wParam) == kSettingsComboId && HIWORD(wParam) == CBN_SELCHANGE) {
        ++gChoices;
        if (const ParameterBlock *block = ParameterSetAt(window, SelectedParameterSet(window)))
            ApplyParameterBlock(window, *block);
        return TRUE;
    }
    return message == WM_INITDIALOG;
}

class ParameterSetList : public testing::Test {
protected:
    ParameterSetList() {
        strcpy(gParametersFolder, folder.Path().c_str());
        gParameterBlockAccessor = CurrentSetAccessor;
        gCurrent = MarkedBlock('c');
        gRefuses = false;
        gAnswers = {};
        struct {
            DLGTEMPLATE header;
            WORD menu, windowClass, caption;
        } description = {};
        description.header.style = WS_POPUP;
        dialog = CreateDialogIndirectParamW(GetModuleHandleW(nullptr), &description.header, nullptr,
                                            SetListProc, 0);
        list =
            CreateWindowExW(0, L"COMBOBOX", L"", WS_CHILD | WS_VISIBLE | CBS_DROPDOWNLIST | WS_VSCROLL, 0, 0,
                            200, 300, dialog, reinterpret_cast<HMENU>(static_cast<INT_PTR>(kSettingsComboId)),
                            GetModuleHandleW(nullptr), nullptr);
        TakeReports();
        TakeAskedBoxes();
        TakeAskedFiles();
        gReplacedMessages = gPreviewMessages = gChoices = 0;
    }
    ~ParameterSetList() override {
        FreeParameterSetList(dialog);
        DestroyWindow(dialog);
        PumpMessages();
        gParametersFolder[0] = '\0';
        gParameterBlockAccessor = nullptr;
        gAnswers = {};
    }

    std::wstring Wide(const std::wstring &name) const {
        return std::wstring(folder.Path().begin(), folder.Path().end()) + L"\\" + name;
    }
    void WriteSet(const std::wstring &name, char mark) {
        ASSERT_TRUE(SaveParametersFile(MarkedBlock(mark), Wide(name).c_str()));
    }
    // Marks of the entries in their order.
    std::string Marks() const {
        std::string marks;
        for (int i = 0; ParameterSetAt(dialog, i); ++i)
            marks += static_cast<char>(ParameterSetAt(dialog, i)->bytes[50]);
        return marks;
    }
    std::wstring NameAt(int index) const {
        wchar_t name[kMaxPath] = L"<none>";
        ParameterSetName(dialog, index, name, kMaxPath);
        return name;
    }
    static char CurrentMark() { return static_cast<char>(gCurrent.bytes[50]); }
    void Pick(const std::wstring &path) { gAnswers.file = path; }

    TemporaryFolder folder, elsewhere;
    HWND dialog, list;
};

TEST_F(ParameterSetList, IsFilledFromTheFolderAndOwnsTheBlocks) {
    WriteSet(L"First.sss", '1');
    WriteSet(L"\u65E5\u672C \u2605.sss", '2');
    WriteWholeFile(folder / "Obsolete.sss", std::string("\0\0\0\0\0\0\4\0", 8));
    FillParameterSetList(dialog);
    EXPECT_EQ(Marks(), "12");
    EXPECT_EQ(NameAt(0), L"First");
    EXPECT_EQ(NameAt(1), L"\u65E5\u672C \u2605");
    EXPECT_FALSE(Exists(folder / "Obsolete.sss"));
    EXPECT_EQ(SelectedParameterSet(dialog), -1);
    FreeParameterSetList(dialog);
    EXPECT_EQ(ParameterSetAt(dialog, 0), nullptr);
}

TEST_F(ParameterSetList, EntriesOfTheDialogStayAndNeedNoBlock) {
    SendMessageW(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(L"Default"));
    WriteSet(L"One.sss", '1');
    FillParameterSetList(dialog);
    EXPECT_EQ(ParameterSetAt(dialog, 0), nullptr);
    ASSERT_NE(ParameterSetAt(dialog, 1), nullptr);
    for (const int index : {-1, 2, 1000000}) {
        EXPECT_EQ(ParameterSetAt(dialog, index), nullptr);
        EXPECT_EQ(NameAt(index), L"<none>");
    }
    wchar_t tooSmall[3] = L"x";
    EXPECT_FALSE(ParameterSetName(dialog, 1, tooSmall, 3));
    EXPECT_STREQ(tooSmall, L"x");
}

TEST_F(ParameterSetList, FiveHundredSetsAreListedFast) {
    for (int i = 0; i < 500; ++i)
        WriteWholeFile(folder / ("Set " + std::to_string(i) + ".sss"),
                       std::string(reinterpret_cast<const char *>(kIdentity.bytes), 255));
    // The best of a few fillings: the machine may be busy with other tests.
    long long best = 1000000;
    for (int run = 0; run < 3; ++run) {
        FreeParameterSetList(dialog);
        const auto start = std::chrono::steady_clock::now();
        FillParameterSetList(dialog);
        const auto spent = std::chrono::steady_clock::now() - start;
        const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(spent);
        best = std::min<long long>(best, milliseconds.count());
        EXPECT_EQ(SendMessageW(list, CB_GETCOUNT, 0, 0), 500);
    }
    printf("500 sets: %lld ms\n", best);
    EXPECT_LT(best, 200);
}

TEST_F(ParameterSetList, LoadingFromTheFolderAppliesAndClearsTheSelection) {
    WriteSet(L"One.sss", '1');
    FillParameterSetList(dialog);
    SelectParameterSet(dialog, 0);
    Pick(Wide(L"one.SSS"));
    LoadParameterFileDialog(dialog);
    PumpMessages();
    EXPECT_EQ(CurrentMark(), '1');
    EXPECT_EQ(SelectedParameterSet(dialog), -1);
    EXPECT_EQ(Marks(), "1");
    EXPECT_EQ(gReplacedMessages, 1);
    EXPECT_EQ(gPreviewMessages, 1);
    const auto asked = TakeAskedFiles();
    ASSERT_EQ(asked.size(), 1u);
    EXPECT_FALSE(asked[0].saves);
    EXPECT_EQ(asked[0].owner, dialog);
    EXPECT_EQ(asked[0].title, L"Load Brillatrix Pro Parameter File");
    EXPECT_EQ(asked[0].filter, L"Parameter Files|*.sss");
    EXPECT_EQ(asked[0].defaultExtension, L"sss");
    EXPECT_EQ(asked[0].startFolder, Wide(L"").substr(0, folder.Path().size()));
    EXPECT_TRUE(asked[0].flags & OFN_NOCHANGEDIR) << "the host's current folder is not ours to change";
    EXPECT_TRUE(TakeReports().empty());
}

TEST_F(ParameterSetList, LoadingFromElsewhereAddsAndSelects) {
    WriteSet(L"One.sss", '1');
    FillParameterSetList(dialog);
    const std::wstring other(elsewhere.Path().begin(), elsewhere.Path().end());
    ASSERT_TRUE(SaveParametersFile(MarkedBlock('e'), (other + L"\\M\u00FCnchen \u2605.v2.sss").c_str()));
    Pick(other + L"\\M\u00FCnchen \u2605.v2.sss");
    LoadParameterFileDialog(dialog);
    EXPECT_EQ(Marks(), "1e");
    EXPECT_EQ(NameAt(1), L"M\u00FCnchen \u2605.v2");
    EXPECT_EQ(SelectedParameterSet(dialog), 1);
    EXPECT_EQ(gChoices, 1);
    EXPECT_EQ(CurrentMark(), 'e');
}

TEST_F(ParameterSetList, CancelAndFailureOfAFileDialogChangeNothing) {
    LoadParameterFileDialog(dialog);
    SaveParameterFileDialog(dialog);
    EXPECT_TRUE(TakeReports().empty());
    EXPECT_EQ(TakeAskedFiles().size(), 2u);
    gAnswers.fileDialogError = 0x3003;
    LoadParameterFileDialog(dialog);
    SaveParameterFileDialog(dialog);
    const auto reports = TakeReports();
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0].message, "GetOpenFileName() failed with error = '12291'");
    EXPECT_EQ(reports[1].message, "GetSaveFileName() failed with error = '12291'");
    EXPECT_EQ(CurrentMark(), 'c');
    EXPECT_TRUE(folder.Names().empty());
}

TEST_F(ParameterSetList, LoadingABadFileIsToldAndChangesNothing) {
    WriteWholeFile(folder / "bad.sss", "");
    Pick(Wide(L"bad.sss"));
    LoadParameterFileDialog(dialog);
    const auto reports = TakeReports();
    ASSERT_GE(reports.size(), 2u);
    EXPECT_EQ(reports.back().message,
              "LoadParameterStructure() failed with FilePath = '" + (folder / "bad.sss") + "'");
    EXPECT_EQ(CurrentMark(), 'c');
    EXPECT_EQ(gReplacedMessages, 0);
    EXPECT_FALSE(Exists(folder / "bad.sss"));
    gRefuses = true;
    EXPECT_FALSE(ApplyParameterBlock(dialog, kIdentity));
    EXPECT_EQ(gReplacedMessages, 0);
}

TEST_F(ParameterSetList, SavingWritesTheCurrentSetAndListsIt) {
    WriteSet(L"One.sss", '1');
    FillParameterSetList(dialog);
    Pick(Wide(L"New \u2605.sss"));
    SaveParameterFileDialog(dialog);
    Pick(Wide(L"ONE.sss"));
    gCurrent = MarkedBlock('d');
    SaveParameterFileDialog(dialog);
    EXPECT_EQ(Marks(), "dc") << "the saved-over entry has the new values, the new file is listed";
    EXPECT_EQ(NameAt(1), L"New \u2605");
    const std::wstring other(elsewhere.Path().begin(), elsewhere.Path().end());
    Pick(other + L"\\Out.sss");
    SaveParameterFileDialog(dialog);
    EXPECT_EQ(Marks(), "dcd");
    EXPECT_EQ(NameAt(2), L"Out");
    EXPECT_EQ(ReadWholeFile(elsewhere / "Out.sss"),
              std::string(reinterpret_cast<const char *>(gCurrent.bytes), sizeof gCurrent.bytes));
    Pick(Wide(L"Text.txt"));
    SaveParameterFileDialog(dialog);
    EXPECT_EQ(Marks(), "dcd") << "a file that the next filling would not find is not listed";
    const auto asked = TakeAskedFiles();
    ASSERT_EQ(asked.size(), 4u);
    EXPECT_TRUE(asked[0].saves);
    EXPECT_EQ(asked[0].title, L"Save Brillatrix Pro Parameter File");
    EXPECT_TRUE(asked[0].flags & OFN_OVERWRITEPROMPT);
    EXPECT_TRUE(TakeReports().empty());
}

TEST_F(ParameterSetList, ASaveThatFailsIsTold) {
    Pick(Wide(L"missing folder\\x.sss"));
    SaveParameterFileDialog(dialog);
    auto reports = TakeReports();
    ASSERT_GE(reports.size(), 1u);
    EXPECT_EQ(reports.back().record.kind, kUserMessage);
    EXPECT_EQ(reports.back().message,
              "SaveParametersFile() failed with FilePath = '" + (folder / "missing folder\\x.sss") + "'");
    gRefuses = true;
    Pick(Wide(L"x.sss"));
    SaveParameterFileDialog(dialog);
    EXPECT_EQ(TakeReports().size(), 1u);
    EXPECT_EQ(Marks(), "");
    EXPECT_TRUE(folder.Names().empty());
}

TEST_F(ParameterSetList, DeletingAsksFirst) {
    WriteSet(L"One \u2605.sss", '1');
    WriteSet(L"Two.sss", '2');
    FillParameterSetList(dialog);
    DeleteParameterFile(dialog);
    EXPECT_TRUE(TakeAskedBoxes().empty()) << "nothing is selected";
    SelectParameterSet(dialog, 0);
    DeleteParameterFile(dialog);
    const auto asked = TakeAskedBoxes();
    ASSERT_EQ(asked.size(), 1u);
    EXPECT_EQ(asked[0].owner, dialog);
    EXPECT_EQ(asked[0].title, L"Delete Brillatrix Pro Parameter File");
    EXPECT_EQ(asked[0].text, L"The Brillatrix Pro saved parameter file 'One \u2605.sss' will be deleted.");
    EXPECT_EQ(asked[0].flags, static_cast<UINT>(MB_OKCANCEL | MB_ICONWARNING));
    EXPECT_EQ(Marks(), "12");
    EXPECT_EQ(folder.Names().size(), 2u);
    gAnswers.box = IDOK;
    DeleteParameterFile(dialog);
    EXPECT_EQ(Marks(), "2");
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"Two.sss"});
    EXPECT_TRUE(TakeReports().empty());
    SelectParameterSet(dialog, 0);
    DeleteFileW(Wide(L"Two.sss").c_str());
    DeleteParameterFile(dialog);
    EXPECT_EQ(Marks(), "");
    EXPECT_EQ(TakeReports().size(), 1u) << "a file that was gone already is told";
}

TEST_F(ParameterSetList, WithoutAFolderTheCommandsAskNothing) {
    gParametersFolder[0] = '\0';
    FillParameterSetList(dialog);
    LoadParameterFileDialog(dialog);
    SaveParameterFileDialog(dialog);
    EXPECT_TRUE(TakeAskedFiles().empty());
    EXPECT_EQ(TakeReports().size(), 6u);
}

// --- The system's own dialog
// -----------------------------------------------------------------------------------

constexpr int kNameFieldId = 1148; // "cmb13"

struct DialogDriver {
    std::wstring name; // empty: cancel
    std::wstring title;
} gDriver;

BOOL CALLBACK FindNameField(HWND window, LPARAM found) {
    if (GetDlgCtrlID(window) != kNameFieldId)
        return TRUE;
    *reinterpret_cast<HWND *>(found) = window;
    return FALSE;
}

// Fills the file dialog in and closes it as soon as it is there.
void CALLBACK DriveFileDialog(HWND, UINT, UINT_PTR timer, DWORD) {
    HWND popup = nullptr;
    EnumThreadWindows(
        GetCurrentThreadId(),
        [](HWND window, LPARAM found) -> BOOL {
            HWND field = nullptr;
            EnumChildWindows(window, FindNameField, reinterpret_cast<LPARAM>(&field));
            if (field && IsWindowVisible(window))
                *reinterpret_cast<HWND *>(found) = window;
            return !field;
        },
        reinterpret_cast<LPARAM>(&popup));
    if (!popup)
        return;
    KillTimer(nullptr, timer);
    wchar_t title[100] = L"";
    GetWindowTextW(popup, title, 100);
    gDriver.title = title;
    HWND field = nullptr;
    EnumChildWindows(popup, FindNameField, reinterpret_cast<LPARAM>(&field));
    SendMessageW(field, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(gDriver.name.c_str()));
    PostMessageW(popup, WM_COMMAND, gDriver.name.empty() ? IDCANCEL : IDOK, 0);
}

TEST_F(ParameterSetList, TheSystemsFileDialogsUnderstandTheRequests) {
    wchar_t before[kMaxPath], after[kMaxPath];
    GetCurrentDirectoryW(kMaxPath, before);
    gAnswers.realFileDialogs = true;
    gDriver = {L"By dialog", L""};
    SetTimer(nullptr, 0, 10, DriveFileDialog);
    SaveParameterFileDialog(dialog);
    EXPECT_EQ(gDriver.title, L"Save Brillatrix Pro Parameter File");
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"By dialog.sss"})
        << "start folder and default extension";
    EXPECT_EQ(Marks(), "c");
    gCurrent = MarkedBlock('x');
    gDriver = {L"By dialog.sss", L""};
    SetTimer(nullptr, 0, 10, DriveFileDialog);
    LoadParameterFileDialog(dialog);
    EXPECT_EQ(gDriver.title, L"Load Brillatrix Pro Parameter File");
    EXPECT_EQ(CurrentMark(), 'c');
    gDriver = {L"", L""};
    SetTimer(nullptr, 0, 10, DriveFileDialog);
    LoadParameterFileDialog(dialog);
    EXPECT_TRUE(TakeReports().empty()) << "cancelled";
    GetCurrentDirectoryW(kMaxPath, after);
    EXPECT_STREQ(before, after);
}

} // namespace
