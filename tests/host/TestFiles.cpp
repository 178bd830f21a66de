#include "tests/host/TestFiles.h"

#include <filesystem>
#include <windows.h>

#include <cmath>

static int gFolderCount = 0;

TestFolder::TestFolder() {
    wchar_t base[MAX_PATH];
    GetTempPathW(MAX_PATH, base);
    do // With characters that no narrow code page has together. A process before may have had the same
       // number.
        path = std::wstring(base) + L"brillatrix \x00E9\x4E2D " + std::to_wstring(GetCurrentProcessId()) +
               L"-" + std::to_wstring(++gFolderCount);
    while (!CreateDirectoryW(path.c_str(), nullptr));
}

std::vector<std::wstring> TestFolder::List(const std::wstring &inside) const {
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW((path + inside + L"\\*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return names;
    do {
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
            names.push_back(found.cFileName);
    } while (FindNextFileW(search, &found));
    FindClose(search);
    return names;
}

TestFolder::~TestFolder() {
    std::error_code failure;
    std::filesystem::remove_all(path, failure);
}

std::wstring ProgramFile(const std::wstring &name) {
    wchar_t program[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    const std::wstring text = program;
    return text.substr(0, text.find_last_of(L"\\/") + 1) + name;
}

host::Picture MakeTestPicture(int32_t width, int32_t height, int32_t depth, int32_t colourPlanes,
                              bool hasAlpha) {
    host::Picture picture = host::MakePicture(width, height, depth, colourPlanes, hasAlpha);
    uint32_t random = 12345;
    for (host::Bytes &plane : picture.planes) {
        for (size_t i = 0; i < plane.size(); i++) {
            random = random * 1664525u + 1013904223u;
            plane[i] = static_cast<uint8_t>(random >> 24);
        }
        const float odd[] = {0.0f, -0.0f, 1.0f, -2.5f, 1e30f, INFINITY};
        for (size_t i = 0; depth == 32 && i < plane.size() / 4; i++)
            std::memcpy(plane.data() + i * 4, &odd[(i + random) % 6], 4);
    }
    return picture;
}

void WriteBytes(const std::wstring &path, const host::Bytes &bytes) {
    std::string why;
    ASSERT_TRUE(host::WriteWholeFile(path, bytes, &why)) << why;
}

host::Bytes ReadBytes(const std::wstring &path) {
    host::Bytes bytes;
    std::string why;
    EXPECT_TRUE(host::ReadWholeFile(path, &bytes, &why)) << why;
    return bytes;
}

host::Picture ReadGood(const std::wstring &path) {
    host::Picture picture;
    std::string why;
    EXPECT_TRUE(host::ReadPicture(path, &picture, &why)) << why;
    return picture;
}

std::string ReadBad(const std::wstring &path) {
    host::Picture picture;
    std::string why;
    const bool wasRead = host::ReadPicture(path, &picture, &why);
    EXPECT_FALSE(wasRead);
    EXPECT_EQ(picture.planes.size(), 0u) << "the output was touched";
    return wasRead ? std::string() : why;
}
