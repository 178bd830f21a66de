// Printf-style text of any length, and local times, for the reporter and the log.
#pragma once

#include <cstdarg>
#include <cstddef>

// A text in its own small buffer, or on the heap when that is too short. Filled by FormatText, given back by
// FreeText, never copied.
struct FormattedText {
    char local[512];
    char *text;    // terminated
    size_t length; // without the terminator
    bool cut;      // memory ran out, and the text is only its beginning
};

// Never fails: without memory the text is cut, and a format that cannot be printed stands for itself.
void FormatText(FormattedText *formatted, const char *format, va_list arguments);
void FreeText(FormattedText *formatted);

// The local time in strftime's form; an empty text when it does not fit.
void FormatLocalTime(char *text, size_t capacity, const char *format);
