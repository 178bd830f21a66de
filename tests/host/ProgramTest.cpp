// The program itself, one photo at a time.
#include "tests/host/ProgramFixture.h"

#include "host/options/Parameters.h"

#include <cstdio>
#include <set>
#include <sstream>

TEST_F(ProgramTest, InvertsAPhotoAndRoiLeavesTheRestAlone) {
    host::Picture deep = MakeTestPicture(20, 20, 16, 3, true);
    std::string why;
    ASSERT_TRUE(host::WritePicture(folder.File(L"deep.tif"), deep, {}, &why)) << why;
    const ProgramRun run = Invert({L"--roi", L"5,6,10,8", folder.File(L"deep.tif"), folder.File(L"out.png")});
    ASSERT_EQ(run.status, 0u) << run.err;
    EXPECT_EQ(run.err, "");
    const host::Picture result = ReadGood(folder.File(L"out.png"));
    for (size_t plane = 0; plane < 4; plane++)
        for (size_t i = 0; i < 400; i++) {
            const bool isInside = i % 20 >= 5 && i % 20 < 10 && i / 20 >= 6 && i / 20 < 8;
            const bool isSame = std::memcmp(&result.planes[plane][i * 2], &deep.planes[plane][i * 2], 2) == 0;
            ASSERT_EQ(isSame, !isInside) << plane << " " << i;
        }
    ASSERT_EQ(Invert({folder.File(L"in.png"), folder.File(L"whole.tif")}).status, 0u);
    const host::Picture whole = ReadGood(folder.File(L"whole.tif"));
    for (size_t i = 0; i < photo.planes[2].size(); i++)
        ASSERT_EQ(whole.planes[2][i], 255 - photo.planes[2][i]);
    ExpectFiles({L"deep.tif", L"out.png", L"whole.tif"});
}

// Whatever it needs of a host, another filter does its work, and its record is not taken for the stars'.
TEST_F(ProgramTest, AnotherFilterIsRunOnAPhoto) {
    const std::wstring in = folder.File(L"in.png"), out = folder.File(L"out.png");
    const struct {
        const wchar_t *order;
        const char *note;
    } cases[] = {{L"", ""},
                 {L"twice", ""},
                 {L"late", ""},
                 {L"remember", ""},
                 {L"services", ""},
                 {L"ask", "dialog #9 is not shown (--dialog shows it); its answer is OK"},
                 {L"box", "Invert: Something to say"},
                 {L"norecord", "the parameters are not recorded: the plug-in reported error -1715"}};
    for (const auto &c : cases) {
        SetEnvironmentVariableW(L"INVERT_FILTER", c.order);
        const ProgramRun run = Run({L"--filter", ProgramFile(L"InvertFilter.8bf"), in, out});
        ASSERT_EQ(run.status, 0u) << run.err;
        EXPECT_TRUE(*c.note ? Holds(run.err, c.note) : run.err.empty()) << run.err;
        EXPECT_EQ(ReadGood(out).planes[1][7], 255 - photo.planes[1][7]);
        DeleteFileW(out.c_str());
    }
    EXPECT_TRUE(Holds(Invert({L"--last", in, out}).err, "there was no last run"));
}

