// A diagnostic caller and the finished module.
#include "engine/table/LightSource.h"
#include "plugin/interface/DiagnosticInterface.h"
#include "plugin/interface/HostInterface.h"
#include "resources/ResourceIds.h"
#include "tests/plugin/ModuleFixture.h"
#include "tests/plugin/NightDocument.h"
#include "tests/support/WindowDriver.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

class DiagnosticTest : public ModuleFixture {
protected:
    void SetUp() override {
        ModuleFixture::SetUp();
        filterHost.document = MakeNight({.width = 600, .height = 400, .lights = 12});
        filterHost.settings.playInfo = kPlayDontDisplay;
        listProc = ProcedureOf("DisplayLightSourceTableProc");
        imageProc = ProcedureOf("DebugImageProc");
        ASSERT_TRUE(listProc && imageProc);
        Open();
        ASSERT_EQ(Run().code, kNoError); // what stays from any run on is there
        afterAnyRun = Held();
        ASSERT_EQ(host::CallSelector(filterHost, kSelectorParameters), kNoError);
        ASSERT_EQ(host::CallSelector(filterHost, kSelectorPrepare), kNoError);
    }

    DLGPROC ProcedureOf(const char *name) const {
        const FARPROC address = GetProcAddress(module.module, name);
        DLGPROC procedure = nullptr;
        static_assert(sizeof procedure == sizeof address);
        std::memcpy(&procedure, &address, sizeof procedure);
        return procedure;
    }

    INT_PTR Ask(uint32_t message, WPARAM wParam = 0, const void *record = nullptr) const {
        return listProc(nullptr, message, wParam, reinterpret_cast<LPARAM>(record));
    }

    HeldObjects afterAnyRun{};
    DLGPROC listProc = nullptr, imageProc = nullptr;
};

} // namespace

TEST_F(DiagnosticTest, TellsTheLightsAndThePicturesUntilFinish) {
    EXPECT_EQ(Ask(kDiagnosticVersion), INT_PTR{kDiagnosticVersionNumber});
    EXPECT_EQ(Ask(kDiagnosticKeep, kKeepLights | kKeepImages), 1);
    EXPECT_EQ(Ask(kDiagnosticLightCount), 0);
    const host::Document document = filterHost.document; // Start draws on it
    ASSERT_EQ(host::CallSelector(filterHost, kSelectorStart), kNoError);
    const INT_PTR count = Ask(kDiagnosticLightCount);
    ASSERT_GE(count, 10);
    std::vector<DiagnosticLight> lights(static_cast<size_t>(count) + 1);
    EXPECT_EQ(Ask(kDiagnosticCopyLights, 3, lights.data()), 3);
    EXPECT_EQ(Ask(kDiagnosticCopyLights, lights.size(), lights.data()), count);
    lights.pop_back();
    DiagnosticLine line;
    ASSERT_EQ(Ask(kDiagnosticLine, 1, &line), 1);
    EXPECT_EQ(std::string(line.text), "NumberOfLightSources = " + std::to_string(count) + "\n\n");
    const double share = (100 - SetInHandle().threshold) / 100.0;
    uint32_t rank = 0, brighter = UINT32_MAX;
    for (const DiagnosticLight &light : lights) {
        char expected[256];
        snprintf(expected, sizeof expected,
                 "LightSourceTable[%04u] x = %.2f, y = %.2f, Diam = %.2f, Bright = %X", rank,
                 light.xQuarters / 4.0, light.yQuarters / 4.0, 2 * std::sqrt(light.radiusSquared),
                 light.brightness);
        ASSERT_EQ(Ask(kDiagnosticLine, 0, &line), 1);
        EXPECT_STREQ(line.text, expected);
        EXPECT_EQ(light.rank, rank++);
        EXPECT_EQ(light.state, 1u);
        EXPECT_LE(light.brightness, brighter);
        EXPECT_EQ(light.drawn, light.brightness > share * share * 4294967294.0 ? 1u : 0u);
        brighter = light.brightness;
    }
    EXPECT_EQ(Ask(kDiagnosticLine, 0, &line), 0);

    for (uint32_t choice = 0; choice < kDiagnosticPictures; ++choice) {
        DiagnosticPicture picture{};
        ASSERT_EQ(Ask(kDiagnosticCopyPicture, choice, &picture), 1) << choice;
        EXPECT_TRUE(choice == 3 ? picture.width > 9 && picture.height > 9
                                : picture.width == 600 && picture.height == 400);
        std::vector<uint8_t> pixels(static_cast<size_t>(picture.width) * picture.height * 4);
        picture.pixels = pixels.data();
        picture.pixelBytes = pixels.size() - 1;
        EXPECT_EQ(Ask(kDiagnosticCopyPicture, choice, &picture), 0) << "too little room";
        EXPECT_EQ(pixels.back(), 0);
        picture.pixelBytes = pixels.size();
        EXPECT_EQ(Ask(kDiagnosticCopyPicture, choice, &picture), 1);
        EXPECT_EQ(pixels.back(), 255);
        const size_t light = lights[0].yQuarters / 4 * 600 + lights[0].xQuarters / 4;
        for (size_t c = 0; choice == 0 && c < 3; ++c)
            EXPECT_EQ(pixels[light * 4 + 2 - c], document.planes[c][light]) << c;
    }
    DiagnosticPicture none{};
    EXPECT_EQ(Ask(kDiagnosticCopyPicture, kDiagnosticPictures, &none), 0);
    EXPECT_EQ(Ask(0xB1FF), 0);
    EXPECT_EQ(Ask(kDiagnosticLine), 0) << "nowhere to put it";
    EXPECT_EQ(imageProc(nullptr, kDiagnosticLightCount, 0, 0), count) << "both procedures answer";
    host::CallSelector(filterHost, kSelectorFinish);
    EXPECT_EQ(Ask(kDiagnosticLightCount), 0);
    EXPECT_EQ(Ask(kDiagnosticCopyPicture, 0, &none), 0);
    EXPECT_EQ(Held(), afterAnyRun);
}

