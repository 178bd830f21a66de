// Many photos at once: names, faults, and going on.
#include "tests/host/ProgramFixture.h"

#include "host/batch/OutputNames.h"
#include "host/sheet/SheetText.h"
#include "host/workers/WorkerProcess.h"
#include "tests/support/SystemObjects.h"

using host::BatchOptions;
using host::BatchPhoto;

static const bool gObjectsAreCounted = CountOwnSystemObjects();

// A batch makes thousands of them.
TEST(BatchParts, GiveBackWhatTheyTakeOfTheSystem) {
    const auto before = LiveObjects();
    host::DrawLabel(L"a", 40, 20);
    host::WorkerProcess worker;
    std::string why;
    ASSERT_TRUE(host::StartWorker({L"--gtest_list_tests"}, nullptr, &worker, &why)) << why;
    host::EndWorker(&worker, false);
    EXPECT_EQ(LiveObjects(), before);
}

TEST(BatchNames, PatternsPlacesAndClashes) {
    const TestFolder folder;
    const auto name = [&](BatchOptions options, const std::vector<host::BatchInput> &inputs) {
        std::vector<BatchPhoto> photos;
        std::string why, names;
        if (!NameOutputs(options, inputs, &photos, &why) || !SettleOutputs(options, &photos, &why))
            return "! " + why;
        for (const BatchPhoto &photo : photos)
            names +=
                host::ToUtf8(photo.output.substr(folder.path.size() + 1)) + (photo.isSkipped ? "- " : " ");
        return names;
    };
    WriteBytes(folder.File(L"a_stars.jpg"), {1});
    const std::vector<host::BatchInput> two = {{folder.File(L"a.jpg"), L"", true},
                                               {folder.File(L"b.c.tif"), L"", true}};
    const std::vector<host::BatchInput> same = {{folder.File(L"x\\d.png"), L"x", true},
                                                {folder.File(L"y\\d.png"), L"y", true}};
    BatchOptions options;
    EXPECT_NE(name(options, two).find("a_stars.jpg exists already"), std::string::npos);
    options.existing = host::ExistingRule::kSkip;
    EXPECT_EQ(name(options, two), "a_stars.jpg- b.c_stars.tif ");
    options.existing = host::ExistingRule::kNumber;
    EXPECT_EQ(name(options, two), "a_stars_2.jpg b.c_stars.tif ");
    options.existing = host::ExistingRule::kOverwrite;
    EXPECT_EQ(name(options, {two[0], {folder.File(L"A_STARS.jpg"), L"", true}}), "a_stars.jpg ");
    options.outFolder = folder.File(L"o");
    EXPECT_EQ(name(options, same), "o\\x\\d_stars.png o\\y\\d_stars.png ");
    options.namePattern = L"{dir}-{n:03}-{n}{preset}.{ext}";
    options.presetName = L"p";
    EXPECT_EQ(name(options, same), "o\\x-001-1p.png o\\y-002-2p.png ");
    options.namePattern = L"{dir}{name}{no}";
    EXPECT_NE(name(options, same).find("--name knows"), std::string::npos);
    options.namePattern = L"same{dir:}";
    EXPECT_EQ(name(options, same)[0], '!');
    options.namePattern = L"one.{ext}";
    EXPECT_NE(name(options, two).find("one.jpg"), std::string::npos);
    EXPECT_NE(name(options, {two[0], {folder.File(L"b.jpg"), L"", false}}).find("would both become"),
              std::string::npos);
    options.outFolder.clear();
    options.namePattern = L"{n:02}_{name}.{ext}";
    EXPECT_EQ(name(options, {{folder.File(L"01_A.jpg"), L"", true},
                             {folder.File(L"1_a.jpg"), L"", true},
                             {folder.File(L"77_a.jpg"), L"", true},
                             two[0]}),
              "01_1_a.jpg 02_77_a.jpg 03_a.jpg ");
    options.namePattern = L"{name}.{ext}";
    EXPECT_NE(name(options, two).find("is a photo of this batch"), std::string::npos);
    for (const auto &[pattern, matches] : {std::pair(L"*.JPG", true),
                                           {L"n?ght*g", true},
                                           {L"*", true},
                                           {L"night", false},
                                           {L"night.jpg?", false},
                                           {L"*x*", false}})
        EXPECT_EQ(host::MatchesPattern(L"night.jpg", pattern), matches);
}

class BatchTest : public ProgramTest {
protected:
    std::wstring in, out;

