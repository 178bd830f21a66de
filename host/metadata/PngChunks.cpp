#include "host/metadata/PngChunks.h"

#include <windows.h>

#include <algorithm>

namespace host {

constexpr size_t kSignature = 8, kChunkFrame = 12; // a chunk's length, name and checksum
constexpr size_t kHeaderEnd = 33;
constexpr size_t kLongestKeyword = 79;

std::vector<PngChunk> ListPngChunks(const Bytes &file) {
    std::vector<PngChunk> chunks;
    for (size_t at = kSignature; at + kChunkFrame <= file.size();) {
        const size_t length = NumberAt<uint32_t>(file.data() + at, ByteOrder::kBig);
        if (length > file.size() - at - kChunkFrame)
            break;
        chunks.push_back(
            {{reinterpret_cast<const char *>(file.data()) + at + 4, 4}, file.data() + at + 8, length});
        at += length + kChunkFrame;
    }
    return chunks;
}

// Metadata of other kinds, which stand on their own and say where the picture's top is, and where it was
// taken.
static bool IsOther(const std::string &keyword) {
    return keyword == "XML:com.adobe.xmp" ||
           (keyword.starts_with("Raw profile type ") && keyword != "Raw profile type iptc");
}

std::vector<PngText> ReadPngTexts(const Bytes &file) {
    std::vector<PngText> texts;
    for (const PngChunk &chunk : ListPngChunks(file)) {
        if (chunk.name != "tEXt" && chunk.name != "zTXt" && chunk.name != "iTXt")
            continue;
        const uint8_t *end = chunk.body + chunk.length;
        const std::string keyword(chunk.body, std::find(chunk.body, end, uint8_t{0}));
        if (!keyword.empty() && keyword.size() <= kLongestKeyword && !IsOther(keyword))
            texts.push_back({keyword, Bytes(chunk.body - 8, end + 4)});
    }
    return texts;
}

static uint32_t Checksum(const uint8_t *bytes, size_t length) {
    constexpr uint32_t kPolynomial = 0xEDB88320;
    uint32_t sum = ~0u;
    for (size_t i = 0; i < length; i++) {
        sum ^= bytes[i];
        for (int bit = 0; bit < 8; bit++)
            sum = sum >> 1 ^ (sum & 1 ? kPolynomial : 0);
    }
    return ~sum;
}

static bool IsForeign(const Bytes &text) {
    const bool isPlain = std::all_of(text.begin(), text.end(), [](uint8_t letter) { return letter < 0x80; });
    return !isPlain &&
           MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, reinterpret_cast<const char *>(text.data()),
                               static_cast<int>(text.size()), nullptr, 0) > 0;
}

// Beyond Latin letters it takes the form that is in UTF-8.
PngText MakePngText(const std::string &keyword, const Bytes &text) {
    const bool isForeign = IsForeign(text);
    const Bytes between(isForeign ? 4 : 0); // not compressed, in no language
    Bytes chunk;
    AppendNumber(chunk, static_cast<uint32_t>(keyword.size() + 1 + between.size() + text.size()),
                 ByteOrder::kBig);
    AppendBytes(chunk, isForeign ? "iTXt" : "tEXt", 4);
    AppendBytes(chunk, keyword.c_str(), keyword.size() + 1);
    AppendBytes(chunk, between.data(), between.size());
    AppendBytes(chunk, text.data(), text.size());
    AppendNumber(chunk, Checksum(chunk.data() + 4, chunk.size() - 4), ByteOrder::kBig);
    return {keyword, chunk};
}

size_t PngTextPlace(size_t length) {
    return std::min(length, kHeaderEnd);
}

} // namespace host
