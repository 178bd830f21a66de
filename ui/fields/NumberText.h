// Text of the numbers in the edit fields. The user's locale plays no part: a point is shown, and a point or a
// comma is read. Portable.
#pragma once

#include <cstddef>
#include <cstdint>

// Reads the number that `text` begins with (blanks before it are skipped; sign, decimals and an exponent may
// follow) and gives trunc(number × 10^decimals), held within ±kScaledNumberLimit. The digits are taken as
// they stand, never through binary fractions, so that 7.2 in tenths is 72. False, with *value unchanged, when
// the text begins with no number.
bool ParseScaledNumber(const char *text, int decimals, int32_t *value);

// The plain character of a number that one stands for: itself, or that of a full-width digit, sign, point or
// comma, or of a minus sign. 0: it belongs to no number.
wchar_t NumberCharacter(wchar_t character);
// Leaves these of a text, in their plain form, and an exponent's letter behind a digit. Returns how many
// there are.
size_t KeepNumberCharacters(wchar_t *text);

constexpr int32_t kScaledNumberLimit = 1000000000;

// Writes value / 10^decimals with that many decimals, and a minus sign when negative. False, with an empty
// text, when it does not fit. `decimals` is 0 to 9.
bool FormatScaledNumber(int32_t value, int decimals, char *text, size_t capacity);
