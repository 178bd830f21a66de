// Hosts that do everything wrong, around the loaded module: whatever they do, each call ends with a code that
// is known, nothing is left held, every sample is the old one or the right new one, and the next run is a
// normal one.
#include "host/filter/FilterHost.h"
#include "host/filter/FilterRecordFill.h"
#include "host/services/HostState.h"
#include "tests/fuzz/CaseBytes.h"
#include "tests/plugin/NightDocument.h"
#include "tests/storage/TemporaryFolder.h"
#include "tests/support/ModuleWatch.h"
#include "tests/support/SystemObjects.h"

#include <algorithm>
#include <map>
#include <memory>
#include <thread>
#include <utility>

namespace {

using std::to_string;

// The filter sees copies of the record and its tables, which lie elsewhere in each call and are spoilt behind
// it.
struct Copies {
    FilterRecord record;
    BigDocumentStruct big;
    HandleProcs handles;
    PropertyProcs properties;
    SPBasicSuite basic;
    PIDescriptorParameters script;
    ReadDescriptorProcs readers;
    WriteDescriptorProcs writers;
    PlatformData platform;
};

// What happens at one of the filter's calls of the host.
enum Event {
    kThrow,
    kRaise,
    kFault,
    kNest,
    kNestWithNothing,
    kOtherThread,
    kCancel,
    kLoseTables,
    kMoveHandles,
    kEvents
};

// What a host does beside what the library's settings ask of it. Those with a number happen at that call; 0:
// never.
struct Hostility {
    int32_t shift = 0;     // of all coordinates that the filter sees
    int64_t nullsAt = 0;   // selector call with null arguments
    int32_t nulls = 0;     // 1 record, 2 data, 4 result
    int64_t threadAt = 0;  // selector call on another thread
    int64_t badRowsAt = 0; // advance
    int32_t badRows = 0;
    int64_t eventAt = 0; // call of the host
    int32_t event = 0, lostTables = 0;
    std::vector<uint16_t> wild = {}; // fields of the record with senseless numbers
    bool fillsNoBig = false, readsNoBig = false, runsInAbout = false, spoilsUnused = false;
    intptr_t boxAnswer = IDOK;

