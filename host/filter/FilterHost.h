// A filter host of our own: it plays a filter module on a document, call by call or whole, and writes down
// what the filter did. Well-behaved as it stands; every service can be taken away, made to fail or made odd,
// which is how a filter's behaviour on other hosts is tested.
//
// A run:
//     host::FilterHost filterHost;
//     filterHost.document = host::MakeDocument(100, 80, 8, 3, false);
//     host::OpenHost(filterHost, module);
//     const host::RunResult result = host::RunFilter(filterHost, true);
//     host::CloseHost(filterHost);
//     // filterHost.document, filterHost.log
//
// The interface's callbacks carry no context, so one host at a time is open in a process. All functions are
// called on one thread, the one that opened the host.
#pragma once

#include "host/filter/Descriptor.h"
#include "host/filter/Document.h"
#include "host/module/FilterModule.h"
#include "plugin/interface/HostInterface.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace host {

// Services go by one set of names, in the settings and in the log:
//   tables and records  "bufferProcs" "handleProcs" "propertyProcs" "descriptorParameters"
//   "readDescriptorProcs"
//                       "writeDescriptorProcs" "sSPBasic" "bigDocumentData" "platformData" "errorString"
//   record procedures   "abortProc" "progressProc" "advanceState" "displayPixels"
//   table procedures    their own names: "newProc" "lockProc" "getKeyProc" "putUnitFloatProc" ...; of buffers
//                       "lockBufferProc" "unlockBufferProc", the other names being their own
//   basic suite         "AcquireSuite" "ReleaseSuite" "AllocateBlock" ...
//   buffer, error suite "Buffer.New" ... "Error.SetErrorFromCString" ...; the handle suites are the table
//                       procedures and "SetLock"
//   registry            "Registry.Register" "Registry.Get"
//   action descriptor   "Action.Make" "Action.Free" "Action.PutData" ... (the suite's member names)
//   property procedure  "setPropertyProc", by table or by suite alike
// Members that a filter of plain parameters has no use for are refused, and that is a violation.
// OpenHost throws std::invalid_argument for a name that it does not know.

struct Failure {
    int64_t nth = 1; // the n-th call since OpenHost or ClearLog fails, counted from 1
    bool andLater = false;
    int32_t code = kMemFullErr; // for procedures with a result; pointers become null, Booleans 0
};

// What the record's plane counts say. kAutomatic: kFlat, or kLayer when the document has transparency.
enum class PlaneCounts {
    kAutomatic,
    kFlat,                // non-layer planes only
    kLayer,               // layer planes and editable transparency
    kProtected,           // layer; no output transparency
    kProtectedFlatOutput, // layer; the output counted as non-layer planes
    kFlatAsLayer,         // layer planes without transparency
    kAllZero,             // not filled in; `planes` alone counts
};

// What closing a read descriptor returns when a key of the caller's array was missing.
enum class MissingKeys { kReported /* -1715 */, kNeverReported };

struct HostSettings {
    std::set<std::string> absent; // null tables, records and procedures
    std::map<std::string, Failure> failures;
    std::set<std::string> refusedSuites; // by suite name

    // Records
    int16_t resultOnEntry = 0x5A5A; // the result word before each call
    int32_t maxSpace = 512 << 20;
    void *window = nullptr; // platformData's hwnd
    PlaneCounts planeCounts = PlaneCounts::kAutomatic;
    int16_t layerMasks = 0;         // planes behind transparency, counted in this order; the document
    int16_t invertedLayerMasks = 0; // holds them in `planes`
    int16_t extraNonLayerPlanes = 0;
    std::optional<int16_t> imageMode;    // else from depth and planes
    std::optional<int32_t> depthField;   // else the document's depth
    std::optional<Rectangle> filterRect; // else the whole image
    // Called with the finished record before each selector but About: the last word on any field.
    std::function<void(int16_t selector, FilterRecord &record)> adjustRecord;

    // Image access
    int16_t tileWidth = 256;
    int16_t tileHeight = 256;
    int32_t rowPadding = 13;           // guard bytes behind every row of every buffer
    std::optional<bool> prefillOutput; // else as the module's filter case says

    // Scripting
    int16_t playInfo = kPlayDontDisplay;
    MissingKeys missingKeys = MissingKeys::kReported;
    uint32_t shuffleSeed = 0;                  // 0: keys come in the descriptor's order
    std::optional<int16_t> closeReadResult;    // the verdict, whatever was read
    bool enumerationsGiveTheirOwnType = false; // getKeyProc's type of an enumerated value

    // Handles
    bool forgetHandles = false;         // `parameters` and `*data` are dropped between runs
    bool restoreHandlesAsBytes = false; // between runs both become new handles with the same bytes

    // The person in front of the host
    int64_t cancelAtAbortCall = 0;     // abortProc answers 1 from its n-th call on; 0: never
    std::function<bool()> isCancelled; // polled by abortProc; advanceState then gives -128
    std::function<void(int32_t done, int32_t total)> onProgress;

