#include "ui/fields/NumberText.h"

#include <cstdio>

namespace {

constexpr size_t kMaxDigits = 64;
constexpr int kExponentLimit = 1000;

struct DecimalNumber {
    bool negative;
    char digits[kMaxDigits]; // as typed, without the point and zeros before the number
    size_t digitCount;
    int integerDigits; // of these, those before the point; leading zeros left out
    int exponent;
};

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool SkipSign(const char **text) {
    const char sign = **text;
    if (sign == '-' || sign == '+')
        ++*text;
    return sign == '-';
}

// Keeps the first digits only: those past the buffer could not change a value within the limit.
int ReadDigits(const char **text, DecimalNumber *number) {
    int count = 0;
    for (; IsDigit(**text); ++*text, ++count)
        if (number->digitCount < kMaxDigits)
            number->digits[number->digitCount++] = **text;
    return count;
}

int ReadExponent(const char *text) {
    if (*text != 'e' && *text != 'E')
        return 0;
    ++text;
    const bool negative = SkipSign(&text);
    int exponent = 0;
    for (; IsDigit(*text) && exponent < kExponentLimit; ++text)
        exponent = exponent * 10 + (*text - '0');
    return negative ? -exponent : exponent;
}

bool ReadDecimalNumber(const char *text, DecimalNumber *number) {
    while (*text == ' ' || *text == '\t')
        ++text;
    number->negative = SkipSign(&text);
    int digits = 0;
    for (; *text == '0'; ++text)
        ++digits;
    number->integerDigits = ReadDigits(&text, number);
    digits += number->integerDigits;
    if (*text == '.' || *text == ',') {
        ++text;
        digits += ReadDigits(&text, number);
    }
    number->exponent = ReadExponent(text);
    return digits > 0;
}

} // namespace

bool ParseScaledNumber(const char *text, int decimals, int32_t *value) {
    DecimalNumber number = {};
    if (!ReadDecimalNumber(text, &number))
        return false;
    // Scaling by 10^decimals moves the point; what then stands behind it is cut off.
    const int wholeDigits = number.integerDigits + number.exponent + decimals;
    int64_t magnitude = 0;
    for (int i = 0; i < wholeDigits && magnitude < kScaledNumberLimit; ++i) {
        const size_t index = static_cast<size_t>(i);
        magnitude = magnitude * 10 + (index < number.digitCount ? number.digits[index] - '0' : 0);
    }
    if (magnitude > kScaledNumberLimit)
        magnitude = kScaledNumberLimit;
    *value = static_cast<int32_t>(number.negative ? -magnitude : magnitude);
    return true;
}

wchar_t NumberCharacter(wchar_t character) {
    constexpr wchar_t fullWidth = 0xFEE0; // from a plain character to its full-width form
    constexpr wchar_t minusSign = 0x2212, ideographicStop = 0x3002;
    if (character == minusSign)
        return L'-';
    if (character == ideographicStop)
        return L'.';
    const bool isWide = character > fullWidth && character <= fullWidth + 0x7F;
    const wchar_t plain = isWide ? static_cast<wchar_t>(character - fullWidth) : character;
    const bool isNumeric =
        (plain >= L'0' && plain <= L'9') || plain == L'.' || plain == L',' || plain == L'-' || plain == L'+';
    return isNumeric ? plain : L'\0';
}

size_t KeepNumberCharacters(wchar_t *text) {
    size_t kept = 0;
    for (const wchar_t *next = text; *next; ++next) {
        const bool isExponent = kept > 0 && text[kept - 1] >= L'0' && text[kept - 1] <= L'9' &&
                                (*next == L'e' || *next == L'E') && NumberCharacter(next[1]);
        if (const wchar_t plain = isExponent ? *next : NumberCharacter(*next))
            text[kept++] = plain;
    }
    text[kept] = L'\0';
    return kept;
}

bool FormatScaledNumber(int32_t value, int decimals, char *text, size_t capacity) {
    int64_t scale = 1;
    for (int i = 0; i < decimals; ++i)
        scale *= 10;
    const int64_t magnitude = value < 0 ? -int64_t{value} : int64_t{value};
    const char *sign = value < 0 ? "-" : "";
    const long long whole = magnitude / scale, fraction = magnitude % scale;
    const int printed = decimals > 0
                            ? snprintf(text, capacity, "%s%lld.%0*lld", sign, whole, decimals, fraction)
                            : snprintf(text, capacity, "%s%lld", sign, whole);
    if (printed >= 0 && static_cast<size_t>(printed) < capacity)
        return true;
    if (capacity > 0)
        *text = '\0';
    return false;
}