TEST_F(ProgramTest, AFilterThatCannotRunIsRefusedWithAReason) {
    const host::Bytes good = ReadBytes(ProgramFile(L"InvertFilter.8bf"));
    const std::wstring in = folder.File(L"in.png"), out = folder.File(L"out.png"),
                       copy = folder.File(L"f.8bf");
    const struct {
        const char *mark; // what lies before the bytes replaced
        host::Bytes bytes;
        DWORD status;
        const char *why;
    } cases[] = {
        {"MIB8edom", {0, 0, 0, 0, 4, 0, 0, 0, 0x40}, 4, "does not take 8-bit RGB images of 40 x 30"},
        {"PE", {0, 0, 0x4C, 0x01}, 3, "it is a 32-bit module"},
        {"PE", {0, 0, 0x64, 0xAA}, 3, "another kind of processor"},
        {"MIB84668", {0, 0, 0, 0, 12, 0, 0, 0, 'N', 'o'}, 3, "does not export its entry point Novert"},
    };
    for (const auto &c : cases) {
        host::Bytes bytes = good;
        const size_t length = std::strlen(c.mark);
        const auto at = std::search(bytes.begin(), bytes.end(), c.mark, c.mark + length);
        ASSERT_LT(static_cast<size_t>(at - bytes.begin()) + length + c.bytes.size(), bytes.size());
        std::copy(c.bytes.begin(), c.bytes.end(), at + static_cast<ptrdiff_t>(length));
        WriteBytes(copy, bytes);
        const ProgramRun run = Run({L"--filter", copy, in, out});
        EXPECT_EQ(run.status, c.status) << run.err;
        EXPECT_TRUE(Holds(run.err, c.why)) << run.err;
    }
    const ProgramRun none = Run({L"--filter", ProgramFile(L"brillatrix.exe"), in, out});
    EXPECT_EQ(none.status, 3u);
    EXPECT_TRUE(Holds(none.err, "it has no property list")) << none.err;
    ExpectFiles({L"f.8bf"});
}

TEST_F(ProgramTest, UsageErrorsGiveTwo) {
    const std::wstring in = folder.File(L"in.png"), out = folder.File(L"out.png");
    const ProgramRun beyond = Invert({L"--roi", L"0,0,41,30", in, out});
    EXPECT_EQ(beyond.status, 2u);
    EXPECT_TRUE(Holds(beyond.err, "40 x 30 pixels")) << beyond.err;
    ExpectFiles({});
    const ProgramRun help = Run({L"--help"});
    EXPECT_EQ(help.status, 0u);
    EXPECT_TRUE(Holds(help.out, "Usage: brillatrix [options] PHOTO OUT"));
    EXPECT_EQ(help.err, "");
    EXPECT_EQ(Run({L"--version"}).status, 0u);
}

TEST_F(ProgramTest, FileErrorsGiveThreeAndSayWhichAndWhy) {
    host::Bytes settings(255, 1);
    WriteBytes(folder.File(L"bad.sss"), settings);
    std::string why;
    ASSERT_TRUE(host::WritePicture(folder.File(L"small.png"), MakeTestPicture(3, 3, 8, 1, false), {}, &why));
    const std::wstring in = folder.File(L"in.png"), out = folder.File(L"out.png");
    const std::tuple<std::vector<std::wstring>, const char *, const char *> cases[] = {
        {{folder.File(L"absent.png"), out}, "cannot read", "absent.png"},
        {{folder.File(L"bad.sss"), out}, "cannot read", "not a picture"},
        {{in, folder.File(L"out.psd")}, "cannot write", "its ending is none of"},
        {{in, folder.File(L"out.pfm")}, "cannot write", "cannot hold 8-bit"},
        {{in, folder.File(L"no\\out.png")}, "cannot write", "out.png"},
        {{L"--mask", folder.File(L"absent.png"), in, out}, "cannot read", "absent.png"},
        {{L"--mask", folder.File(L"small.png"), in, out}, "cannot use", "3 x 3 pixels, the photo 40 x 30"},
        {{L"--settings", folder.File(L"bad.sss"), in, out}, "cannot read", "not a saved set"},
        {{L"--plugin", folder.File(L"bad.sss"), in, out}, "cannot load", "bad.sss"},
    };
    for (const auto &[arguments, what, reason] : cases) {
        const bool hasPlugin = arguments[0] == L"--plugin";
        const ProgramRun run = hasPlugin ? Run(arguments) : Invert(arguments);
        EXPECT_EQ(run.status, 3u) << run.err;
        EXPECT_TRUE(Holds(run.err, what) && Holds(run.err, reason)) << run.err;
    }
    ExpectFiles({L"bad.sss", L"small.png"});
}

TEST_F(ProgramTest, PluginErrorsGiveFourWithCodeAndMeaning) {
    for (const auto &[order, why] :
         {std::pair(L"fail", "the plug-in reported error -36: input or output failed"),
          {L"report", "error -30904: No good day"},
          {L"crash", "the plug-in crashed (code 0xC0000005)"}}) {
        const ProgramRun run = Invert({folder.File(L"in.png"), folder.File(L"out.png")}, order);
        EXPECT_EQ(run.status, 4u);
        EXPECT_TRUE(Holds(run.err, why)) << run.err;
    }
    ExpectFiles({});
}

