// Tells the user of a newer version, when that was asked for in the about box: off until then, and the maker
// is asked at most once a day. The main dialog and the about box show it as a link from their next opening
// on.
#pragma once

#include <cstddef>

// Whether the build has a service to ask at all.
bool CanNoticeUpdates();
// The user's choice, kept between runs. Setting it answers false, reported, when it could not be kept. Host's
// thread; may wait for the disk.
bool IsUpdateNoticeOn();
bool SetUpdateNotice(bool on);

// Asks in the background when the notice is on and the last time is a day ago. Call it when a window of ours
// opens before the user, never in a silent run. Returns at once and needs no end: the answer is kept for
// NewVersionKnown. Once it has begun to ask, the module stays in memory until the process ends, because the
// system may still be calling into it. Host's thread.
void StartUpdateCheck();
// Whether one is on its way.
bool IsUpdateCheckRunning();

// "A New Version of Brillatrix Pro is Available Online", when the notice is on and a version newer than this
// one is known; else false, and *text is left alone. It may be called for each opening of a window. Host's
// thread.
bool NewVersionKnown(char *text, size_t capacity);
