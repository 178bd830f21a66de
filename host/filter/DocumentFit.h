// Whether and how the document fits the filter's property list.
#pragma once

#include "host/services/HostRecord.h"

namespace host {

int16_t ImageModeOf(const Document &document);
// As what the document is shown to the filter; nothing when the filter takes it in no way.
std::optional<PlaneCounts> FindCounts(const HostState &state);
PlaneCounts ResolvedCounts(const HostState &state);
// Whether the filter's property list allows the document; if not, why.
bool IsDocumentTaken(const HostState &state, std::string *why);

} // namespace host