TEST_F(ProgramTest, BoxesAndDroppedThingsBecomeLines) {
    const ProgramRun about = Invert({L"--about"});
    EXPECT_EQ(about.status, 0u);
    EXPECT_EQ(about.out, "Invert (Test)\nAbout Invert\nInverts.\n");
    std::string why;
    ASSERT_TRUE(host::WritePicture(folder.File(L"a.png"), MakeTestPicture(9, 9, 8, 3, true), {}, &why));
    EXPECT_TRUE(Holds(Invert({folder.File(L"a.png"), folder.File(L"out.jpg")}).err,
                      "warning: the transparency is dropped"));
    for (const wchar_t *option : {L"--quiet", L"--silent"}) {
        DeleteFileW(folder.File(L"out.jpg").c_str());
        EXPECT_EQ(Invert({option, folder.File(L"a.png"), folder.File(L"out.jpg")}).err.empty(),
                  option[2] == L's');
    }
}

// A result that is there stays without a word for it, the photo in place has a second name, and a photo that
// cannot be done stays what it was.
TEST_F(ProgramTest, NothingIsReplacedUnasked) {
    const std::wstring in = folder.File(L"in.png"), out = folder.File(L"out.png");
    std::string why;
    ASSERT_EQ(Invert({L"--depth", L"16", in, out}).status, 0u);
    EXPECT_EQ(ReadGood(out).depth, 16);
    const host::Bytes first = ReadBytes(out), original = ReadBytes(in);
    const ProgramRun refused = Invert({in, out});
    EXPECT_EQ(refused.status, 3u);
    EXPECT_TRUE(Holds(refused.err, "out.png: it exists already; --overwrite replaces it")) << refused.err;
    EXPECT_EQ(ReadBytes(out), first);
    const ProgramRun replaced = Invert({L"--overwrite", L"--depth", L"8", out, out});
    EXPECT_EQ(replaced.status, 0u);
    EXPECT_TRUE(Holds(replaced.err, "warning: the samples are reduced from 16 to 8 bits")) << replaced.err;
    EXPECT_EQ(ReadGood(out), photo) << "inverted twice";
    DeleteFileW(out.c_str());
    EXPECT_EQ(Invert({L"inplace", in}, L"fail").status, 4u);
    EXPECT_EQ(ReadBytes(in), original);
    ExpectFiles({});
    const ProgramRun some = Invert({L"inplace", in, folder.File(L"absent.png")});
    EXPECT_EQ(some.status, 7u);
    EXPECT_TRUE(Holds(some.err, "absent.png")) << some.err;
    EXPECT_EQ(ReadBytes(folder.File(L"in.png_original")), original);
    EXPECT_EQ(ReadGood(in).planes[0][3], 255 - photo.planes[0][3]);
    ASSERT_EQ(Invert({L"inplace", in}).status, 0u);
    EXPECT_EQ(ReadBytes(folder.File(L"in.png_original")), original) << "the first original stays";
    ExpectFiles({L"in.png_original"});
}

// Byte for byte what the same run writes into a file.
TEST_F(ProgramTest, PicturesGoOverTheStandardStreams) {
    ASSERT_EQ(Invert({folder.File(L"in.png"), folder.File(L"out.png")}).status, 0u);
    ASSERT_EQ(Invert({folder.File(L"in.png"), folder.File(L"out.ppm")}).status, 0u);
    for (const wchar_t *kind : {L"png", L"ppm"}) {
        SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
        standardInput = CreateFileW(folder.File(L"in.png").c_str(), GENERIC_READ, FILE_SHARE_READ, &inherited,
                                    OPEN_EXISTING, 0, nullptr);
        const ProgramRun run = Invert({L"--format", kind, L"-", L"-"});
        CloseHandle(standardInput);
        EXPECT_EQ(run.status, 0u) << run.err;
        EXPECT_EQ(run.out, TakeText(folder.File(std::wstring(L"out.") + kind)));
    }
    standardInput = nullptr;
    for (const auto &words : {std::vector<std::wstring>{L"inplace", L"-"}, {L"--lights", L"-", L"-"}})
        EXPECT_EQ(Run(words).status, 2u);
    ExpectFiles({});
}

