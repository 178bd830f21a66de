// PPM, PGM and PAM (binary, 8 and 16 bit) and PFM (32-bit float). Samples of another maximum than 255 or
// 65535 are scaled to the full range of 8 or 16 bits.
#include "host/pictures/NetpbmFiles.h"

#include "host/base/SystemText.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace host {

constexpr int32_t kRowsAtOnce = 64;

// The next word of a header; comments run from # to the end of the line. Empty at the end of the file.
static std::string TakeWord(ByteReader &reader) {
    std::string word;
    bool inComment = false;
    while (reader.Left() > 0) {
        const char next = static_cast<char>(reader.Take<uint8_t>());
        if (inComment)
            inComment = next != '\n' && next != '\r';
        else if (next == '#' && word.empty())
            inComment = true;
        else if (!std::isspace(static_cast<unsigned char>(next)))
            word += next;
        else if (!word.empty())
            return word; // the one white space behind it is taken
        if (word.size() > 32)
            return {};
    }
    return {};
}

static bool TakeNumber(ByteReader &reader, uint64_t *number) {
    const std::string word = TakeWord(reader);
    if (word.empty() || word.size() > 12 ||
        !std::all_of(word.begin(), word.end(), [](char c) { return c >= '0' && c <= '9'; }))
        return false;
    *number = std::strtoull(word.c_str(), nullptr, 10);
    return true;
}

// Magic, width and height; leaves the reader behind them.
static bool TakeSize(ByteReader &reader, uint64_t *width, uint64_t *height, std::string *why) {
    TakeWord(reader);
    if (!TakeNumber(reader, width) || !TakeNumber(reader, height))
        return Fail(why, "its header has no sensible size");
    return CheckPictureSize(*width, *height, why);
}

static uint32_t ScaleSample(uint32_t sample, uint32_t maximum, uint32_t full) {
    return (std::min(sample, maximum) * full + maximum / 2) / maximum;
}

static void TakeSamples(const uint8_t *from, uint32_t maximum, Picture *picture) {
    const size_t channels = picture->planes.size();
    const size_t count = static_cast<size_t>(picture->width) * static_cast<size_t>(picture->height);
    for (size_t channel = 0; channel < channels; channel++) {
        uint8_t *plane = picture->planes[channel].data();
        for (size_t i = 0; i < count; i++) {
            if (picture->depth == 8) {
                plane[i] = static_cast<uint8_t>(ScaleSample(from[i * channels + channel], maximum, 255));
                continue;
            }
            const uint8_t *big = from + (i * channels + channel) * 2;
            const uint16_t sample =
                static_cast<uint16_t>(ScaleSample(NumberAt<uint16_t>(big, ByteOrder::kBig), maximum, 65535));
            std::memcpy(plane + i * 2, &sample, sizeof(sample));
        }
    }
}

struct IntegerHeader {
    uint64_t width, height, channels, maximum;
};

// Samples behind a header whose size has been checked.
static bool ReadIntegers(const ByteReader &reader, const IntegerHeader &header, Picture *picture,
                         std::string *why) {
    if (header.maximum == 0 || header.maximum > 65535)
        return Fail(why, "its header has no sensible largest value");
    const int32_t depth = header.maximum > 255 ? 16 : 8;
    if (reader.Left() < header.width * header.height * header.channels * static_cast<uint64_t>(depth / 8))
        return Fail(why, "the file ends early");
    const bool hasAlpha = header.channels == 2 || header.channels == 4;
    Picture read = MakePicture(static_cast<int32_t>(header.width), static_cast<int32_t>(header.height), depth,
                               header.channels >= 3 ? 3 : 1, hasAlpha);
    TakeSamples(reader.bytes + reader.at, static_cast<uint32_t>(header.maximum), &read);
    *picture = std::move(read);
    return true;
}

static bool ReadPlain(ByteReader &reader, uint64_t channels, Picture *picture, std::string *why) {
    IntegerHeader header = {0, 0, channels, 0};
    if (!TakeSize(reader, &header.width, &header.height, why))
        return false;
    if (!TakeNumber(reader, &header.maximum))
        header.maximum = 0;
    return ReadIntegers(reader, header, picture, why);
}

// A PAM's header: names with numbers, in any order; other names (P7 itself, TUPLTYPE) have words.
static bool ReadPam(ByteReader &reader, Picture *picture, std::string *why) {
    IntegerHeader header = {};
    for (std::string name = TakeWord(reader); name != "ENDHDR"; name = TakeWord(reader)) {
        uint64_t *number = name == "WIDTH"    ? &header.width
                           : name == "HEIGHT" ? &header.height
                           : name == "DEPTH"  ? &header.channels
                           : name == "MAXVAL" ? &header.maximum
                                              : nullptr;
        if (name.empty() || (number && !TakeNumber(reader, number)))
            return Fail(why, "its header is damaged");
    }
    if (header.channels == 0 || header.channels > 4)
        return Fail(why, "it has " + std::to_string(header.channels) + " channels; 1 to 4 can be read");
    return CheckPictureSize(header.width, header.height, why) && ReadIntegers(reader, header, picture, why);
}

