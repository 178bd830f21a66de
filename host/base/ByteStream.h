// Reading and writing of numbers in byte buffers whose contents nobody vouches for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace host {

using Bytes = std::vector<uint8_t>;

enum class ByteOrder { kLittle, kBig };

template <typename Number>
void AppendNumber(Bytes &bytes, Number number, ByteOrder order = ByteOrder::kLittle) {
    uint8_t raw[sizeof(number)];
    std::memcpy(raw, &number, sizeof(number));
    for (size_t i = 0; i < sizeof(number); i++)
        bytes.push_back(raw[order == ByteOrder::kLittle ? i : sizeof(number) - 1 - i]);
}

void AppendBytes(Bytes &bytes, const void *from, size_t count);

// The number at `at`, which the caller has checked to be in bounds.
template <typename Number> Number NumberAt(const uint8_t *at, ByteOrder order = ByteOrder::kLittle) {
    uint8_t raw[sizeof(Number)];
    for (size_t i = 0; i < sizeof(Number); i++)
        raw[i] = at[order == ByteOrder::kLittle ? i : sizeof(Number) - 1 - i];
    Number number;
    std::memcpy(&number, raw, sizeof(number));
    return number;
}

// Walks over bytes. A read beyond the end gives zeros and sets `failed` for good.
struct ByteReader {
    const uint8_t *bytes;
    size_t length;
    size_t at = 0;
    bool failed = false;

    size_t Left() const { return length - at; }
    bool Need(size_t count) {
        failed = failed || count > Left();
        return !failed;
    }
    template <typename Number> Number Take(ByteOrder order = ByteOrder::kLittle) {
        if (!Need(sizeof(Number)))
            return {};
        at += sizeof(Number);
        return NumberAt<Number>(bytes + at - sizeof(Number), order);
    }
    Bytes TakeBytes(size_t count) {
        if (!Need(count))
            return {};
        at += count;
        return {bytes + at - count, bytes + at};
    }
    std::string TakePascal() {
        const Bytes text = TakeBytes(Take<uint8_t>());
        return {text.begin(), text.end()};
    }
};

} // namespace host
