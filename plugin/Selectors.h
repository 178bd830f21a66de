// The work of each selector. Each stores a failure in the host's result word and then holds nothing any more.
#pragma once

void HandleAbout();
void HandleParameters();
void HandlePrepare();
void HandleStart();
void HandleContinue();
void HandleFinish();
