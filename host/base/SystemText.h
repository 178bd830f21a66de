// Text between the system's wide form and UTF-8, the system's own words for its error codes, and reasons.
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

// Tells the reason; always false.
inline bool Fail(std::string *why, const std::string &reason) {
    *why = reason;
    return false;
}

} // namespace host
