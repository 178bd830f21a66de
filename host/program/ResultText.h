// Host result codes in words.
#pragma once

#include <cstdint>
#include <string>

namespace host {

// "not enough memory" and the like; never empty.
std::string ResultText(int16_t code);

} // namespace host