TEST_F(DiagnosticTest, OpensBothViewersOnTheModule) {
    Ask(kDiagnosticKeep, kKeepImages);
    ASSERT_EQ(host::CallSelector(filterHost, kSelectorStart), kNoError);
    const INT_PTR count = Ask(kDiagnosticLightCount);
    const auto show = [this](int id, DLGPROC procedure, const std::function<void(HWND)> &script) {
        RunModal(id, procedure, script, nullptr, module.module);
    };
    show(kLightSourceTableDialogId, listProc, [&](HWND dialog) {
        EXPECT_EQ(SendDlgItemMessageA(dialog, kLightSourceListId, LB_GETCOUNT, 0, 0), count);
    });
    show(kDebugImageDialogId, imageProc, [&](HWND dialog) {
        EXPECT_EQ(TextOf(GetDlgItem(dialog, kDebugDisplayId)),
                  "600 x 400 pixels, each 1.000 of the document's\n" + std::to_string(count) + " lights");
        SendDlgItemMessageA(dialog, IDOK, BM_CLICK, 0, 0);
    });
    EXPECT_TRUE(Exists(folder / "user\\Nexorvanta\\Brillatrix\\Settings\\UISettings.bin"));
    host::CallSelector(filterHost, kSelectorFinish);
    EXPECT_TRUE(boxes.empty());
}

TEST_F(DiagnosticTest, KeepsNothingUnaskedNorAfterAFailure) {
    ASSERT_EQ(host::CallSelector(filterHost, kSelectorStart), kNoError);
    EXPECT_EQ(Ask(kDiagnosticLightCount), 0);
    const HeldObjects before = Held();
    Ask(kDiagnosticKeep, kKeepImages);
    filterHost.settings.cancelAtAbortCall = 1;
    EXPECT_NE(host::CallSelector(filterHost, kSelectorStart), kNoError);
    EXPECT_EQ(Ask(kDiagnosticLightCount), 0);
    filterHost.settings.cancelAtAbortCall = 0;
    ASSERT_EQ(host::CallSelector(filterHost, kSelectorPrepare), kNoError);
    ASSERT_EQ(host::CallSelector(filterHost, kSelectorStart), kNoError);
    EXPECT_GT(Ask(kDiagnosticLightCount), 0);
    Ask(kDiagnosticKeep, 0);
    EXPECT_EQ(Ask(kDiagnosticLightCount), 0);
    EXPECT_EQ(Held().heapBlocks, before.heapBlocks);
    host::CallSelector(filterHost, kSelectorFinish);
}
