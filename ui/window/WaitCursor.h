// The cursor that says that something is under way.
#pragma once

void ShowWaitCursor();
