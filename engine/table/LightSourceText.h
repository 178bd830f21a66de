// The global table as text.
#pragma once

// The viewer's text, a line a call: first = true restarts and gives the count line, then one line a source,
// then null. The text stays valid until the next call. One thread at a time.
const char *FormatLightSourceTableLine(bool first);
