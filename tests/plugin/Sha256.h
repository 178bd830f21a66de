// SHA-256 of a few bytes, for comparing resources with their known digests.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

std::string Sha256(const std::vector<uint8_t> &bytes); // lower-case hexadecimal