    bool cancelled = false;
    // What was taken may stay with the host, the host may blame the filter for what it itself got wrong, the
    // picture may be another one, a silent run may tell.
    bool mayLose = false, mayBlame = false, mayDiffer = false, mayTell = false;
    int64_t selectorCalls = 0, advances = 0, serviceCalls = 0;
};

// Behind a case's end nothing out of the way happens.
bool OneIn(int32_t count, CaseBytes *from) {
    return from->Pick(1, count) == count;
}

struct Scene {
    host::Rectangle area;
    host::Document before, expected;
};

host::FilterModule gModule;
std::vector<host::RegistryEntry> gKept; // by the host, from a normal run
Hostility gHostility;
host::FilterHost *gHost;
Copies *gCopies;
std::vector<std::string> gTold; // by message boxes, in the selector call

template <typename Rect> void ShiftRect(int32_t by, Rect *rect) {
    const auto shift = [by](auto *edge) {
        *edge = static_cast<std::remove_reference_t<decltype(*edge)>>(*edge + by);
    };
    shift(&rect->top), shift(&rect->left), shift(&rect->bottom), shift(&rect->right);
}

void ShiftRects(int32_t by, FilterRecord *record, BigDocumentStruct *big) {
    for (const auto rect :
         {&FilterRecord::filterRect, &FilterRecord::inRect, &FilterRecord::outRect, &FilterRecord::maskRect})
        ShiftRect(by, &(record->*rect));
    for (const auto rect : {&BigDocumentStruct::filterRect32, &BigDocumentStruct::inRect32,
                            &BigDocumentStruct::outRect32, &BigDocumentStruct::maskRect32})
        ShiftRect(by, &(big->*rect));
}

template <typename Record, typename Table>
void CopyTable(Record *record, Table *Record::*table, Table *copy) {
    if (const Table *from = record->*table)
        record->*table = &(*copy = *from);
}

void MakeWild(Copies *c) {
    constexpr size_t kPlaces[] = {32,  34,  36,  38,  40,  112, 156, 266, 268, 328, 330, 332, 334, 336, 338,
                                  340, 342, 344, 346, 368, 372, 376, 400, 402, 404, 408, 480, 492, 496};
    constexpr int16_t kNumbers[] = {0, 1, 2, 3, 4, 5, 8, 16, 17, 32, 100, 255, 2000, 32767, -1, -32768};
    for (const uint16_t wild : gHostility.wild) {
        const int16_t number = kNumbers[wild >> 6 & 15];
        std::memcpy(reinterpret_cast<char *>(&c->record) + kPlaces[(wild & 63) % std::size(kPlaces)], &number,
                    2);
        if (wild >> 12 == 0)
            (&c->big.filterRect32.top)[wild & 3] = number * 1021;
    }
}

void LoseTables(FilterRecord *r) {
    const int32_t lost = gHostility.event == kLoseTables && gHostility.serviceCalls >= gHostility.eventAt
                             ? gHostility.lostTables
                             : 0;
    r->handleProcs = lost & 1 ? nullptr : r->handleProcs;
    r->sSPBasic = lost & 2 ? nullptr : r->sSPBasic;
    r->descriptorParameters = lost & 4 ? nullptr : r->descriptorParameters;
    r->advanceState = lost & 8 ? nullptr : r->advanceState;
    r->bigDocumentData = lost & 16 ? nullptr : r->bigDocumentData;
}

// What a filter that asks for one plane at a time has no use for leads nowhere.
void SpoilUnused(FilterRecord *r) {
    r->bufferProcs = r->resourceProcs = r->displayPixels = r->colorServices = r->imageServicesProcs =
        r->documentInfo = reinterpret_cast<void *>(0xDEAD);
    r->inColumnBytes = r->inPlaneBytes = r->outColumnBytes = r->outPlaneBytes = -3;
}

HostResult Advance();

void ShowToFilter() {
    Copies &c = *gCopies;
    FilterRecord &r = c.record;
    r = host::Record(*gHost);
    CopyTable(&r, &FilterRecord::bigDocumentData, &c.big);
    if (gHostility.readsNoBig)
        r.bigDocumentData = &(c.big = {});
    if (gHostility.fillsNoBig)
        c.big.filterRect32 = {};
    ShiftRects(gHostility.shift, &r, &c.big);
    CopyTable(&r, &FilterRecord::handleProcs, &c.handles);
    CopyTable(&r, &FilterRecord::propertyProcs, &c.properties);
    CopyTable(&r, &FilterRecord::sSPBasic, &c.basic);
    CopyTable(&r, &FilterRecord::platformData, &c.platform);
    CopyTable(&r, &FilterRecord::descriptorParameters, &c.script);
    CopyTable(&c.script, &PIDescriptorParameters::readDescriptorProcs, &c.readers);
    CopyTable(&c.script, &PIDescriptorParameters::writeDescriptorProcs, &c.writers);
    r.advanceState = r.advanceState ? Advance : nullptr;
    MakeWild(&c);
    LoseTables(&r);
    if (gHostility.spoilsUnused)
        SpoilUnused(&r);
}

template <typename... Members>
void KeepMembers(FilterRecord *to, const FilterRecord &from, Members... members) {
    ((to->*members = from.*members), ...);
}

void TakeFromFilter() {
    FilterRecord &own = host::Record(*gHost), taken = gCopies->record;
    using R = FilterRecord;
    ShiftRects(-gHostility.shift, &taken, &gCopies->big);
    KeepMembers(&taken, own, &R::bigDocumentData, &R::handleProcs, &R::propertyProcs, &R::sSPBasic,
                &R::platformData, &R::descriptorParameters, &R::advanceState);
    own = taken;
    if (own.bigDocumentData)
        *own.bigDocumentData = gCopies->big;
    if (own.descriptorParameters)
        own.descriptorParameters->descriptor = gCopies->script.descriptor;
}

// Rows as some hosts hand them out: none, too short, upside down, or where there is no memory.
void SpoilRows(FilterRecord *r) {
    using R = FilterRecord;
    const auto [data, step] = r->outData               ? std::pair{&R::outData, &R::outRowBytes}
                              : gHostility.badRows % 3 ? std::pair{&R::inData, &R::inRowBytes}
                                                       : std::pair{&R::maskData, &R::maskRowBytes};
    if (!(r->*data))
        return;
    const int32_t way = gHostility.badRows / 3 % 4;
    if (way == 0)
        r->*data = nullptr;
    else if (way == 1)
        r->*data = reinterpret_cast<void *>(4096);
    else
        r->*step = way == 2 ? 1 : -(r->*step);
}

HostResult Advance() {
    TakeFromFilter();
    const HostResult result = host::Record(*gHost).advanceState();
    ShowToFilter();
    if (++gHostility.advances == gHostility.badRowsAt)
        SpoilRows(&gCopies->record);
    return result;
}

void Enter(int16_t selector, void *record, intptr_t *data, int16_t *result) {
    const int32_t nulls = ++gHostility.selectorCalls == gHostility.nullsAt ? gHostility.nulls : 0;
    Copies *const outer = gCopies;
    gCopies = new Copies{};
    if (selector != kSelectorAbout)
        ShowToFilter();
    *result = nulls & 4 ? kNoError : *result;
    gModule.entry(selector,
                  nulls & 1                    ? nullptr
                  : selector == kSelectorAbout ? record
                                               : &gCopies->record,
                  nulls & 2 ? nullptr : data, nulls & 4 ? nullptr : result);
    if (selector != kSelectorAbout)
        TakeFromFilter();
    std::memset(static_cast<void *>(gCopies), 0xDD, sizeof(Copies));
    static std::unique_ptr<Copies> last; // kept, so that the next call's lie elsewhere
    last.reset(std::exchange(gCopies, outer));
}

void Nest(void *record) {
    intptr_t *data = &gHost->state->dataWord;
    for (int16_t selector = -1; selector <= 6; ++selector) {
        int16_t result = 99;
        AboutRecord about = {};
        const bool isAbout = selector == kSelectorAbout;
        gModule.entry(selector, isAbout ? static_cast<void *>(&about) : record, record ? data : nullptr,
                      &result);
        Require(isAbout ? result == kNoError || result == kUserCanceledErr || result == kFilterBadParameters
                        : result == kFilterBadParameters,
                "a call inside a call is refused");
    }
}

bool IsGivingBack(const std::string &service) {
    return service == "ReleaseSuite" || service == "disposeProc" || service == "unlockProc" ||
           service == "Action.Free" || service == "closeReadDescriptorProc" ||
           service == "closeWriteDescriptorProc";
}

void OnCall(const char *service) {
    Hostility &h = gHostility;
    const bool isNow = ++h.serviceCalls == h.eventAt;
    if (h.event == kMoveHandles && h.eventAt != 0)
        host::MoveUnlockedHandles(*gHost->state);
    if (!isNow)
        return;
    h.mayLose |= h.event <= kFault && IsGivingBack(service);
    h.cancelled |= h.event == kCancel;
    switch (h.event) {
    case kThrow:
        throw 1;
    case kRaise:
        return RaiseException(0xE06D7363, 0, 0, nullptr); // as another compiler throws
    case kFault:
        *static_cast<volatile int *>(nullptr) = 0;
        return;
    case kNest:
        return Nest(&gCopies->record);
    case kNestWithNothing:
        return Nest(nullptr);
    case kOtherThread:
        return std::thread(Nest, &gCopies->record).join();
    case kLoseTables:
        h.mayLose = h.mayBlame = true;
        return LoseTables(&gCopies->record);
    default:
        return;
    }
}

void ExpectKnown(int16_t code) {
    constexpr int16_t kCodes[] = {kNoError,
                                  kUserCanceledErr,
                                  kMemFullErr,
                                  kFilterBadParameters,
                                  kErrPlugInHostInsufficient,
                                  kErrMissingParameter,
                                  kParamErr,
                                  kWriteErr};
    const host::HostSettings &settings = gHost->settings;
    bool isKnown = code == settings.closeReadResult ||
                   std::find(std::begin(kCodes), std::end(kCodes), code) != std::end(kCodes);
    for (const auto &[service, failure] : settings.failures)
        isKnown |= code == failure.code;
    Require(isKnown, ("a code that is known, not " + to_string(code)).c_str());
}

int16_t CallHere(int16_t selector) {
    gHost->state->thread = GetCurrentThreadId();
    return selector == kSelectorAbout ? host::CallAbout(*gHost) : host::CallSelector(*gHost, selector);
}

int16_t Call(int16_t selector) {
    gTold.clear();
    int16_t code = 0;
    const int64_t before = gHostility.serviceCalls;
    // COM belongs to the thread of Prepare.
    if (gHostility.selectorCalls + 1 == gHostility.threadAt && selector != kSelectorPrepare)
        std::thread([&] { code = CallHere(selector); }).join();
    else
        code = CallHere(selector);
    gHost->state->thread = GetCurrentThreadId();
    ExpectKnown(code);
    const bool broke = before < gHostility.eventAt && gHostility.eventAt <= gHostility.serviceCalls;
    Require(!broke || gHostility.event > kFault || selector == kSelectorAbout || code != kNoError,
            "a host that breaks down is told so");
    Require(selector != kSelectorStart || !host::WantsContinue(*gHost) || gHostility.mayBlame,
            "Start asks for nothing more, however it ends");
    std::sort(gTold.begin(), gTold.end());
    Require(std::adjacent_find(gTold.begin(), gTold.end()) == gTold.end(), "nothing is told twice in a call");
    if (gHost->settings.playInfo == kPlaySilent && !gHostility.mayTell && !gTold.empty())
        Require(false, ("a silent run shows nothing: " + gTold[0]).c_str());
    return code;
}

// True when the picture is finished.
bool PlayInOrder(bool withParameters) {
    for (const int16_t selector : {kSelectorParameters, kSelectorPrepare, kSelectorStart})
        if ((selector != kSelectorParameters || withParameters) && Call(selector) != kNoError)
            return false;
    host::CommitOutput(*gHost);
    Call(kSelectorContinue);
    Call(kSelectorFinish);
    return gHostility.nullsAt == 0;
}

intptr_t AnswerBox(const host::ShownBox &box) {
    if (!box.isDialog) {
        gTold.push_back(box.text);
    } else if (gHostility.runsInAbout) {
        gHostility.runsInAbout = false;
        PlayInOrder(true);
    }
    return gHostility.boxAnswer;
}

// Each sample is the old one or the new one.
void ExpectSamples(const Scene &scene, bool isDone) {
    const host::Document &found = gHost->document;
    const size_t size = static_cast<size_t>(host::BytesPerSample(found));
    for (size_t plane = 0; plane < found.planes.size(); ++plane)
        for (size_t at = 0; at < found.planes[plane].size(); at += size) {
            const auto is = [&](const host::Document &document) {
                return std::memcmp(&found.planes[plane][at], &document.planes[plane][at], size) == 0;
            };
            Require(is(scene.expected) || (!isDone && is(scene.before)),
                    "a sample that is neither the old nor the new one");
        }
}

const Scene &TakeScene(CaseBytes *from) {
    static std::map<int32_t, Scene> scenes;
    const int32_t kind = from->Pick(0, 63);
    Scene &scene = scenes[kind];
    if (!scene.before.planes.empty())
        return scene;
    const bool isWide = kind / 16 == 3; // two tiles
    const int32_t width = isWide ? 2100 : 97, height = isWide ? 40 : 61;
    scene.before = MakeNight(
        {width, height, 8 << std::min(kind & 3, 2), kind & 4 ? 1 : 3, (kind & 8) != 0, isWide ? 16 : 4});
    scene.before.planes.push_back(scene.before.planes[0]); // one that no filter touches
    scene.area = kind / 16 == 1 ? host::Rectangle{13, 7, 90, 51} : host::Rectangle{0, 0, width, height};
    scene.expected = FilteredNight(scene.before, kDefaultParameters, scene.area);
    Require(DifferentSamples(scene.before, scene.expected) > 20,
            ("there are stars in kind " + to_string(kind)).c_str());
    return scene;
}

void TakeSettings(CaseBytes *from, const std::vector<std::string> &services, host::HostSettings *s) {
    constexpr int16_t kTiles[] = {256, 0, -1, 1, 7, 33, 64, 1000, 32767};
    constexpr int32_t kCodes[] = {
        kMemFullErr, kParamErr, kUserCanceledErr, kFilterBadParameters, kErrMissingParameter, 1, 2, -34};
    for (int32_t i = from->Pick(0, 3); i > 1; --i) {
        const size_t which = static_cast<size_t>(from->Pick(0, 9999)) % (services.size() + 20);
        const std::string service = which < services.size() ? services[which] : "advanceState";
        gHostility.mayLose |= IsGivingBack(service);
        if (OneIn(2, from))
            s->absent.insert(service);
        else
            s->failures[service] = {from->Pick(1, 30), OneIn(2, from), kCodes[from->Pick(0, 7)]};
    }
    gHostility.mayTell |= s->absent.contains("descriptorParameters");
    s->layerMasks = OneIn(8, from);
    s->invertedLayerMasks = OneIn(8, from);
    s->extraNonLayerPlanes = OneIn(8, from);
    s->tileWidth = kTiles[from->Pick(0, 8)];
    s->tileHeight = kTiles[from->Pick(0, 8)];
    s->rowPadding = from->Pick(0, 40);
    s->planeCounts = static_cast<host::PlaneCounts>(from->Pick(0, 6));
    if (s->planeCounts == host::PlaneCounts::kAllZero) // or the extra one would be all there is
        s->extraNonLayerPlanes = 0;
    s->playInfo = static_cast<int16_t>(from->Pick(0, 2));
    s->window = OneIn(4, from) ? reinterpret_cast<void *>(0xDEAD) : nullptr;
    s->shuffleSeed = static_cast<uint32_t>(from->Pick(0, 3));
    s->enumerationsGiveTheirOwnType = OneIn(4, from);
    if (OneIn(8, from))
        s->closeReadResult = static_cast<int16_t>(kCodes[from->Pick(0, 7)]);
    s->isCancelled = [] { return gHostility.cancelled; };
    s->onCall = OnCall;
}

Hostility TakeHostility(CaseBytes *from) {
    constexpr int32_t kShifts[] = {0, 0, -1, -70, -32000, 28000, -16000000, 16000000};
    Hostility h;
    h.shift = kShifts[from->Pick(0, 7)];
    const int32_t kind = 9 - from->Pick(0, 9);
    h.nullsAt = kind == 0 ? from->Pick(1, 4) : 0;
    h.nulls = from->Pick(1, 7);
    h.badRowsAt = kind == 1 ? from->Pick(1, 12) : 0;
    h.badRows = from->Pick(0, 11);
    h.eventAt = kind > 1 && kind < 8 ? from->Pick(1, OneIn(2, from) ? 200 : 30) : 0;
    h.event = from->Pick(0, kEvents - 1);
    h.lostTables = from->Pick(1, 31);
    for (int32_t i = kind == 8 ? from->Pick(1, 4) : 0; i > 0; --i)
        h.wild.push_back(from->Take<uint16_t>());
    h.fillsNoBig = OneIn(8, from);
    h.readsNoBig = OneIn(8, from);
    if (h.fillsNoBig || h.readsNoBig) // then the short form must hold them
        h.shift %= 30000;
    h.runsInAbout = OneIn(2, from);
    h.boxAnswer = OneIn(4, from) ? -1 : IDOK;
    h.threadAt = OneIn(8, from) ? from->Pick(1, 4) : 0;
    h.runsInAbout &= h.threadAt == 0; // or that thread would begin what it does not end
    h.mayDiffer = h.mayBlame = !h.wild.empty();
    h.mayTell = h.event == kLoseTables;
    return h;
}

// Handles and a data word as another filter, an older version or nobody left them.
void PlantHandles(CaseBytes *from) {
    constexpr size_t kSizes[] = {1, 8, 39, 40, 41, 255};
    const auto plant = [&] {
        return host::PlantHandle(*gHost,
                                 std::vector<uint8_t>(kSizes[from->Pick(0, 5)], from->Take<uint8_t>()));
    };
    const int32_t which = from->Pick(0, 31) - 28;
    if (which < 0)
        return;
    host::BeginRun(*gHost);
    if (which & 1)
        host::Record(*gHost).parameters = plant();
    host::PlantDataWord(*gHost, which & 2 ? reinterpret_cast<intptr_t>(plant()) : 0xBAD0);
    gHostility.mayBlame |= (which & 2) == 0;
    gHostility.mayDiffer = true;
}

// Memory, the system's calls and the dialog.
void RefuseMore(CaseBytes *from) {
    constexpr const char *kCalls[] = {"_beginthreadex", "CreateEventA", "CreateFileW",
                                      "fopen",          "_wfopen",      "FindFirstFileW"};
    constexpr int kAnswers[] = {IDOK, IDOK, IDCANCEL, -1};
    AnswerMainDialogs(kAnswers[from->Pick(0, 3)]);
    const bool refusesCall = OneIn(8, from), refusesMemory = OneIn(8, from);
    if (refusesCall)
        FailSystemCall(kCalls[from->Pick(0, 5)], 1 + from->Take<uint8_t>() % 5, ERROR_NOT_ENOUGH_MEMORY);
    if (refusesMemory)
        FailModuleAllocation(1 + from->Take<uint8_t>() % 100, OneIn(2, from));
    gHostility.mayDiffer |= refusesCall || refusesMemory; // a worker or a stamp may be missing
}

void PlaySelectors(CaseBytes *from, const Scene &scene) {
    if (!OneIn(3, from)) {
        const bool isDone = PlayInOrder(!OneIn(4, from));
        if (!gHostility.mayDiffer)
            ExpectSamples(scene, isDone);
        return;
    }
    for (int32_t i = from->Pick(1, 7); i > 0; --i)
        if (Call(static_cast<int16_t>(from->Pick(-1, 6))) == kNoError)
            host::CommitOutput(*gHost);
    if (!gHostility.mayDiffer)
        ExpectSamples(scene, false);
}

// The run is ended as by a host that is well again.
void ExpectNothingHeld() {
    const Hostility was = std::exchange(gHostility, {});
    host::HostSettings good;
    good.filterRect = gHost->settings.filterRect;
    gHost->settings = good;
    FailModuleAllocation(0, false);
    FailSystemCall("", 0, 0);
    AnswerMainDialogs(IDOK);
    host::FillAllTables(*gHost->state);
    Call(kSelectorFinish);
    const host::LiveCounts live = host::CountLive(*gHost);
    Require(was.mayLose ||
                live.suites + live.lockedHandles + live.actionDescriptors + live.readers + live.writers == 0,
            "the host has all back");
    host::CloseHost(*gHost);
    for (const std::string &violation : gHost->log.violations)
        Require(was.mayLose || was.mayBlame, violation.c_str());
}

void OpenOn(const Scene &scene, host::FilterHost *filterHost) {
    gHost = filterHost;
    filterHost->document = scene.before;
    filterHost->settings.filterRect = scene.area;
    filterHost->script = ScriptOf(kDefaultParameters);
    host::OpenHost(*filterHost, Enter, &gModule.pipl);
}

void PlayNormalCase(const Scene &scene) {
    host::FilterHost filterHost;
    OpenOn(scene, &filterHost);
    Require(PlayInOrder(true) && gTold.empty(), "the next run is a normal one");
    ExpectSamples(scene, true);
    gKept = filterHost.registry;
    ExpectNothingHeld();
}

void PlayHostileCase(CaseBytes *from, const Scene &scene, const std::vector<std::string> &services) {
    host::FilterHost filterHost;
    gHostility = TakeHostility(from);
    if (scene.before.width > 1200) // lights are looked for in a reduced picture, which depends on its place
        gHostility.shift = 0;
    TakeSettings(from, services, &filterHost.settings);
    if (OneIn(2, from))
        filterHost.registry = gKept;
    OpenOn(scene, &filterHost);
    if (OneIn(2, from))
        filterHost.document.mask.assign(
            static_cast<size_t>(scene.before.width) * static_cast<size_t>(scene.before.height), 255);
    PlantHandles(from);
    RefuseMore(from);
    gHostility.spoilsUnused = OneIn(2, from);
    filterHost.document.iccProfile.assign(OneIn(2, from) ? 200 : 0, 'P');
    PlaySelectors(from, scene);
    ExpectNothingHeld();
}

struct Stage {
    TemporaryFolder folder;
    std::vector<std::string> services;
    HeldObjects held;

