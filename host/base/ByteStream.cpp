#include "host/base/ByteStream.h"

namespace host {

void AppendBytes(Bytes &bytes, const void *from, size_t count) {
    const size_t at = bytes.size();
    bytes.resize(at + count);
    if (count > 0)
        std::memcpy(bytes.data() + at, from, count);
}

} // namespace host
