// Text between the system's wide form and UTF-8, and the system's own words for its error codes.
#pragma once

#include <cstdint>
#include <string>

namespace host {

std::string ToUtf8(const std::wstring &text);
std::wstring FromUtf8(const std::string &text);
// In the local code page of the system's narrow functions.
std::wstring FromLocal(const char *text);

// "Access denied" and the like, without line ends; the number when the system has no words.
std::string SystemErrorText(uint32_t error);

} // namespace host