TEST_F(ProgramTest, CtrlCCancelsWithinATileAndLeavesNothing) {
    std::string why;
    ASSERT_TRUE(
        host::WritePicture(folder.File(L"big.ppm"), MakeTestPicture(4096, 4096, 8, 3, false), {}, &why));
    SetEnvironmentVariableW(L"INVERT_FILTER", L"slow"); // 16 tiles, 4 s in all, or much longer
    const HANDLE atWork = CreateEventA(nullptr, FALSE, FALSE, "InvertFilterAtWork");
    for (const int presses : {1, 2}) { // the second does not wait for the tile
        SetEnvironmentVariableW(L"INVERT_SLOW", presses == 1 ? nullptr : L"60000");
        const PROCESS_INFORMATION process = Begin(
            {L"--plugin", ProgramFile(L"InvertFilter.8bf"), folder.File(L"big.ppm"), folder.File(L"out.ppm")},
            0);
        EXPECT_EQ(WaitForSingleObject(atWork, kLongestRun), WAIT_OBJECT_0);
        const ULONGLONG pressed = GetTickCount64();
        for (int press = 0; press < presses; press++)
            EXPECT_TRUE(PressCtrlC(process.hProcess));
        const ProgramRun run = End(process);
        EXPECT_LT(GetTickCount64() - pressed, 1500u);
        EXPECT_EQ(run.status, 5u);
        EXPECT_EQ(run.err, presses == 1 ? "brillatrix: cancelled\n" : "");
    }
    CloseHandle(atWork);
    SetEnvironmentVariableW(L"INVERT_SLOW", nullptr);
    ExpectFiles({L"big.ppm"});
}

// From here on with the real filter.
class RealFilterTest : public ProgramTest {
protected:
    void SetUp() override {
        ProgramTest::SetUp();
        if (!host::DoesFileExist(ProgramFile(L"BrillatrixX64.8bf")))
            GTEST_SKIP() << "the filter is not built";
        // A few lights on a dark picture.
        photo = host::MakePicture(200, 150, 8, 3, false);
        for (host::Bytes &plane : photo.planes)
            std::fill(plane.begin(), plane.end(), uint8_t{10});
        for (const size_t at : {size_t{40 * 200 + 50}, size_t{100 * 200 + 150}, size_t{75 * 200 + 100}})
            for (host::Bytes &plane : photo.planes)
                for (const size_t offset : {0, 1, 2, 200, 201, 202, 400, 401, 402})
                    plane[at + offset] = 250;
        std::string why;
        ASSERT_TRUE(host::WritePicture(folder.File(L"in.png"), photo, {}, &why)) << why;
    }
    host::Picture Filter(std::vector<std::wstring> arguments) {
        arguments.insert(arguments.end(),
                         {L"--overwrite", L"--quiet", folder.File(L"in.png"), folder.File(L"out.tif")});
        const ProgramRun run = Run(arguments);
        EXPECT_EQ(run.status, 0u) << run.err;
        EXPECT_EQ(run.err, "");
        return ReadGood(folder.File(L"out.tif"));
    }
    void WriteCross(int16_t angle) {
        ParameterSet set = kDefaultParameters;
        set.effectType = kReligiousCross;
        set.length = 80;
        set.angle = angle;
        host::Bytes file(255, 0);
        std::memcpy(file.data(), &set, sizeof(set));
        WriteBytes(folder.File(L"a.sss"), file);
    }
};