    void SetUp() override {
        ProgramTest::SetUp();
        in = folder.File(L"in");
        out = folder.File(L"out");
        CreateDirectoryW(in.c_str(), nullptr);
    }
    // A picture told from others by its height.
    void AddPhoto(const std::wstring &name, int32_t height) {
        std::string why;
        ASSERT_TRUE(
            host::WritePicture(in + L"\\" + name, MakeTestPicture(20, height, 8, 3, false), {}, &why));
    }
    ProgramRun RunBatch(std::vector<std::wstring> arguments, const wchar_t *order = L"batch") {
        arguments.insert(arguments.begin(), {L"batch", L"--out", out});
        return Invert(arguments, order);
    }
    // No temporary file and nothing else.
    void ExpectResults(const std::vector<std::wstring> &names) {
        const std::vector<std::wstring> found = folder.List(L"\\out");
        EXPECT_TRUE(std::is_permutation(found.begin(), found.end(), names.begin(), names.end()));
    }
};

// A damaged, a missing, a locked, a crashing and a hanging photo cost themselves alone.
TEST_F(BatchTest, FaultsStayWithTheirPhotos) {
    AddPhoto(L"a.png", 10);
    AddPhoto(L"crash.png", 31);
    AddPhoto(L"hang.ppm", 33);
    AddPhoto(L"locked.png", 12);
    AddPhoto(L"z.png", 13);
    host::Bytes damaged = ReadBytes(in + L"\\a.png");
    damaged.resize(damaged.size() / 2);
    WriteBytes(in + L"\\damaged.png", damaged);
    const HANDLE lock = CreateFileW((in + L"\\locked.png").c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    SetEnvironmentVariableW(L"INVERT_SLOW", L"60000");
    const std::wstring json = folder.File(L"r.json"), list = folder.File(L"failed.txt");
    const ProgramRun run = RunBatch(
        {L"--jobs", L"2", L"--timeout", L"5", L"--json", json, L"--failed", list, in, in + L"\\absent.png"});
    SetEnvironmentVariableW(L"INVERT_SLOW", nullptr);
    CloseHandle(lock);
    EXPECT_EQ(run.status, 7u) << run.err;
    const std::string told = TakeText(json), failed = TakeText(list);
    for (const char *part : {"\"status\":\"done\"", "crashed, or its process was ended (code 0xC0000005)",
                             "longer than --timeout allows", "Sharing violation", "absent.png",
                             "the file is damaged or ends early"})
        EXPECT_TRUE(Holds(told, part)) << part << "\n" << told;
    EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 7);
    EXPECT_EQ(std::count(failed.begin(), failed.end(), '\n'), 5);
    EXPECT_TRUE(Holds(run.err, "2 done, 5 failed in ")) << run.err;
    ExpectResults({L"a_stars.png", L"z_stars.png", L"brillatrix.journal"});
    // What failed is taken again, what was done is left alone.
    DeleteFileW((in + L"\\damaged.png").c_str());
    const ProgramRun again = RunBatch({L"--resume", in}, L"");
    EXPECT_EQ(again.status, 0u) << again.err;
    EXPECT_TRUE(Holds(again.err, "3 done, 2 skipped in ")) << again.err;
    ExpectResults(
        {L"a_stars.png", L"z_stars.png", L"crash_stars.png", L"hang_stars.ppm", L"locked_stars.png"});
    EXPECT_EQ(RunBatch({in}).status, 3u) << "the results exist";
    const host::Bytes photo = ReadBytes(in + L"\\a.png");
    for (const auto &[option, file] : {std::pair(L"--json=", in + L"\\a.png"),
                                       {L"--failed=", in + L"\\a.png"},
                                       {L"--json=", folder.File(L"in.png")},
                                       {L"--failed=", folder.File(L"in.png")},
                                       {L"--json=", out + L"\\z_stars.png"}})
        EXPECT_EQ(RunBatch({L"--existing", L"overwrite", option + file, in}).status, 3u);
    EXPECT_EQ(ReadBytes(in + L"\\a.png"), photo);
    WriteBytes(json, {'x'});
    for (const wchar_t *existing : {L"skip", L"number"}) {
        const ProgramRun plan = RunBatch({L"--existing", existing, L"--dry-run", L"--failed", list, in});
        EXPECT_EQ(plan.status, 0u);
        EXPECT_EQ(Holds(plan.out, "a_stars_2.png"), *existing == L'n') << plan.out;
        EXPECT_FALSE(Holds(plan.out, "a_stars.png")) << plan.out;
    }
    const ProgramRun none = RunBatch({in + L"\\absent.png"});
    EXPECT_EQ(none.status, 3u) << none.err;
}

