#include "host/metadata/IptcBlock.h"

namespace host {

constexpr char kName[] = "Photoshop 3.0"; // with the zero behind it
constexpr char kResource[] = "8BIM";
constexpr uint16_t kIptcResource = 0x0404;

static bool IsWrapped(const Bytes &block) {
    return block.size() > sizeof(kName) && std::memcmp(block.data(), kName, sizeof(kName)) == 0;
}

Bytes UnwrapIptc(const Bytes &block) {
    if (!IsWrapped(block))
        return block;
    ByteReader reader = {block.data(), block.size(), sizeof(kName)};
    while (reader.Left() > sizeof(kResource)) {
        const Bytes mark = reader.TakeBytes(4);
        const uint16_t id = reader.Take<uint16_t>(ByteOrder::kBig);
        const std::string name = reader.TakePascal();
        if (name.size() % 2 == 0) // names and contents begin at even places
            reader.Take<uint8_t>();
        const uint32_t length = reader.Take<uint32_t>(ByteOrder::kBig);
        Bytes content = reader.TakeBytes(length);
        if (reader.failed || std::memcmp(mark.data(), kResource, 4) != 0)
            break;
        if (id == kIptcResource)
            return content;
        if (length % 2 != 0 && reader.Left() > 0)
            reader.Take<uint8_t>();
    }
    return {};
}

Bytes WrapIptc(const Bytes &block) {
    if (IsWrapped(block) || block.empty() || block[0] != 0x1C)
        return block;
    Bytes wrapped(kName, kName + sizeof(kName));
    AppendBytes(wrapped, kResource, 4);
    AppendNumber(wrapped, kIptcResource, ByteOrder::kBig);
    AppendNumber(wrapped, uint16_t{0}); // no name
    AppendNumber(wrapped, static_cast<uint32_t>(block.size()), ByteOrder::kBig);
    AppendBytes(wrapped, block.data(), block.size());
    if (block.size() % 2 != 0)
        wrapped.push_back(0);
    return wrapped;
}

} // namespace host
