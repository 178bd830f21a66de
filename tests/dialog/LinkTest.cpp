// Where the links lead: those of the about box, and the main dialog's to a newer version. The build gives the
// maker's addresses.
#include "resources/ResourceIds.h"
#include "tests/dialog/DialogFixture.h"
#include "web/UpdateRecord.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <shellapi.h>

namespace {

class Links : public DialogFixture {
protected:
    void KnowVersion(uint16_t newest, bool isOn) {
        for (const char *name : {"user", "user\\Nexorvanta", "user\\Nexorvanta\\Brillatrix"})
            MakeFolder(folder / name);
        MakeFolder(UserFolder("Settings"));
        const UpdateRecord record = {
            kUpdateRecordMagic, isOn ? 1u : 0u, std::time(nullptr), {{newest, 0, 0, 0}}};
        WriteWholeFile(UserFolder("Settings") + "\\UpdateNotice.bin",
                       std::string(reinterpret_cast<const char *>(&record), sizeof record));
    }
    void ShowAbout(const std::function<void(HWND)> &script) {
        static std::function<void(HWND)> play; // then closes it
        play = [script](HWND box) {
            script(box);
            PostMessageA(box, WM_COMMAND, IDOK, 0);
        };
        const auto show = [](HINSTANCE module, LPCSTR name, HWND owner, DLGPROC about, LPARAM parameter) {
            EXPECT_EQ(GetCursor(), LoadCursorA(module, MAKEINTRESOURCEA(kWaitCursorId)));
            return PlayModal(
                about,
                [&](DLGPROC played) { return DialogBoxParamA(module, name, owner, played, parameter); },
                play);
        };
        host::ImportHooks hooks;
        host::ReplaceImport<decltype(&DialogBoxParamA)>(module.module, "DialogBoxParamA", show, &hooks);
        Open();
        SetCursor(nullptr);
        EXPECT_EQ(host::CallAbout(filterHost), kNoError);
        host::RestoreImports(&hooks);
        host::CloseHost(filterHost);
    }
};

constexpr wchar_t kNotice[] = L"A New Version of Brillatrix Pro is Available Online";
constexpr char kDownload[] = "open " BX_DOWNLOAD_ADDRESS;

} // namespace

TEST_F(Links, TheMainDialogLeadsToANewerVersion) {
    KnowVersion(60000, true);
    RunDialog([&] {
        ASSERT_NE(Item(kUpdateLinkId), nullptr);
        EXPECT_EQ(Text(kUpdateLinkId), kNotice);
        EXPECT_EQ(GetWindowLongW(Item(kUpdateLinkId), GWL_EXSTYLE) & WS_EX_DLGMODALFRAME, 0);
        for (const UINT forged : {WM_DRAWITEM, WM_NCDESTROY})
            SendMessageW(dialog, forged, kUpdateLinkId, 0);
        Click(kUpdateLinkId);
        EXPECT_EQ(gAnswers.opened, std::vector<std::string>{kDownload});
        SetFocus(Item(kUpdateLinkId));
        Key(VK_RETURN);
        EXPECT_EQ(gAnswers.opened.size(), 2u);
        EXPECT_TRUE(IsWindowVisible(dialog)) << "Enter was taken for OK";
        const RECT before = ScreenPlace(kUpdateLinkId), button = ScreenPlace(kHelp);
        EXPECT_LT(before.right, button.left);
        Resize(1100, 850);
        EXPECT_EQ(ScreenPlace(kUpdateLinkId).left, before.left);
        EXPECT_EQ(ScreenPlace(kUpdateLinkId).top, ScreenPlace(kHelp).top);
        PressCancel();
    });
    for (const auto &[version, isOn] : {std::pair<uint16_t, bool>{60000, false}, {0, true}}) {
        KnowVersion(version, isOn);
        RunDialog([&] {
            EXPECT_EQ(Item(kUpdateLinkId), nullptr);
            PressCancel();
        });
    }
}

