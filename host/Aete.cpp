#include "host/Aete.h"

#include "host/ByteStream.h"

#include <algorithm>

namespace host {

static bool Fail(std::string *why, const char *reason) {
    *why = reason;
    return false;
}

static bool ReadSuite(ByteReader &reader, Aete *aete, std::string *why) {
    if (reader.Take<uint16_t>() != 1 || reader.Take<uint8_t>() != 1 || reader.Take<uint8_t>() != 0)
        return Fail(why, "the terminology is not of version 1.0");
    reader.Take<uint32_t>(); // language and script
    if (reader.Take<uint16_t>() != 1)
        return Fail(why, "the terminology has not exactly one suite");
    aete->suiteName = reader.TakePascal();
    aete->suiteDescription = reader.TakePascal();
    aete->suiteId = reader.Take<uint32_t>();
    aete->suiteLevel = reader.Take<uint16_t>();
    aete->suiteVersion = reader.Take<uint16_t>();
    if (aete->suiteLevel != 1 || aete->suiteVersion != 1)
        return Fail(why, "the terminology's suite is not of level 1, version 1");
    return true;
}

static bool ReadEvent(ByteReader &reader, Aete *aete, std::string *why) {
    if (reader.Take<uint16_t>() != 1)
        return Fail(why, "the terminology has not exactly one event");
    aete->eventName = reader.TakePascal();
    aete->eventDescription = reader.TakePascal();
    aete->eventClass = reader.Take<uint32_t>();
    aete->eventId = reader.Take<uint32_t>();
    aete->replyType = reader.Take<uint32_t>();
    aete->replyDescription = reader.TakePascal();
    aete->replyFlags = reader.Take<uint16_t>();
    aete->directType = reader.Take<uint32_t>();
    aete->directDescription = reader.TakePascal();
    aete->directFlags = reader.Take<uint16_t>();
    return !reader.failed || Fail(why, "the terminology ends early");
}

static void ReadParameters(ByteReader &reader, Aete *aete) {
    const uint16_t count = reader.Take<uint16_t>();
    for (uint16_t i = 0; i < count && !reader.failed; i++) {
        AeteParameter parameter;
        parameter.name = reader.TakePascal();
        parameter.key = reader.Take<uint32_t>();
        parameter.type = reader.Take<uint32_t>();
        parameter.description = reader.TakePascal();
        parameter.flags = reader.Take<uint16_t>();
        aete->parameters.push_back(std::move(parameter));
    }
}

static AeteEnumeration ReadEnumeration(ByteReader &reader) {
    AeteEnumeration enumeration = {reader.Take<uint32_t>(), {}};
    const uint16_t count = reader.Take<uint16_t>();
    for (uint16_t i = 0; i < count && !reader.failed; i++) {
        AeteValue value;
        value.name = reader.TakePascal();
        value.code = reader.Take<uint32_t>();
        value.description = reader.TakePascal();
        enumeration.values.push_back(std::move(value));
    }
    return enumeration;
}

bool ParseAete(const uint8_t *bytes, size_t length, Aete *aete, std::string *why) {
    ByteReader reader = {bytes, length};
    Aete parsed;
    if (!ReadSuite(reader, &parsed, why) || !ReadEvent(reader, &parsed, why))
        return false;
    ReadParameters(reader, &parsed);
    parsed.classCount = reader.Take<uint16_t>();
    parsed.comparisonCount = reader.Take<uint16_t>();
    if (!reader.failed && (parsed.classCount != 0 || parsed.comparisonCount != 0))
        return Fail(why, "the terminology has classes or comparisons");
    const uint16_t enumerations = reader.Take<uint16_t>();
    for (uint16_t i = 0; i < enumerations && !reader.failed; i++)
        parsed.enumerations.push_back(ReadEnumeration(reader));
    if (reader.failed)
        return Fail(why, "the terminology ends early");
    if (std::any_of(bytes + reader.at, bytes + length, [](uint8_t byte) { return byte != 0; }))
        return Fail(why, "the terminology goes on behind its enumerations");
    *aete = std::move(parsed);
    return true;
}

} // namespace host