    Stage() {
        gModule = LoadWatchedModule(folder.Path());
        CatchModuleBoxes(gModule, AnswerBox);
        CaseBytes nothing{nullptr, 0};
        for (const int threadAt : {0, 1}) { // the run-time library keeps what its first catches take
            host::FilterHost first;
            OpenOn(TakeScene(&nothing), &first);
            services.assign(first.state->knownNames.begin(), first.state->knownNames.end());
            first.settings.onCall = OnCall;
            gHostility.eventAt = 1; // throws
            gHostility.threadAt = threadAt;
            gHostility.mayLose = true;
            Call(kSelectorParameters);
            ExpectNothingHeld();
        }
        PlayNormalCase(TakeScene(&nothing));
        held = Held();
    }
    ~Stage() { UnloadWatchedModule(&gModule); }
};

void PlayCase(CaseBytes from) {
    static Stage stage;
    const Scene &scene = TakeScene(&from);
    PlayHostileCase(&from, scene, stage.services);
    PlayNormalCase(scene);
    constexpr int64_t kSlack = 4; // the run-time library's, for threads; what is lost in every run adds up
    const HeldObjects held = Held(), &most = stage.held;
    for (const auto &[call, count] : LiveObjects())
        std::fprintf(stderr, held.objects > most.objects ? "%d of %s\n" : "", count, call.c_str());
    Require(held.heapBlocks <= most.heapBlocks + kSlack && held.objects <= most.objects &&
                held.comInitializations == 0 && held.sections == 0,
            ("nothing is held: " + to_string(held.heapBlocks) + " blocks, " +
             to_string(held.comInitializations) + " of COM, " + to_string(held.sections) + " sections")
                .c_str());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t length) {
    PlayCase({bytes, length});
    return 0;
}
