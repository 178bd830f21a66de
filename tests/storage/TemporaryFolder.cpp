#include "tests/storage/TemporaryFolder.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <windows.h>

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() {
    static std::atomic<unsigned> count = 0;
    char root[MAX_PATH];
    GetTempPathA(sizeof root, root);
    do // a process before may have had the same number, and left something
        path =
            std::string(root) + "brx" + std::to_string(GetCurrentProcessId()) + "_" + std::to_string(count++);
    while (!fs::create_directory(path));
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    const fs::path all = "\\\\?\\" + path; // however long the paths in it are
    for (const auto &entry : fs::recursive_directory_iterator(all, ignored))
        SetFileAttributesW(entry.path().c_str(), FILE_ATTRIBUTE_NORMAL);
    fs::remove_all(all, ignored);
}

std::vector<std::string> TemporaryFolder::Names() const {
    std::vector<std::string> names;
    for (const auto &entry : fs::directory_iterator(path))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

void WriteWholeFile(const std::string &path, const std::string &content) {
    std::ofstream file(path, std::ios::binary);
    file << content;
    if (!file.flush())
        throw std::runtime_error("cannot write " + path);
}

std::string ReadWholeFile(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return "<missing>";
    return std::string(std::istreambuf_iterator<char>(file), {});
}

bool Exists(const std::string &path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

void MakeFolder(const std::string &path) {
    fs::create_directories(path);
}

ExclusiveOpening::ExclusiveOpening(const std::string &path)
    : handle(CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr)) {
    if (handle == INVALID_HANDLE_VALUE)
        throw std::runtime_error("cannot open " + path);
}

ExclusiveOpening::~ExclusiveOpening() {
    CloseHandle(handle);
}
