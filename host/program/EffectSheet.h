// One photo with every effect, side by side.
#pragma once

#include "host/program/PhotoRun.h"

namespace host {

// Before work: false with a reason when no sheet can be written there.
bool CheckSheetPlace(const std::wstring &path, std::string *why);
// The options' photo as it is and with each effect, written as the options' contact sheet. The parameters are
// the session's; without --points each effect has the number that it proposes.
PhotoOutcome MakeEffectSheet(PhotoSession &session);

} // namespace host
