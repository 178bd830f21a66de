#include "host/metadata/TiffDirectory.h"

#include <algorithm>

namespace host {

// Sizes in bytes of what the two forms of the format have in common.
struct TiffForm {
    size_t header, count, entry,
        number; // of the file's head, of a directory's count, of an entry, of offsets
};
static constexpr TiffForm kClassic = {8, 2, 12, 4}, kBig = {16, 8, 20, 8};

static uint64_t NumberOf(const TiffDirectory &directory, size_t at, size_t size) {
    const uint8_t *bytes = directory.bytes + at;
    if (size == 2)
        return NumberAt<uint16_t>(bytes, directory.order);
    return size == 4 ? NumberAt<uint32_t>(bytes, directory.order)
                     : NumberAt<uint64_t>(bytes, directory.order);
}

static size_t NumberSize(uint16_t type) {
    static constexpr size_t kSizes[] = {0, 0, 0, 2, 4, 0, 0, 0, 0, 0, 0, 0, 0, 4, 0, 0, 8, 0, 8};
    return type < std::size(kSizes) ? kSizes[type] : 0;
}

// Of one value of the type; 0 for an unknown one.
static size_t UnitSize(uint16_t type) {
    static constexpr size_t kSizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0, 0, 8, 8, 8};
    return type < std::size(kSizes) ? kSizes[type] : 0;
}

static void TakeEntry(const TiffForm &form, size_t at, TiffDirectory *directory) {
    TiffEntry entry = {};
    entry.tag = static_cast<uint16_t>(NumberOf(*directory, at, 2));
    entry.type = static_cast<uint16_t>(NumberOf(*directory, at + 2, 2));
    entry.count = NumberOf(*directory, at + 4, form.number);
    const size_t value = at + 4 + form.number;
    const bool isInPlace = entry.count <= form.number / std::max<size_t>(UnitSize(entry.type), 1);
    entry.at = isInPlace ? value : NumberOf(*directory, value, form.number);
    directory->entries.push_back(entry);
}

bool IsTiff(const uint8_t *bytes, size_t length) {
    if (length < kClassic.header)
        return false;
    const auto starts = [bytes](uint32_t mark) { return NumberAt<uint32_t>(bytes, ByteOrder::kBig) == mark; };
    const bool isClassic = starts(0x49492A00) || starts(0x4D4D002A); // "II*", "MM" and "*"
    return isClassic || starts(0x49492B00) || starts(0x4D4D002B);
}

bool ReadTiffDirectory(const uint8_t *bytes, size_t length, TiffDirectory *directory) {
    if (!IsTiff(bytes, length))
        return false;
    const bool isBig = bytes[2] == '+' || bytes[3] == '+';
    const TiffForm &form = isBig ? kBig : kClassic;
    TiffDirectory read = {bytes, length, bytes[0] == 'I' ? ByteOrder::kLittle : ByteOrder::kBig, isBig, {}};
    if (length < form.header)
        return false;
    return ReadTiffDirectoryAt(read, NumberOf(read, form.header - form.number, form.number), directory);
}

bool ReadTiffDirectoryAt(const TiffDirectory &file, uint64_t at, TiffDirectory *directory) {
    const TiffForm &form = file.isBig ? kBig : kClassic;
    TiffDirectory read = {file.bytes, file.length, file.order, file.isBig, {}};
    if (at > read.length || read.length - at < form.count)
        return false;
    const uint64_t count = NumberOf(read, static_cast<size_t>(at), form.count);
    if (count > (read.length - at - form.count) / form.entry)
        return false;
    for (size_t i = 0; i < count; i++)
        TakeEntry(form, static_cast<size_t>(at) + form.count + i * form.entry, &read);
    *directory = std::move(read);
    return true;
}

static const TiffEntry *FindEntry(const TiffDirectory &directory, uint16_t tag) {
    const auto found = std::find_if(directory.entries.begin(), directory.entries.end(),
                                    [tag](const TiffEntry &entry) { return entry.tag == tag; });
    return found == directory.entries.end() ? nullptr : &*found;
}

uint64_t TiffPlace(const TiffDirectory &directory, uint16_t tag) {
    const TiffEntry *entry = FindEntry(directory, tag);
    return entry ? entry->at : 0;
}

bool HasTiffTag(const TiffDirectory &directory, uint16_t tag) {
    return FindEntry(directory, tag) != nullptr;
}

std::vector<uint64_t> TiffNumbers(const TiffDirectory &directory, uint16_t tag) {
    std::vector<uint64_t> numbers;
    const TiffEntry *entry = FindEntry(directory, tag);
    const size_t size = entry ? NumberSize(entry->type) : 0;
    if (size == 0 || entry->at > directory.length || entry->count > (directory.length - entry->at) / size)
        return numbers;
    for (size_t i = 0; i < entry->count; i++)
        numbers.push_back(NumberOf(directory, static_cast<size_t>(entry->at) + i * size, size));
    return numbers;
}

uint32_t TiffNumber(const TiffDirectory &directory, uint16_t tag, uint32_t whenAbsent) {
    const std::vector<uint64_t> numbers = TiffNumbers(directory, tag);
    return numbers.empty() ? whenAbsent : static_cast<uint32_t>(numbers[0]);
}

} // namespace host
