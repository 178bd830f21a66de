// A folder for the files of a test, and where the built modules are.
#pragma once

#include "host/base/FileBytes.h"
#include "host/pictures/PictureFiles.h"

#include <gtest/gtest.h>

#include <string>

// Made for one test and removed with all its files at the end.
struct TestFolder {
    std::wstring path;

    TestFolder();
    ~TestFolder();
    TestFolder(const TestFolder &) = delete;
    TestFolder &operator=(const TestFolder &) = delete;

    std::wstring File(const std::wstring &name) const { return path + L"\\" + name; }
    // Names of the files in it, or in a folder of it ("\\name").
    std::vector<std::wstring> List(const std::wstring &inside = L"") const;
};

// The folder of the test program, where the modules and the program are.
std::wstring ProgramFile(const std::wstring &name);

// A picture of samples that differ in every place, all value ranges included.
host::Picture MakeTestPicture(int32_t width, int32_t height, int32_t depth, int32_t colourPlanes,
                              bool hasAlpha);
void WriteBytes(const std::wstring &path, const host::Bytes &bytes);
host::Bytes ReadBytes(const std::wstring &path);
// Fails the test when the file cannot be read.
host::Picture ReadGood(const std::wstring &path);
// The reason; empty, and a failure of the test, when the file was read all the same.
std::string ReadBad(const std::wstring &path);
