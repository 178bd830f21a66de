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

#include "host/filter/FilterRun.h"
#include "host/filter/ImageAccess.h"
#include "host/module/FilterModule.h"
#include "host/services/HandleProcs.h"

namespace host {

// Makes the host the process's active one. The module stays the caller's and must outlive the host.
void OpenHost(FilterHost &filterHost, const FilterModule &module);
// The same for a filter without a module: an entry alone, with the cases of a list (may be null).
void OpenHost(FilterHost &filterHost, FilterEntry entry, const Pipl *pipl);
// Frees everything and adds what the filter leaked to log.violations: suites, descriptors, readers, writers,
// buffers, handles other than `parameters` and `*data`.
void CloseHost(FilterHost &filterHost);

// The records of the open host, for tests that look or meddle. `bigDocumentData` may be absent from the
// record.
FilterRecord &Record(FilterHost &filterHost);
BigDocumentStruct &BigDocument(FilterHost &filterHost);
// The data word, which may hold a handle.
intptr_t DataWord(const FilterHost &filterHost);
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
