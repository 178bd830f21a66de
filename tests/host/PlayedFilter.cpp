#include "tests/host/PlayedFilter.h"

// The entry carries no context: the one host of the running test.
static FilterPlay gPlay;

static void PlayEntry(int16_t selector, void *record, intptr_t *data, int16_t *result) {
    *result =
        selector == kSelectorAbout ? kNoError : gPlay(selector, *static_cast<FilterRecord *>(record), data);
}

PlayedHost::PlayedHost(FilterPlay play) {
    gPlay = std::move(play);
    filterHost.document = host::MakeDocument(7, 5, 8, 3, false);
    for (size_t plane = 0; plane < 3; plane++)
        for (size_t i = 0; i < 35; i++)
            filterHost.document.planes[plane][i] = static_cast<uint8_t>(plane * 50 + i);
    pipl.modes = 0xFFFFFFFF;
    pipl.hasFilterCases = true;
    for (host::FilterCaseInfo &info : pipl.filterCases)
        info = {1, 1, host::kCaseNoPrefill | host::kCaseWritesOutsideSelection, 0};
}

PlayedHost::~PlayedHost() {
    host::CloseHost(filterHost);
    gPlay = nullptr;
}

void PlayedHost::Open() {
    if (!filterHost.state)
        host::OpenHost(filterHost, PlayEntry, &pipl);
}

int16_t PlayedHost::Run() {
    Open();
    return host::RunFilter(filterHost, false).code;
}

std::vector<std::string> PlayedHost::ViolationsOf(const std::function<void(FilterRecord &record)> &action) {
    gPlay = [&](int16_t selector, FilterRecord &record, intptr_t *) {
        if (selector == kSelectorStart)
            action(record);
        return kNoError;
    };
    Open();
    host::ClearLog(filterHost);
    host::BeginRun(filterHost);
    host::CallSelector(filterHost, kSelectorStart);
    host::EndRun(filterHost);
    return filterHost.log.violations;
}

bool PlayedHost::HasViolation(const std::string &part) const {
    for (const std::string &violation : filterHost.log.violations)
        if (violation.find(part) != std::string::npos)
            return true;
    return false;
}

static HostRect32 Wide(const host::Rectangle &r) {
    return {r.top, r.left, r.bottom, r.right};
}

static HostRect Narrow(const host::Rectangle &r) {
    return {static_cast<int16_t>(r.top), static_cast<int16_t>(r.left), static_cast<int16_t>(r.bottom),
            static_cast<int16_t>(r.right)};
}

void AskFor(FilterRecord &record, const host::Rectangle &in, const host::Rectangle &out,
            const host::Rectangle &mask) {
    if (BigDocumentStruct *big = record.bigDocumentData) {
        big->PluginUsing32BitCoordinates = 1;
        big->inRect32 = Wide(in);
        big->outRect32 = Wide(out);
        big->maskRect32 = Wide(mask);
        return;
    }
    record.inRect = Narrow(in);
    record.outRect = Narrow(out);
    record.maskRect = Narrow(mask);
}

void AskForPlanes(FilterRecord &record, int16_t lo, int16_t hi) {
    record.inLoPlane = record.outLoPlane = lo;
    record.inHiPlane = record.outHiPlane = hi;
}
