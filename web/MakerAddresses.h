// Where the maker is found on the net. The build sets the addresses (cmake/MakerAddresses.cmake).
#pragma once

extern const char kHelpAddress[];
extern const char kWebAddress[];
extern const char kSupportAddress[]; // a page, or "mailto:" and a mail address
extern const char kDownloadAddress[];
extern const char kUpdateAddress[]; // empty: nobody is asked for a newer version

// Opens an address in the program that the user has for it. `owner` is an HWND, may be null. A failure is
// reported and answers false. Host's thread.
bool OpenAddress(void *owner, const char *address);
