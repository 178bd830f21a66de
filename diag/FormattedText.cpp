#include "diag/FormattedText.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

// The first pass measures, and already prints what fits into the small buffer; most texts end there.
void FormatText(FormattedText *formatted, const char *format, va_list arguments) {
    formatted->text = formatted->local;
    formatted->cut = false;
    va_list again;
    va_copy(again, arguments);
    const int measured = vsnprintf(formatted->local, sizeof formatted->local, format, arguments);
    if (measured < 0) {
        snprintf(formatted->local, sizeof formatted->local, "%s", format);
    } else if (static_cast<size_t>(measured) >= sizeof formatted->local) {
        const size_t capacity = static_cast<size_t>(measured) + 1;
        char *text = static_cast<char *>(malloc(capacity));
        formatted->cut = !text || vsnprintf(text, capacity, format, again) < 0;
        if (formatted->cut)
            free(text);
        else
            formatted->text = text;
    }
    va_end(again);
    formatted->length = strlen(formatted->text);
}

void FreeText(FormattedText *formatted) {
    if (formatted->text != formatted->local)
        free(formatted->text);
    formatted->text = nullptr;
}

void FormatLocalTime(char *text, size_t capacity, const char *format) {
    const time_t now = time(nullptr);
    tm local = {};
    if (localtime_s(&local, &now) != 0 || strftime(text, capacity, format, &local) == 0)
        text[0] = '\0';
}
