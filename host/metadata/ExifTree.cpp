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
constexpr uint16_t kUndefined = 7, kLongOffset = 18; // types
constexpr size_t kMostValueBytes = 1u << 20;         // of one tag; longer ones are no EXIF
constexpr uint64_t kMostAdded = 64u << 20;           // of directories, in bytes

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
    size_t left = directory.length; // thousands of entries may claim the same bytes
    for (const TiffEntry &entry : directory.entries) {
        const size_t unit = UnitSize(entry.type);
        const bool isWanted = !isPicture || std::find(std::begin(kPictureTags), std::end(kPictureTags),
                                                      entry.tag) != std::end(kPictureTags);
        // What an interoperability directory says is of no use to anybody any more.
        if (!isWanted || unit == 0 || entry.tag == kInteroperability || entry.count > kMostValueBytes / unit)
            continue;
        const size_t length = static_cast<size_t>(entry.count) * unit;
        if (entry.at > directory.length || length > std::min(left, directory.length - entry.at))
            continue;
        left -= length;
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
    const std::vector<uint64_t> at = TiffNumbers(parent, tag);
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

// What the two forms of the format differ in: bytes of the file's head, of a directory's count, of an entry,
// and of an offset, which is also how long a value in its place may be.
struct DirectoryForm {
    size_t header, count, entry, offset;
};
static constexpr DirectoryForm kClassic = {8, 2, 12, 4}, kBig = {16, 8, 20, 8};

static void PutNumber(uint64_t number, size_t size, Bytes *bytes) {
    for (size_t i = 0; i < size; i++)
        bytes->push_back(static_cast<uint8_t>(number >> (8 * i)));
}

static void PutEntry(const DirectoryForm &form, const ExifEntry &entry, uint64_t base, Bytes *directory,
                     Bytes *values) {
    AppendNumber(*directory, entry.tag);
    AppendNumber(*directory, entry.type);
    PutNumber(entry.isPlaced ? entry.placedCount : entry.count, form.offset, directory);
    if (entry.isPlaced || entry.value.size() <= form.offset) {
        Bytes inPlace = entry.value;
        inPlace.resize(form.offset);
        AppendBytes(*directory, inPlace.data(), inPlace.size());
        return;
    }
    PutNumber(base + values->size(), form.offset, directory);
    AppendBytes(*values, entry.value.data(), entry.value.size());
    values->resize((values->size() + form.offset - 1) / form.offset * form.offset);
}

// A directory at file position `at`, its values right behind it. It is the last of its chain.
static Bytes MakeDirectory(const DirectoryForm &form, std::vector<ExifEntry> entries, uint64_t at) {
    std::stable_sort(entries.begin(), entries.end(),
                     [](const ExifEntry &a, const ExifEntry &b) { return a.tag < b.tag; });
    const size_t length = form.count + entries.size() * form.entry + form.offset;
    Bytes directory, values;
    PutNumber(entries.size(), form.count, &directory);
    for (const ExifEntry &entry : entries)
        PutEntry(form, entry, at + length, &directory, &values);
    PutNumber(0, form.offset, &directory);
    AppendBytes(directory, values.data(), values.size());
    return directory;
}

static ExifEntry OffsetEntry(const DirectoryForm &form, uint16_t tag, uint64_t offset) {
    ExifEntry entry = {tag, form.offset == 8 ? kLongOffset : kTiffLong, 1, {}};
    PutNumber(offset, form.offset, &entry.value);
    return entry;
}

// Appends the tree's directories for a file of `base` bytes, the first one last, with `others` in it. Returns
// where that one begins.
static uint64_t AppendTree(const DirectoryForm &form, const ExifTree &tree, std::vector<ExifEntry> others,
                           uint64_t base, Bytes *bytes) {
    const auto end = [&] {
        bytes->resize((bytes->size() + form.offset - 1) / form.offset * form.offset);
        return base + bytes->size();
    };
    const auto appendSub = [&](uint16_t tag, const std::vector<ExifEntry> &entries) {
        if (entries.empty())
            return;
        const uint64_t at = end();
        const Bytes directory = MakeDirectory(form, entries, at);
        AppendBytes(*bytes, directory.data(), directory.size());
        others.push_back(OffsetEntry(form, tag, at));
    };
    appendSub(kExifDirectory, tree.exif);
    appendSub(kPlaceDirectory, tree.place);
    for (const ExifEntry &entry : tree.picture)
        if (std::none_of(others.begin(), others.end(),
                         [&](const ExifEntry &other) { return other.tag == entry.tag; }))
            others.push_back(entry);
    const uint64_t at = end();
    const Bytes first = MakeDirectory(form, std::move(others), at);
    AppendBytes(*bytes, first.data(), first.size());
    return at;
}

Bytes MakeExifBlock(const ExifTree &tree) {
    if (tree.picture.empty() && tree.exif.empty() && tree.place.empty())
        return {};
    ExifEntry upright = {kOrientation, kTiffShort, 1, {1, 0}};
    Bytes body;
    const uint64_t first = AppendTree(kClassic, tree, {upright}, kClassic.header, &body);
    Bytes block(kExifName, kExifName + kExifNameSize);
    AppendBytes(block, "II*\0", 4);
    AppendNumber(block, static_cast<uint32_t>(first));
    AppendBytes(block, body.data(), body.size());
    return block;
}

static uint64_t NumberOf(const uint8_t *at, size_t size) {
    return size == 2 ? NumberAt<uint16_t>(at) : size == 4 ? NumberAt<uint32_t>(at) : NumberAt<uint64_t>(at);
}

// The first directory's entries as they stand, values elsewhere by their offsets. Empty when they cannot be
// read.
static std::vector<ExifEntry> ReadOwnEntries(const DirectoryForm &form, std::fstream &file, uint64_t at) {
    constexpr uint64_t kMostEntries = 65535;
    std::vector<ExifEntry> entries;
    uint8_t raw[kBig.entry] = {};
    file.seekg(static_cast<std::streamoff>(at));
    file.read(reinterpret_cast<char *>(raw), static_cast<std::streamsize>(form.count));
    const uint64_t count = file ? NumberOf(raw, form.count) : 0;
    for (uint64_t i = 0; i < std::min(count, kMostEntries) &&
                         file.read(reinterpret_cast<char *>(raw), static_cast<std::streamsize>(form.entry));
         i++) {
        ExifEntry entry = {NumberAt<uint16_t>(raw), NumberAt<uint16_t>(raw + 2), 0, {}};
        entry.isPlaced = true;
        entry.placedCount = NumberOf(raw + 4, form.offset);
        entry.value.assign(raw + 4 + form.offset, raw + form.entry);
        entries.push_back(std::move(entry));
    }
    return file ? entries : std::vector<ExifEntry>();
}

static bool AddToOpenTiff(std::fstream &file, const ExifTree &tree) {
    uint8_t header[kBig.header] = {};
    file.read(reinterpret_cast<char *>(header), sizeof(header));
    const bool isBig = std::memcmp(header, "II+\0", 4) == 0;
    if (!file || (!isBig && std::memcmp(header, "II*\0", 4) != 0))
        return false;
    const DirectoryForm &form = isBig ? kBig : kClassic;
    const size_t place = form.header - form.offset; // of the first directory's offset
    std::vector<ExifEntry> own = ReadOwnEntries(form, file, NumberOf(header + place, form.offset));
    file.seekg(0, std::ios::end);
    const auto end = static_cast<uint64_t>(file.tellg());
    const uint64_t base = (end + form.offset - 1) / form.offset * form.offset;
    if (own.empty() || (!isBig && base > UINT32_MAX - kMostAdded))
        return false;
    if (!tree.iptc.empty())
        own.push_back({kIptc, kUndefined, static_cast<uint32_t>(tree.iptc.size()), tree.iptc});
    Bytes added(static_cast<size_t>(base - end)), first, tail;
    PutNumber(AppendTree(form, tree, std::move(own), base, &tail), form.offset, &first);
    if (tail.size() > kMostAdded)
        return false;
    AppendBytes(added, tail.data(), tail.size());
    file.seekp(static_cast<std::streamoff>(end));
    file.write(reinterpret_cast<const char *>(added.data()), static_cast<std::streamsize>(added.size()));
    file.flush(); // the header points to the new directory only when that is there
    file.seekp(static_cast<std::streamoff>(place));
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