    // Called when Start has ended with 0, before Continue and Finish: a diagnostic caller's moment.
    std::function<void()> afterStart;

    bool finishAfterFailure = true; // Finish follows a failed Continue or a cancel
};

struct AdvanceCall {
    int16_t selector;
    Rectangle in, out, mask; // as asked for
    int16_t inLo, inHi, outLo, outHi;
    int16_t result;
};

struct SelectorCall {
    int16_t selector;
    int16_t result;
};

struct HostLog {
    std::map<std::string, int64_t> calls; // by service name
    std::vector<SelectorCall> selectors;
    std::vector<AdvanceCall> advances;
    std::vector<std::pair<int32_t, int32_t>> progress; // done, total
    std::vector<std::pair<uint32_t, intptr_t>> propertiesSet;
    std::vector<std::string> suites;     // "+NAME/VERSION" acquired, "-" released, "!" refused, in order
    std::string errorText;               // from errorString or the error suite
    std::string refusal;                 // why the filter was not run: its property list forbids the image
    std::vector<std::string> violations; // what no filter may do, in plain words; empty is good
    int64_t unlocksWithoutLock = 0;      // harmless, but worth a look
};

struct RegistryEntry {
    std::string key;
    Descriptor descriptor;
    bool isPersistent = false;
};

struct HostState; // the open host's own tables, handles and buffers

struct FilterHost {
    HostSettings settings;
    Document document;
    std::optional<Descriptor> script;   // given to the filter in the next run
    std::optional<Descriptor> recorded; // what the filter wrote in its last Finish
    std::vector<RegistryEntry> registry;
    HostLog log;
    std::unique_ptr<HostState> state;

    FilterHost();
    ~FilterHost(); // closes
    FilterHost(const FilterHost &) = delete;
    FilterHost &operator=(const FilterHost &) = delete;
};

struct RunResult {
    int16_t code = 0;            // 0 when the document was changed as the filter wanted
    int16_t failedSelector = -1; // -1 with code 0, and when the filter was not run
};

// Makes the host the process's active one. The module stays the caller's and must outlive the host.
void OpenHost(FilterHost &filterHost, const FilterModule &module);
// The same for a filter without a module: an entry alone, with the cases of a list (may be null).
void OpenHost(FilterHost &filterHost, FilterEntry entry, const Pipl *pipl);
// Frees everything and adds what the filter leaked to log.violations: suites, descriptors, readers, writers,
// buffers, handles other than `parameters` and `*data`.
void CloseHost(FilterHost &filterHost);

// Calls About.
int16_t CallAbout(FilterHost &filterHost);
// Parameters (when asked for), Prepare, Start, advance and Continue until the rectangles are empty, commit,
// Finish. After a failure or a cancel the document is what it was before; when Finish fails, after all is
// written, the document stays changed. A document that the filter's property list forbids is refused.
RunResult RunFilter(FilterHost &filterHost, bool withParameters);

// One by one, in any order. BeginRun makes the script's handle and fills the record; EndRun takes what was
// recorded and reports leaks of the run. CallSelector begins a run when none is begun. It touches the
// document only through advance and commit; nothing is put back.
void BeginRun(FilterHost &filterHost);
void EndRun(FilterHost &filterHost);
int16_t CallSelector(FilterHost &filterHost, int16_t selector);
// The host's own advance before a Continue: commits, then serves the rectangles. A host code.
int16_t AdvanceHost(FilterHost &filterHost);
// Writes the output handed out last into the document.
void CommitOutput(FilterHost &filterHost);
// True when one of the three rectangles asks for something, which is when a host advances and calls Continue.
bool WantsContinue(const FilterHost &filterHost);

// The records of the open host, for tests that look or meddle. `bigDocumentData` may be absent from the
// record.
FilterRecord &Record(FilterHost &filterHost);
BigDocumentStruct &BigDocument(FilterHost &filterHost);
// The data word, and the bytes of a handle of this host (empty for a null or dead one).
intptr_t DataWord(const FilterHost &filterHost);
std::vector<uint8_t> HandleBytes(const FilterHost &filterHost, HostHandle handle);
// A new handle with these bytes, to plant as `parameters` or `*data`.
HostHandle PlantHandle(FilterHost &filterHost, const std::vector<uint8_t> &bytes);
void PlantDataWord(FilterHost &filterHost, intptr_t word);

// Live now: handles, handles with a lock, memory, suite acquisitions, action descriptors, readers and
// writers.
struct LiveCounts {
    int64_t handles = 0;
    int64_t lockedHandles = 0;
    int64_t memoryBlocks = 0; // buffers and basic blocks
    int64_t suites = 0;
    int64_t actionDescriptors = 0;
    int64_t readers = 0;
    int64_t writers = 0;
};
LiveCounts CountLive(const FilterHost &filterHost);

// Starts a new log and lets the failures count from 1 again.
void ClearLog(FilterHost &filterHost);

} // namespace host
