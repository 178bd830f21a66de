#include "host/base/CommandLine.h"

namespace host {

// Backslashes count only before a quotation mark.
static std::wstring Quote(const std::wstring &word) {
    std::wstring quoted = L"\"";
    size_t slashes = 0;
    for (const wchar_t letter : word) {
        if (letter == L'"')
            quoted.append(slashes + 1, L'\\');
        slashes = letter == L'\\' ? slashes + 1 : 0;
        quoted += letter;
    }
    return quoted.append(slashes, L'\\') + L"\"";
}

std::wstring JoinWords(const std::vector<std::wstring> &words) {
    std::wstring line;
    for (const std::wstring &word : words)
        line += (line.empty() ? L"" : L" ") + Quote(word);
    return line;
}

} // namespace host