// Rows go from the bottom up; a negative scale means little-endian. The scale's size says nothing about the
// samples.
static bool ReadFloats(ByteReader &reader, int32_t channels, Picture *picture, std::string *why) {
    uint64_t width, height;
    if (!TakeSize(reader, &width, &height, why))
        return false;
    const std::string word = TakeWord(reader);
    const double scale = std::strtod(word.c_str(), nullptr);
    if (!(scale < 0.0 || scale > 0.0))
        return Fail(why, "its header has no sensible scale");
    const ByteOrder order = scale < 0 ? ByteOrder::kLittle : ByteOrder::kBig;
    const size_t step = static_cast<size_t>(channels) * 4;
    if (reader.Left() < width * height * step)
        return Fail(why, "the file ends early");
    Picture read =
        MakePicture(static_cast<int32_t>(width), static_cast<int32_t>(height), 32, channels, false);
    const uint8_t *from = reader.bytes + reader.at;
    for (size_t y = height; y-- > 0;)
        for (size_t x = 0; x < width; x++)
            for (size_t channel = 0; channel < static_cast<size_t>(channels); channel++, from += 4) {
                const uint32_t sample = NumberAt<uint32_t>(from, order);
                std::memcpy(read.planes[channel].data() + (y * width + x) * 4, &sample, sizeof(sample));
            }
    *picture = std::move(read);
    return true;
}

bool ReadNetpbm(const Bytes &file, Picture *picture, std::string *why) {
    ByteReader reader = {file.data(), file.size()};
    const char kind = static_cast<char>(file[1]);
    if (kind == 'F' || kind == 'f')
        return ReadFloats(reader, kind == 'F' ? 3 : 1, picture, why);
    if (kind == '7')
        return ReadPam(reader, picture, why);
    return ReadPlain(reader, kind == '6' ? 3 : 1, picture, why);
}

// Rows [first, end) of the planes [0, planes), interleaved, in the given byte order.
static void InterleaveRows(const Picture &picture, size_t planes, int32_t first, int32_t end, ByteOrder order,
                           Bytes *rows) {
    const size_t size = static_cast<size_t>(picture.depth / 8);
    const size_t width = static_cast<size_t>(picture.width);
    size_t at = rows->size();
    rows->resize(at + static_cast<size_t>(end - first) * width * planes * size);
    for (size_t i = static_cast<size_t>(first) * width; i < static_cast<size_t>(end) * width; i++)
        for (size_t plane = 0; plane < planes; plane++) {
            const uint8_t *sample = picture.planes[plane].data() + i * size;
            for (size_t byte = 0; byte < size; byte++)
                (*rows)[at++] = sample[order == ByteOrder::kLittle ? byte : size - 1 - byte];
        }
}

static bool AppendText(const std::string &text, OutputFile *file, std::string *why) {
    return AppendOutput(file, text.data(), text.size(), why);
}

static std::string IntegerHeaderText(NetpbmForm form, const Picture &picture, size_t planes) {
    const std::string maximum = picture.depth == 16 ? "65535" : "255";
    const std::string width = std::to_string(picture.width), height = std::to_string(picture.height);
    if (form != NetpbmForm::kAny)
        return std::string(form == NetpbmForm::kColour ? "P6" : "P5") + "\n" + width + " " + height + "\n" +
               maximum + "\n";
    const std::string tuple =
        std::string(picture.colourPlanes == 3 ? "RGB" : "GRAYSCALE") + (picture.hasAlpha ? "_ALPHA" : "");
    return "P7\nWIDTH " + width + "\nHEIGHT " + height + "\nDEPTH " + std::to_string(planes) + "\nMAXVAL " +
           maximum + "\nTUPLTYPE " + tuple + "\nENDHDR\n";
}

static bool WriteIntegers(NetpbmForm form, const Picture &picture, OutputFile *file, std::string *why) {
    const size_t planes = form == NetpbmForm::kAny      ? picture.planes.size()
                          : form == NetpbmForm::kColour ? 3
                                                        : 1;
    if (!AppendText(IntegerHeaderText(form, picture, planes), file, why))
        return false;
    Picture grey; // three times the grey plane, where colour is wanted
    const bool repeats = form == NetpbmForm::kColour && picture.colourPlanes == 1;
    if (repeats) {
        grey = picture;
        grey.planes = {picture.planes[0], picture.planes[0], picture.planes[0]};
    }
    for (int32_t y = 0; y < picture.height; y += kRowsAtOnce) {
        Bytes rows;
        InterleaveRows(repeats ? grey : picture, planes, y, std::min(y + kRowsAtOnce, picture.height),
                       ByteOrder::kBig, &rows);
        if (!AppendOutput(file, rows.data(), rows.size(), why))
            return false;
    }
    return true;
}

static bool WriteFloats(const Picture &picture, OutputFile *file, std::string *why) {
    const std::string header = std::string(picture.colourPlanes == 3 ? "PF" : "Pf") + "\n" +
                               std::to_string(picture.width) + " " + std::to_string(picture.height) +
                               "\n-1.0\n";
    if (!AppendText(header, file, why))
        return false;
    for (int32_t y = picture.height; y-- > 0;) {
        Bytes row;
        InterleaveRows(picture, static_cast<size_t>(picture.colourPlanes), y, y + 1, ByteOrder::kLittle,
                       &row);
        if (!AppendOutput(file, row.data(), row.size(), why))
            return false;
    }
    return true;
}

bool WriteNetpbm(NetpbmForm form, const Picture &picture, OutputFile *file, std::string *why) {
    return form == NetpbmForm::kFloat ? WriteFloats(picture, file, why)
                                      : WriteIntegers(form, picture, file, why);
}

} // namespace host
