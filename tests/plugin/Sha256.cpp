#include "tests/plugin/Sha256.h"

#include <windows.h>

#include <bcrypt.h>

std::string Sha256(const std::vector<uint8_t> &bytes) {
    BCRYPT_ALG_HANDLE algorithm = nullptr;
    BCRYPT_HASH_HANDLE hash = nullptr;
    uint8_t digest[32] = {};
    BCryptOpenAlgorithmProvider(&algorithm, BCRYPT_SHA256_ALGORITHM, nullptr, 0);
    BCryptCreateHash(algorithm, &hash, nullptr, 0, nullptr, 0, 0);
    BCryptHashData(hash, const_cast<uint8_t *>(bytes.data()), static_cast<ULONG>(bytes.size()), 0);
    BCryptFinishHash(hash, digest, sizeof(digest), 0);
    BCryptDestroyHash(hash);
    BCryptCloseAlgorithmProvider(algorithm, 0);
    std::string text;
    for (const uint8_t byte : digest) {
        constexpr char kDigits[] = "0123456789abcdef";
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}
