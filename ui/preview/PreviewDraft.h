// Quick renderings of the whole view from a reduced picture, for as long as changes come faster than the
// exact view can be finished. Proxy Update Task only.
#pragma once

#include "ui/preview/PreviewRequest.h"

#include <atomic>

// The last of the qualities, gProxies.draftQuality; 0 is the finest.
constexpr int32_t kCoarsestDraft = 7, kFirstDraft = 1;

// Renders the view of a request, of any quality that is fast enough, and puts it in the place of the draft
// that there was. False when stopped or without memory: the draft is then as before.
bool MakeDraft(const PreviewRequest &request, const std::atomic<uint8_t> &stop);

// Makes what drafts of this view are drawn from, so that the first one need not wait for it.
void PrepareDraft(const PreviewRequest &request, const std::atomic<uint8_t> &stop);

// The exact pixels that there are show over the draft; until then it hides them, so that a quick view is
// replaced whole.
void ShowFreshOverDraft();

// The exact view is whole.
void DropDraft();
