#include "host/base/SystemText.h"

#include <windows.h>

namespace host {

std::string ToUtf8(const std::wstring &text) {
    const int length = static_cast<int>(text.size());
    const int needed = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<size_t>(needed), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, result.data(), needed, nullptr, nullptr);
    return result;
}

static std::wstring Widen(UINT codePage, const char *text, int length) {
    const int needed = MultiByteToWideChar(codePage, 0, text, length, nullptr, 0);
    std::wstring result(static_cast<size_t>(needed), L'\0');
    MultiByteToWideChar(codePage, 0, text, length, result.data(), needed);
    return result;
}

std::wstring FromUtf8(const std::string &text) {
    return Widen(CP_UTF8, text.data(), static_cast<int>(text.size()));
}

std::wstring FromLocal(const char *text) {
    return Widen(CP_ACP, text, lstrlenA(text));
}

std::string SystemErrorText(uint32_t error) {
    wchar_t buffer[512];
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error,
                                  MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US), buffer, 512, nullptr);
    while (length > 0 && (buffer[length - 1] <= L' ' || buffer[length - 1] == L'.'))
        length--;
    if (length == 0)
        return "system error " + std::to_string(error);
    return ToUtf8(std::wstring(buffer, length));
}

} // namespace host
