// What a host is told before a run, and what it writes down about one.
#pragma once

#include "host/services/Descriptor.h"
#include "host/services/Document.h"
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

    // Called at each call of the filter's before it is served. It may call the filter, throw or raise.
    std::function<void(const char *service)> onCall;

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

} // namespace host