// A list, a limit of memory below any photo's need, a sheet; and a batch that ends with its first failure.
TEST_F(BatchTest, ListsLimitsAndSheets) {
    AddPhoto(L"a.png", 10);
    AddPhoto(L"b.png", 12);
    const std::wstring list = folder.File(L"list.txt"), sheet = folder.File(L"sheet.png");
    const auto write = [&](const std::string &lines) { WriteBytes(list, {lines.begin(), lines.end()}); };
    const std::string a = host::ToUtf8(in + L"\\a.png\r\n"), b = host::ToUtf8(in + L"\\b.png");
    write("\xEF\xBB\xBF" + a + "\n" + b);
    const ProgramRun all = RunBatch({L"--memory", L"1", L"--contact-sheet", sheet, L"@" + list}, L"");
    EXPECT_EQ(all.status, 0u) << all.err;
    ExpectResults({L"a_stars.png", L"b_stars.png"});
    const host::Picture pairs = ReadGood(sheet);
    const host::Picture before = ReadGood(in + L"\\a.png");
    const size_t width = static_cast<size_t>(pairs.width);
    bool holdsBoth = false; // the first row of the photo, and some way to its right the same inverted
    for (size_t at = 0; at + width < pairs.planes[0].size() && !holdsBoth; at++) {
        bool isHere = true;
        for (size_t x = 0; x < 20 && isHere; x++)
            isHere = pairs.planes[0][at + x] == before.planes[0][x] &&
                     pairs.planes[0][at + x + 326] == 255 - before.planes[0][x];
        holdsBoth = isHere;
    }
    EXPECT_TRUE(holdsBoth);
    EXPECT_EQ(RunBatch({L"--existing", L"number", L"--contact-sheet", in + L"\\b.png", in}).status, 3u);
    write(host::ToUtf8(in + L"\\absent.png\n") + a + b);
    const ProgramRun stopped =
        RunBatch({L"--existing", L"number", L"--jobs", L"1", L"--on-error", L"stop", L"@" + list});
    EXPECT_EQ(stopped.status, 7u) << stopped.err;
    EXPECT_TRUE(Holds(stopped.err, "0 done, 1 failed, 2 not begun in ")) << stopped.err;
}

// The first Ctrl+C lets the photo in work end, the second does not; the rest is left for --resume.
TEST_F(BatchTest, CancelAndResume) {
    for (const wchar_t *name : {L"1.png", L"2.png", L"3.png", L"4.png"})
        AddPhoto(name, 33);
    SetEnvironmentVariableW(L"INVERT_FILTER", L"batch");
    const HANDLE atWork = CreateEventA(nullptr, FALSE, FALSE, "InvertFilterAtWork");
    for (const int presses : {2, 1}) {
        SetEnvironmentVariableW(L"INVERT_SLOW", presses == 1 ? L"1000" : L"60000");
        const PROCESS_INFORMATION process = Begin({L"batch", L"--jobs", L"1", L"--out", out, L"--plugin",
                                                   ProgramFile(L"InvertFilter.8bf"), L"--resume", in},
                                                  0);
        EXPECT_EQ(WaitForSingleObject(atWork, kLongestRun), WAIT_OBJECT_0);
        for (int press = 0; press < presses; press++)
            EXPECT_TRUE(PressCtrlC(process.hProcess));
        const ProgramRun run = End(process);
        EXPECT_EQ(run.status, 5u) << run.err;
        EXPECT_TRUE(
            Holds(run.err, presses == 1 ? "1 done, 3 not begun in " : "0 done, 1 cancelled, 3 not begun in "))
            << run.err;
    }
    CloseHandle(atWork);
    SetEnvironmentVariableW(L"INVERT_SLOW", nullptr);
    ExpectResults({L"1_stars.png", L"brillatrix.journal"});
    const ProgramRun again = RunBatch({L"--resume", in});
    EXPECT_EQ(again.status, 0u) << again.err;
    EXPECT_TRUE(Holds(again.err, "3 done, 1 skipped in ")) << again.err;
    ExpectResults({L"1_stars.png", L"2_stars.png", L"3_stars.png", L"4_stars.png"});
}
