// What an open host keeps behind its public record, and the gate through which every callback passes. Shared
// by the host's own files only.
#pragma once

#include "host/module/FilterModule.h"
#include "host/services/HostRecord.h"
#include "host/services/HostServices.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <exception>
#include <list>
#include <mutex>
#include <type_traits>

namespace host {

// The handle that the filter holds is the address of `data`.
struct HandleBlock {
    char *data;
    int32_t size;
    int32_t locks;
};

// Memory that is no handle. The filter holds the block's address (as a BufferId) or that of its data.
enum class MemoryKind { kBuffer, kSuiteBuffer, kBasicBlock };
struct MemoryBlock {
    MemoryKind kind;
    char *data;
    size_t size;
    int32_t locks;
};

struct Reader {
    Descriptor descriptor;
    std::vector<size_t> order;
    size_t next = 0; // into order
    uint32_t *keys = nullptr;
    int16_t worstResult = 0;
};

struct Writer {
    Descriptor descriptor;
};

// A buffer handed to the filter: guard, rows with guard bytes behind each, guard.
struct SampleBuffer {
    std::vector<uint8_t> bytes; // empty: none handed out
    std::vector<uint8_t> spare; // memory of the one before, while none is
    Rectangle rectangle;
    int32_t loPlane = 0;
    int32_t hiPlane = 0;
    size_t rowLength = 0; // without the guard bytes
    size_t rowBytes = 0;
};

// Newer hosts' records go on behind the last field that a filter may touch; the filter must leave that alone.
constexpr size_t kRecordTail = 96;
constexpr uint8_t kTailByte = 0xCC;

struct HostState {
    FilterHost *owner = nullptr;
    FilterEntry entry = nullptr;
    Pipl pipl;
    bool hasPipl = false;
    DWORD thread = 0;
    int callDepth = 0;
    int16_t selector = -1; // being played
    bool runBegun = false;
    std::mutex logLock;
    std::set<std::string> knownNames;

    struct {
        FilterRecord record;
        uint8_t tail[kRecordTail];
    } fields = {};
    BigDocumentStruct bigDocument = {};
    PlatformData platform = {};
    PIDescriptorParameters descriptorParameters = {};
    uint8_t errorString[256] = {};
    intptr_t dataWord = 0;
    int16_t result = 0;
    HostHandle iccHandle = nullptr;
    bool hasRecorded = false; // a writer was closed in this run

    BufferProcs bufferProcs = {};
    BufferSuite bufferSuite = {};
    HandleProcs handleProcs = {};
    HandleSuite1 handleSuite1 = {};
    HandleSuite2 handleSuite2 = {};
    PropertyProcs propertyProcs = {};
    ReadDescriptorProcs readProcs = {};
    WriteDescriptorProcs writeProcs = {};
    SPBasicSuite basicSuite = {};
    ErrorSuite errorSuite = {};
    DescriptorRegistrySuite registrySuite = {};
    ActionDescriptorSuite actionSuite = {};

    std::list<HandleBlock> handles;
    std::list<MemoryBlock> blocks;
    std::list<Descriptor> actionDescriptors;
    std::list<Reader> readers;
    std::list<Writer> writers;
    std::map<std::pair<std::string, int32_t>, int64_t> suitesHeld;

    SampleBuffer in, out, mask;
    // Planes as they were at the start of the run; empty while nothing was committed to that plane.
    std::vector<std::vector<uint8_t>> originals;
    std::vector<std::vector<Rectangle>> written; // of each plane in this run
    bool clipsOutput = false;                    // what was written last is kept to the selection
};

extern HostState *gHostState; // the open host; set and read on its own thread

template <size_t size> struct ServiceName {
    char text[size];
    consteval ServiceName(const char (&name)[size]) { std::copy_n(name, size, text); }
};

// Counts the call. A value: the call must fail with that code.
std::optional<int32_t> EnterCall(const char *name);

template <typename Result> Result FailedResult(int32_t code) {
    if constexpr (std::is_pointer_v<Result>)
        return nullptr;
    else if constexpr (std::is_same_v<Result, HostBoolean>)
        return 0;
    else if constexpr (!std::is_void_v<Result>)
        return static_cast<Result>(code);
}

// The callback that the filter sees: counted, failing on request, and closed to exceptions.
template <ServiceName name, auto function> struct Gate;
template <ServiceName name, typename Result, typename... Arguments, Result (*function)(Arguments...)>
struct Gate<name, function> {
    static Result Call(Arguments... arguments) {
        try {
            if (const std::optional<int32_t> code = EnterCall(name.text))
                return FailedResult<Result>(*code);
            return function(arguments...);
        } catch (const std::exception &) {
            return FailedResult<Result>(kMemFullErr);
        }
    }
};

// The pointer to put into a table: null when the settings take the service away.
template <ServiceName name, auto function> auto Offer(HostState &state) {
    state.knownNames.insert(name.text);
    auto *call = &Gate<name, function>::Call;
    return state.owner->settings.absent.contains(name.text) ? nullptr : call;
}
template <typename Table> Table *OfferTable(HostState &state, const char *name, Table *table) {
    state.knownNames.insert(name);
    return state.owner->settings.absent.contains(name) ? nullptr : table;
}

void AddViolation(HostState &state, const std::string &text);

// Fills the members of a table that this host does not serve.
template <typename Result, typename... Arguments> void Refuse(Result (**member)(Arguments...)) {
    *member = [](Arguments...) -> Result {
        if (gHostState)
            AddViolation(*gHostState, "called a procedure that this host does not serve");
        return FailedResult<Result>(kErrPlugInHostInsufficient);
    };
}
template <typename... Procedures> void RefuseAll(Procedures *...members) {
    (Refuse(members), ...);
}

bool IsSuiteHeld(const HostState &state, const char *name);

} // namespace host