TEST_F(RealFilterTest, LastRunSettingsFileAndOptionsMeanTheSame) {
    const host::Picture first = Filter({});
    EXPECT_NE(first.planes, photo.planes);
    const host::Picture cross = Filter({L"--effect", L"cross", L"--length", L"80"});
    EXPECT_EQ(Filter({L"--last"}), cross);
    const host::Picture turned = Filter({L"--last", L"--angle", L"40"});
    EXPECT_NE(turned, cross);
    WriteCross(200);
    EXPECT_EQ(Filter({L"--settings", folder.File(L"a.sss"), L"--angle", L"40"}), turned);
    EXPECT_EQ(Filter({L"--effect", L"efT2", L"--length", L"80", L"--angle", L"40"}), turned);
    EXPECT_EQ(Filter({}), first) << "an earlier run changed the defaults";
}

TEST_F(RealFilterTest, PresetsAndTheSheetOfEffects) {
    const std::wstring name = L"Test " + std::to_wstring(GetCurrentProcessId());
    SetEnvironmentVariableW(L"BRILLATRIX_PRESETS", folder.path.c_str());
    WriteCross(0);
    const host::Picture cross = Filter({L"--preset", L"a"});
    EXPECT_EQ(cross, Filter({L"--effect", L"cross", L"--length", L"80", L"--angle", L"0"}));
    EXPECT_EQ(Run({L"--save-preset", name, L"--preset", L"a", L"--angle", L"12"}).status, 0u);
    EXPECT_TRUE(Holds(Run({L"--save-preset", name}).err, "it exists already; --overwrite replaces it"));
    EXPECT_EQ(Filter({L"--preset", name, L"--angle", L"0"}), cross);
    EXPECT_TRUE(Holds(Run({L"--save-preset", L"a/b"}).err, "a preset's name is that of a file"));
    const std::string names = Run({L"--list-presets"}).out;
    EXPECT_TRUE(Holds(names, host::ToUtf8(name) + "\n") && Holds(names, "a\n")) << names;
    wchar_t local[MAX_PATH] = {};
    GetEnvironmentVariableW(L"LOCALAPPDATA", local, MAX_PATH);
    const std::wstring saved = local + std::wstring(L"\\Nexorvanta\\Brillatrix\\Parameters\\") + name;
    EXPECT_TRUE(DeleteFileW((saved + L".sss").c_str()));
    SetEnvironmentVariableW(L"BRILLATRIX_PRESETS", nullptr);

    EXPECT_EQ(Run({L"--contact-sheet", folder.File(L"sheet.png"), folder.File(L"in.png")}).status, 0u);
    const host::Picture sheet = ReadGood(folder.File(L"sheet.png"));
    std::set<host::Bytes> cells; // the photo, and each effect, which is no other's
    const int32_t across = sheet.width / 4, down = sheet.height / 2, label = 40;
    for (int32_t cell = 0; cell < 8; cell++) {
        host::Bytes pixels;
        for (int32_t y = cell / 4 * down + 8; y < (cell / 4 + 1) * down - label; y++) {
            const auto row = sheet.planes[0].begin() + ptrdiff_t{y} * sheet.width + cell % 4 * across + 8;
            pixels.insert(pixels.end(), row, row + 200);
        }
        cells.insert(pixels);
    }
    EXPECT_EQ(cells.size(), 8u);
}

TEST_F(RealFilterTest, MaskRoiAndEffectsOnly) {
    host::Picture mask = host::MakePicture(200, 150, 8, 1, false);
    std::string why;
    ASSERT_TRUE(host::WritePicture(folder.File(L"mask.png"), mask, {}, &why)) << why;
    EXPECT_EQ(Filter({L"--mask", folder.File(L"mask.png")}), photo) << "no light is selected";
    EXPECT_TRUE(Holds(Run({L"--overwrite", L"--mask", folder.File(L"mask.png"), folder.File(L"in.png"),
                           folder.File(L"out.tif")})
                          .err,
                      "note: no lights were found"));
    const host::Picture part = Filter({L"--roi", L"0,0,100,150"});
    for (size_t plane = 0; plane < 3; plane++)
        for (size_t y = 0; y < 150; y++)
            ASSERT_TRUE(std::equal(&part.planes[plane][y * 200 + 100], &part.planes[plane][y * 200 + 199] + 1,
                                   &photo.planes[plane][y * 200 + 100]));
    EXPECT_NE(part, photo);
    const host::Picture alone = Filter({L"--effects-only"});
    EXPECT_EQ(alone.planes[0][5], 0) << "the photo shines through";
    EXPECT_NE(*std::max_element(alone.planes[0].begin(), alone.planes[0].end()), 0);
}

