#include "host/metadata/ExifTree.h"

#include "host/base/SystemText.h"
#include "host/metadata/TiffDirectory.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace host {

constexpr char kExifName[] = "Exif\0"; // two zeros end it
constexpr size_t kExifNameSize = 6;
constexpr uint16_t kExifDirectory = 34665, kPlaceDirectory = 34853, kInteroperability = 40965;
constexpr uint16_t kOrientation = 274, kIptc = 33723;
constexpr uint16_t kUndefined = 7;           // type
constexpr size_t kMostValueBytes = 1u << 20; // of one tag; longer ones are no EXIF
constexpr uint64_t kMostAdded = 64u << 20;   // of directories, in bytes
constexpr size_t kHeaderSize = 8, kCountSize = 2, kEntrySize = 12, kNextSize = 4;

// Tags of the first directory that say something of the picture, not of its samples.
static constexpr uint16_t kPictureTags[] = {270,   271,   272,   282,   283,   296,   305,   306,   315,  316,
                                            18246, 18249, 33432, 40091, 40092, 40093, 40094, 40095, 50341};

static size_t UnitSize(uint16_t type) {
    static constexpr size_t kSizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8};
    return type < std::size(kSizes) ? kSizes[type] : 0;
}

// Rationals are two numbers of half their size.
static size_t SwapSize(uint16_t type) {
    return type == 5 || type == 10 ? 4 : UnitSize(type);
}

static Bytes ToLittle(const uint8_t *from, size_t length, uint16_t type, ByteOrder order) {
    Bytes value(from, from + length);
    const size_t size = SwapSize(type);
    if (order == ByteOrder::kBig)
        for (size_t at = 0; at + size <= length; at += size)
            std::reverse(value.begin() + static_cast<ptrdiff_t>(at),
                         value.begin() + static_cast<ptrdiff_t>(at + size));
    return value;
}

static std::vector<ExifEntry> TakeEntries(const TiffDirectory &directory, bool isPicture) {
    std::vector<ExifEntry> entries;
    for (const TiffEntry &entry : directory.entries) {
        const size_t unit = UnitSize(entry.type);
        const bool isWanted = !isPicture || std::find(std::begin(kPictureTags), std::end(kPictureTags),
                                                      entry.tag) != std::end(kPictureTags);
        // What an interoperability directory says is of no use to anybody any more.
        if (!isWanted || unit == 0 || entry.tag == kInteroperability || entry.count > kMostValueBytes / unit)
            continue;
        const size_t length = static_cast<size_t>(entry.count) * unit;
        if (entry.at > directory.length || length > directory.length - entry.at)
            continue;
        entries.push_back({entry.tag, entry.type, static_cast<uint32_t>(entry.count),
                           ToLittle(directory.bytes + entry.at, length, entry.type, directory.order)});
    }
    return entries;
}

// Whatever type it claims, it is bytes.
static Bytes TakeIptc(const TiffDirectory &directory) {
    for (const TiffEntry &entry : directory.entries) {
        const size_t unit = UnitSize(entry.type);
        if (entry.tag != kIptc || unit == 0 || entry.at > directory.length ||
            entry.count > (directory.length - entry.at) / unit)
            continue;
        const uint8_t *first = directory.bytes + entry.at;
        return {first, first + static_cast<size_t>(entry.count) * unit};
    }
    return {};
}

static std::vector<ExifEntry> TakeBehind(const TiffDirectory &parent, uint16_t tag) {
    const std::vector<uint32_t> at = TiffNumbers(parent, tag);
    TiffDirectory directory;
    if (at.empty() || !ReadTiffDirectoryAt(parent, at[0], &directory))
        return {};
    return TakeEntries(directory, false);
}

ExifTree ReadExifTree(const Bytes &bytes) {
    const bool isNamed =
        bytes.size() >= kExifNameSize && std::memcmp(bytes.data(), kExifName, kExifNameSize) == 0;
    const size_t skipped = isNamed ? kExifNameSize : 0;
    TiffDirectory directory;
    if (!ReadTiffDirectory(bytes.data() + skipped, bytes.size() - skipped, &directory))
        return {};
    return {TakeEntries(directory, true), TakeBehind(directory, kExifDirectory),
            TakeBehind(directory, kPlaceDirectory), TakeIptc(directory)};
}

// --- Writing. Directories lie behind the bytes that are there already, which are `base` long.

static void PutEntry(const ExifEntry &entry, uint32_t base, Bytes *directory, Bytes *values) {
    AppendNumber(*directory, entry.tag);
    AppendNumber(*directory, entry.type);
    AppendNumber(*directory, entry.count);
    if (entry.isPlaced || entry.value.size() <= 4) {
        Bytes inPlace = entry.value;
        inPlace.resize(4);
        AppendBytes(*directory, inPlace.data(), 4);
        return;
    }
    AppendNumber(*directory, static_cast<uint32_t>(base + values->size()));
    AppendBytes(*values, entry.value.data(), entry.value.size());
    if (values->size() % 2 != 0)
        values->push_back(0);
}

