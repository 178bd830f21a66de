#include "host/module/PiPL.h"

#include "host/base/ByteStream.h"
#include "host/base/SystemText.h"

#include <algorithm>

namespace host {

constexpr uint32_t kVendor = '8BIM';
constexpr uint32_t kFilterKind = '8BFM';
constexpr uint32_t kNewestInterface = 0x00040000;
constexpr uint32_t kMostProperties = 1000;

static const PiplProperty *FindProperty(const Pipl &pipl, uint32_t key) {
    const auto found =
        std::find_if(pipl.properties.begin(), pipl.properties.end(), [key](const PiplProperty &property) {
            return property.vendor == kVendor && property.key == key;
        });
    return found == pipl.properties.end() ? nullptr : &*found;
}

static bool ReadProperties(ByteReader &reader, Pipl *pipl, std::string *why) {
    if (reader.Take<uint16_t>() != 1)
        return Fail(why, "the property list does not start with its lead word");
    if (reader.Take<int32_t>() != 0)
        return Fail(why, "the property list has an unknown version");
    const uint32_t count = reader.Take<uint32_t>();
    if (reader.failed || count > kMostProperties)
        return Fail(why, "the property list has no sensible count");
    for (uint32_t i = 0; i < count; i++) {
        PiplProperty property;
        property.vendor = reader.Take<uint32_t>();
        property.key = reader.Take<uint32_t>();
        property.id = reader.Take<int32_t>();
        const uint32_t length = reader.Take<uint32_t>();
        if (length % 4 != 0)
            return Fail(why, "a property's length is not a multiple of 4");
        property.data = reader.TakeBytes(length);
        if (reader.failed)
            return Fail(why, "the property list ends early");
        pipl->properties.push_back(std::move(property));
    }
    return true;
}

// Zero-ended text; empty when the end is missing.
static std::string TakeText(const Bytes &data) {
    const auto end = std::find(data.begin(), data.end(), uint8_t{0});
    return end == data.end() ? std::string() : std::string(data.begin(), end);
}

// Length byte and characters, with at least one zero behind them.
static std::string TakePascalText(const PiplProperty *property) {
    if (!property)
        return {};
    ByteReader reader = {property->data.data(), property->data.size()};
    const std::string text = reader.TakePascal();
    return reader.Left() > 0 && reader.Take<uint8_t>() == 0 ? text : std::string();
}

static uint32_t TakeWord(const Pipl &pipl, uint32_t key) {
    const PiplProperty *property = FindProperty(pipl, key);
    return property && property->data.size() >= 4 ? NumberAt<uint32_t>(property->data.data()) : 0;
}

static void TakeCases(Pipl *pipl) {
    const PiplProperty *cases = FindProperty(*pipl, 'fici');
    if (!cases || cases->data.size() < sizeof(pipl->filterCases))
        return;
    std::memcpy(pipl->filterCases, cases->data.data(), sizeof(pipl->filterCases));
    pipl->hasFilterCases = true;
}

static void TakeImageLimits(Pipl *pipl) {
    const PiplProperty *modes = FindProperty(*pipl, 'mode');
    if (modes && modes->data.size() >= 4)
        pipl->modes = NumberAt<uint32_t>(modes->data.data(), ByteOrder::kBig);
    if (const PiplProperty *enable = FindProperty(*pipl, 'enbl'))
        pipl->enableInfo = TakeText(enable->data);
    const PiplProperty *size = FindProperty(*pipl, 'ms32');
    if (size && size->data.size() >= 8) {
        pipl->mostRows = NumberAt<int32_t>(size->data.data());
        pipl->mostColumns = NumberAt<int32_t>(size->data.data() + 4);
    }
}

static bool CheckList(const Pipl &pipl, std::string *why) {
    if (pipl.kind != kFilterKind)
        return Fail(why, "it is not a filter plug-in");
    if (pipl.entryName64.empty())
        return Fail(why, "it has no 64-bit entry point");
    if (pipl.name.empty() || pipl.category.empty())
        return Fail(why, "its property list lacks a name or a category");
    if (pipl.version > kNewestInterface)
        return Fail(why, "it asks for a newer filter interface than 4.0");
    return true;
}

bool ParsePipl(const uint8_t *bytes, size_t length, Pipl *pipl, std::string *why) {
    ByteReader reader = {bytes, length};
    Pipl parsed;
    if (!ReadProperties(reader, &parsed, why))
        return false;
    parsed.kind = TakeWord(parsed, 'kind');
    parsed.version = TakeWord(parsed, 'vers');
    parsed.name = TakePascalText(FindProperty(parsed, 'name'));
    parsed.category = TakePascalText(FindProperty(parsed, 'catg'));
    if (const PiplProperty *entry = FindProperty(parsed, '8664'))
        parsed.entryName64 = TakeText(entry->data);
    TakeCases(&parsed);
    TakeImageLimits(&parsed);
    if (!CheckList(parsed, why))
        return false;
    *pipl = std::move(parsed);
    return true;
}

} // namespace host