// Lights of one picture in all forms. They are equally bright, so the table has them in the order of finding.
TEST_F(RealFilterTest, TellsItsLights) {
    const std::wstring csv = folder.File(L"l.csv"), svg = folder.File(L"l.svg");
    const ProgramRun run =
        Run({L"--lights", L"--lights-csv", csv, L"--lights-svg", svg, folder.File(L"in.png")});
    EXPECT_EQ(run.status, 0u);
    EXPECT_EQ(run.err, "");
    const std::string table = TakeText(csv), drawing = TakeText(svg);
    std::istringstream lines(table);
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "rank,x,y,diameter,brightness,red,green,blue,state,star");
    std::set<std::pair<double, double>> centres;
    for (unsigned rank = 0; std::getline(lines, line); rank++) {
        double x, y, diameter;
        char rest[100];
        unsigned number;
        ASSERT_EQ(std::sscanf(line.c_str(), "%u,%lf,%lf,%lf,%99s", &number, &x, &y, &diameter, rest), 5)
            << line;
        EXPECT_EQ(number, rank);
        EXPECT_STREQ(rest, "1.000000,1.000000,1.000000,1.000000,normal,yes");
        EXPECT_NEAR(diameter, 3, 1.5);
        centres.insert({x, y});
        char expected[200];
        std::snprintf(expected, sizeof(expected), "<circle cx=\"%.2f\" cy=\"%.2f\" r=\"1.", x, y);
        EXPECT_TRUE(Holds(drawing, expected)) << expected;
        std::snprintf(expected, sizeof(expected),
                      "LightSourceTable[%04u] x = %.2f, y = %.2f, Diam = %.2f, Bright = FFFFFFFE\n", rank, x,
                      y, diameter);
        EXPECT_TRUE(Holds(run.out, expected)) << expected;
    }
    EXPECT_EQ(centres, (std::set<std::pair<double, double>>{{51, 41}, {101, 76}, {151, 101}}));
    EXPECT_TRUE(run.out.starts_with("NumberOfLightSources = 3\n\n")) << run.out;
    EXPECT_TRUE(Holds(drawing, "width=\"200\" height=\"150\" viewBox=\"0 0 200 150\""));
    ExpectFiles({});
}

// What has no star says so; the picture itself is what it is without the questions.
TEST_F(RealFilterTest, QuestionsChangeNothing) {
    const host::Picture plain = Filter({L"--threshold", L"0"});
    const std::wstring csv = folder.File(L"l.csv");
    EXPECT_EQ(Filter({L"--threshold", L"0", L"--lights-csv", csv, L"--debug-images", folder.File(L"debug")}),
              plain);
    const std::string table = TakeText(csv);
    EXPECT_TRUE(Holds(table, ",normal,no\n")) << table;
    EXPECT_FALSE(Holds(table, ",yes")) << table;
}

TEST_F(RealFilterTest, WritesTheFourDebugPictures) {
    const std::wstring debug = folder.File(L"debug");
    ASSERT_EQ(Run({L"--debug-images", debug, folder.File(L"in.png")}).status, 0u);
    EXPECT_EQ(ReadGood(debug + L"\\analysis.png"), photo);
    EXPECT_EQ(ReadGood(debug + L"\\selection.png"), photo) << "all of it is selected, nothing is flat";
    const host::Picture lights = ReadGood(debug + L"\\lights.png");
    EXPECT_EQ(lights.width, 200);
    EXPECT_NE(lights, photo);
    const host::Picture star = ReadGood(debug + L"\\star.png");
    EXPECT_EQ(star.width % 2, 1) << "the light is in the middle";
    EXPECT_GE(star.planes[0][static_cast<size_t>(star.height / 2 * star.width + star.width / 2)], 250);
}