// A directory at file position `at`, its values right behind it.
static Bytes MakeDirectory(std::vector<ExifEntry> entries, uint32_t at, uint32_t next) {
    std::stable_sort(entries.begin(), entries.end(),
                     [](const ExifEntry &a, const ExifEntry &b) { return a.tag < b.tag; });
    const size_t length = kCountSize + entries.size() * kEntrySize + kNextSize;
    Bytes directory, values;
    AppendNumber(directory, static_cast<uint16_t>(entries.size()));
    for (const ExifEntry &entry : entries)
        PutEntry(entry, static_cast<uint32_t>(at + length), &directory, &values);
    AppendNumber(directory, next);
    AppendBytes(directory, values.data(), values.size());
    return directory;
}

static ExifEntry OffsetEntry(uint16_t tag, uint32_t offset) {
    ExifEntry entry = {tag, kTiffLong, 1, {}};
    AppendNumber(entry.value, offset);
    return entry;
}

// Appends the tree's directories for a file of `base` bytes, the first one last, with `others` in it. Returns
// where that one begins.
static uint32_t AppendTree(const ExifTree &tree, std::vector<ExifEntry> others, uint32_t next, uint32_t base,
                           Bytes *bytes) {
    const auto end = [&] { return static_cast<uint32_t>(base + bytes->size()); };
    const auto appendSub = [&](uint16_t tag, const std::vector<ExifEntry> &entries) {
        if (entries.empty())
            return;
        const uint32_t at = end();
        const Bytes directory = MakeDirectory(entries, at, 0);
        AppendBytes(*bytes, directory.data(), directory.size());
        others.push_back(OffsetEntry(tag, at));
    };
    appendSub(kExifDirectory, tree.exif);
    appendSub(kPlaceDirectory, tree.place);
    for (const ExifEntry &entry : tree.picture)
        if (std::none_of(others.begin(), others.end(),
                         [&](const ExifEntry &other) { return other.tag == entry.tag; }))
            others.push_back(entry);
    const uint32_t at = end();
    const Bytes first = MakeDirectory(std::move(others), at, next);
    AppendBytes(*bytes, first.data(), first.size());
    return at;
}

Bytes MakeExifBlock(const ExifTree &tree) {
    if (tree.picture.empty() && tree.exif.empty() && tree.place.empty())
        return {};
    ExifEntry upright = {kOrientation, kTiffShort, 1, {1, 0}};
    Bytes body;
    const uint32_t first = AppendTree(tree, {upright}, 0, kHeaderSize, &body);
    Bytes block(kExifName, kExifName + kExifNameSize);
    AppendBytes(block, "II*\0", 4);
    AppendNumber(block, first);
    AppendBytes(block, body.data(), body.size());
    return block;
}

// The first directory's entries as they stand, values elsewhere by their offsets. Empty when they cannot be
// read.
static std::vector<ExifEntry> ReadOwnEntries(std::fstream &file, uint32_t at) {
    std::vector<ExifEntry> entries;
    uint8_t raw[kEntrySize] = {};
    file.seekg(at);
    file.read(reinterpret_cast<char *>(raw), kCountSize);
    const uint16_t count = file ? NumberAt<uint16_t>(raw) : 0;
    for (uint16_t i = 0; i < count && file.read(reinterpret_cast<char *>(raw), kEntrySize); i++) {
        ExifEntry entry = {
            NumberAt<uint16_t>(raw), NumberAt<uint16_t>(raw + 2), NumberAt<uint32_t>(raw + 4), {}};
        entry.value.assign(raw + 8, raw + 12);
        entry.isPlaced = true;
        entries.push_back(std::move(entry));
    }
    return file ? entries : std::vector<ExifEntry>();
}

static bool AddToOpenTiff(std::fstream &file, const ExifTree &tree) {
    uint8_t header[kHeaderSize] = {};
    file.read(reinterpret_cast<char *>(header), kHeaderSize);
    if (!file || std::memcmp(header, "II*\0", 4) != 0)
        return false;
    std::vector<ExifEntry> own = ReadOwnEntries(file, NumberAt<uint32_t>(header + 4));
    file.seekg(0, std::ios::end);
    const auto end = static_cast<uint64_t>(file.tellg());
    const uint64_t base = (end + 1) / 2 * 2;
    if (own.empty() || base > UINT32_MAX - kMostAdded)
        return false;
    if (!tree.iptc.empty())
        own.push_back({kIptc, kUndefined, static_cast<uint32_t>(tree.iptc.size()), tree.iptc});
    Bytes added(static_cast<size_t>(base - end)), first;
    Bytes tail;
    AppendNumber(first, AppendTree(tree, std::move(own), 0, static_cast<uint32_t>(base), &tail));
    if (tail.size() > kMostAdded)
        return false;
    AppendBytes(added, tail.data(), tail.size());
    file.seekp(static_cast<std::streamoff>(end));
    file.write(reinterpret_cast<const char *>(added.data()), static_cast<std::streamsize>(added.size()));
    file.flush(); // the header points to the new directory only when that is there
    file.seekp(4);
    file.write(reinterpret_cast<const char *>(first.data()), static_cast<std::streamsize>(first.size()));
    file.flush();
    return file.good();
}

bool AddExifToTiff(const std::wstring &path, const ExifTree &tree, std::string *why) {
    if (tree.IsEmpty())
        return true;
    std::fstream file(std::filesystem::path(path), std::ios::in | std::ios::out | std::ios::binary);
    return (file && AddToOpenTiff(file, tree)) || Fail(why, "the EXIF data cannot be added");
}

} // namespace host
