// IPTC data, bare as in a TIFF or wrapped as in a JPEG.
#pragma once

#include "host/base/ByteStream.h"

namespace host {

// Either form in, the named one out. Bytes that are neither come back as they are.
Bytes UnwrapIptc(const Bytes &block);
Bytes WrapIptc(const Bytes &block);

} // namespace host