TEST_F(RealFilterTest, PlacesThatCannotBeWrittenAreToldBeforeTheRun) {
    const std::wstring in = folder.File(L"in.png");
    const struct {
        std::wstring option, place;
        const char *why;
    } cases[] = {{L"--lights-csv", folder.File(L"no\\l.csv"), "l.csv: "},
                 {L"--lights-svg", folder.path, "it is a folder"},
                 {L"--debug-images", in, "it is no folder"},
                 {L"--lights-csv", in, "it is PHOTO, OUT"},
                 {L"--lights-svg", folder.File(L"out.png"), "it is PHOTO, OUT"},
                 {L"--debug-images", folder.File(L"no\\such"), "such: "}};
    for (const auto &c : cases) {
        const ProgramRun run = Run({c.option, c.place, in, folder.File(L"out.png")});
        EXPECT_EQ(run.status, 3u);
        EXPECT_TRUE(Holds(run.err, "cannot write") && Holds(run.err, c.why)) << run.err;
    }
    const ProgramRun other = Invert({L"--lights", in});
    EXPECT_EQ(other.status, 3u);
    EXPECT_TRUE(Holds(other.err, "it tells nothing about its lights")) << other.err;
    ExpectFiles({});
}

// Nobody is there to close a window.
TEST_F(RealFilterTest, WithoutAScreenNoWindowIsOpened) {
    if (!GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version"))
        GTEST_SKIP() << "there is a screen";
    SetEnvironmentVariableW(L"DISPLAY", nullptr);
    for (const wchar_t *option : {L"--dialog", L"--show-lights", L"--show-debug"}) {
        const ProgramRun run = Run({option, folder.File(L"in.png"), folder.File(L"out.png")});
        EXPECT_EQ(run.status, 6u);
        EXPECT_TRUE(Holds(run.err, "cannot open a window: there is no display")) << run.err;
    }
    ExpectFiles({});
}

// The visible dialog of a process with that title, null when it is not there (yet).
static HWND FindDialog(DWORD process, const wchar_t *title) {
    for (HWND window = FindWindowExW(nullptr, nullptr, L"#32770", title); window;
         window = FindWindowExW(nullptr, window, L"#32770", title)) {
        DWORD owner = 0;
        GetWindowThreadProcessId(window, &owner);
        if (owner == process && IsWindowVisible(window))
            return window;
    }
    return nullptr;
}

// Presses a button of it as soon as it is there.
static bool Press(const PROCESS_INFORMATION &process, const wchar_t *title, int button) {
    for (DWORD waited = 0; waited < kLongestRun; waited += 20, Sleep(20))
        if (const HWND dialog = FindDialog(process.dwProcessId, title))
            return PostMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(button),
                                reinterpret_cast<LPARAM>(GetDlgItem(dialog, button))) != 0;
    return false;
}

TEST_F(RealFilterTest, DialogAndViewersOpen) {
    const std::wstring in = folder.File(L"in.png"), out = folder.File(L"out.tif");
    const host::Picture plain = Filter({L"--length", L"80"});
    DeleteFileW(out.c_str());
    SetEnvironmentVariableW(L"BRILLATRIX_WINDOWS", L"1");
    PROCESS_INFORMATION process = Begin({L"--dialog", in, out}, 0);
    EXPECT_TRUE(Press(process, L"Brillatrix Pro", IDCANCEL));
    const ProgramRun cancelled = End(process);
    EXPECT_EQ(cancelled.status, 5u);
    EXPECT_EQ(cancelled.err, "brillatrix: cancelled in the dialog; nothing is written\n");
    EXPECT_FALSE(host::DoesFileExist(out));
    process = Begin({L"--dialog", L"--show-lights", L"--length", L"80", in, out}, 0);
    EXPECT_TRUE(Press(process, L"Brillatrix Pro", IDOK));
    EXPECT_TRUE(Press(process, L"Light Source Table Entries", IDOK));
    const ProgramRun done = End(process);
    SetEnvironmentVariableW(L"BRILLATRIX_WINDOWS", nullptr);
    EXPECT_EQ(done.status, 0u) << done.err;
    EXPECT_EQ(ReadGood(out), plain) << "the dialog renders what was asked for";
}