TEST_F(Links, TheAboutBoxOpensItsAddressesAndTellsWhatItCannotOpen) {
    const std::vector<std::string> addresses = {"open " BX_HELP_ADDRESS, "open " BX_WEB_ADDRESS,
                                                "open " BX_SUPPORT_ADDRESS, kDownload};
    KnowVersion(60000, true);
    ShowAbout([&](HWND box) {
        for (const int id : {kAboutHelpLinkId, kAboutWebLinkId, kAboutSupportLinkId, kAboutUpdateLinkId}) {
            EXPECT_TRUE(IsWindowVisible(GetDlgItem(box, id)));
            SendDlgItemMessageA(box, id, BM_CLICK, 0, 0);
        }
        EXPECT_EQ(gAnswers.opened, addresses);
        const Picture logo = CaptureClient(GetDlgItem(box, kAboutLogoId));
        EXPECT_NE(PixelAt(logo, logo.width / 2, logo.height / 2), PixelAt(logo, 0, 0)) << "there is one";
        for (const UINT message : {WM_DRAWITEM, WM_SETTINGCHANGE}) // without a record, which must not end it
            SendMessageA(box, message, 0, 0);
        wchar_t text[100] = L"";
        GetDlgItemTextW(box, kAboutUpdateLinkId, text, 100);
        EXPECT_STREQ(text, kNotice);
        GetDlgItemTextW(box, kAboutVersionId, text, 100);
        EXPECT_EQ(std::wstring(text).find(L"Version "), 0u);
        CheckDlgButton(box, kAboutUpdateSwitchId, BST_UNCHECKED);
        SendMessageA(box, WM_COMMAND, MAKEWPARAM(kAboutUpdateSwitchId, BN_CLICKED), 0);
        EXPECT_FALSE(IsWindowVisible(GetDlgItem(box, kAboutUpdateLinkId)));

        EXPECT_TRUE(boxes.empty());
        gAnswers.shellAnswer = SE_ERR_NOASSOC;
        SendDlgItemMessageA(box, kAboutWebLinkId, BM_CLICK, 0, 0);
        ASSERT_EQ(boxes.size(), 1u);
        EXPECT_EQ(boxes[0].text, "The address could not be opened (error 31). It is: " BX_WEB_ADDRESS);
        EXPECT_EQ(boxes[0].title, "Warning");
    });
    UpdateRecord record = {};
    const std::string bytes = ReadWholeFile(UserFolder("Settings") + "\\UpdateNotice.bin");
    memcpy(&record, bytes.data(), std::min(bytes.size(), sizeof record));
    EXPECT_EQ(record.isOn, 0u);
    // A theme's link that is hard to read on its dialog has the colour of text.
    const auto color = [](int index) -> DWORD {
        return index == COLOR_HOTLIGHT ? RGB(0, 255, 0) : index == COLOR_3DFACE ? RGB(255, 0, 0) : 0;
    };
    host::ReplaceImport<DWORD(WINAPI *)(int)>(module.module, "GetSysColor", color, &hooks);
    ShowAbout([](HWND box) {
        const Picture link = CaptureClient(GetDlgItem(box, kAboutWebLinkId));
        EXPECT_EQ(std::count(link.pixels.begin(), link.pixels.end(), 0xFF00FF00u), 0);
        EXPECT_GT(std::count(link.pixels.begin(), link.pixels.end(), 0xFF000000u), 50);
    });
}

TEST_F(Links, TheGuideIsOfferedWhereItIsInstalled) {
    constexpr wchar_t key[] = L"Software\\Nexorvanta\\Brillatrix";
    static std::wstring opened;
    opened.clear();
    const auto open = [](HWND, LPCWSTR, LPCWSTR file, LPCWSTR, LPCWSTR, INT) {
        opened = file;
        return reinterpret_cast<HINSTANCE>(INT_PTR{33});
    };
    host::ImportHooks hooks;
    host::ReplaceImport<decltype(&ShellExecuteW)>(module.module, "ShellExecuteW", open, &hooks);
    MakeFolder(folder / "guide");
    WriteWholeFile(folder / "guide\\Brillatrix Pro Guide.html", "guide");
    const std::string path = folder / "";
    const std::wstring place(path.begin(), path.end());
    RegSetKeyValueW(HKEY_CURRENT_USER, key, L"InstallFolder", REG_SZ, place.c_str(),
                    static_cast<DWORD>((place.size() + 1) * sizeof(wchar_t)));
    ShowAbout([](HWND box) {
        EXPECT_TRUE(IsWindowVisible(GetDlgItem(box, kAboutGuideLinkId)));
        SendDlgItemMessageA(box, kAboutGuideLinkId, BM_CLICK, 0, 0);
    });
    RegDeleteTreeW(HKEY_CURRENT_USER, key);
    host::RestoreImports(&hooks);
    EXPECT_NE(opened.find(L"guide\\Brillatrix Pro Guide.html"), std::wstring::npos);
    EXPECT_TRUE(gAnswers.opened.empty());
}
