// What a batch and its workers say to each other over pipes: lists of texts, each with its length.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace host {

using MessageTexts = std::vector<std::string>;

// False when the other side is gone, or sends what no message can be.
bool SendTexts(HANDLE pipe, const MessageTexts &texts);
bool ReceiveTexts(HANDLE pipe, MessageTexts *texts);

} // namespace host
