// A folder of its own for each test, removed with all it holds, and whole files in one call.
#pragma once

#include <string>
#include <vector>

class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    const std::string &Path() const { return path; }
    std::string operator/(const std::string &name) const { return path + "\\" + name; }
    // Names of files and folders directly inside, sorted.
    std::vector<std::string> Names() const;

private:
    std::string path;
};

void WriteWholeFile(const std::string &path, const std::string &content);
// "<missing>" when it cannot be opened.
std::string ReadWholeFile(const std::string &path);
bool Exists(const std::string &path);
void MakeFolder(const std::string &path);

// Keeps a file open as another program would, sharing nothing.
class ExclusiveOpening {
public:
    explicit ExclusiveOpening(const std::string &path);
    ~ExclusiveOpening();
    ExclusiveOpening(const ExclusiveOpening &) = delete;
    ExclusiveOpening &operator=(const ExclusiveOpening &) = delete;

private:
    void *handle;
};
