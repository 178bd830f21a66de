#include "host/module/EnableInfo.h"

#include "host/base/SystemText.h"

#include <algorithm>
#include <cstring>

namespace host {

constexpr int kDeepestNesting = 50;
constexpr int32_t kLastPlainMode = 9; // from there on samples have more than 8 bits

static const char *const kModeNames[] = {
    "BitmapMode", "GrayScaleMode",    "IndexedMode",          "RGBMode",       "CMYKMode",   "HSLMode",
    "HSBMode",    "MultichannelMode", "DuotoneMode",          "LabMode",       "Gray16Mode", "RGB48Mode",
    "Lab48Mode",  "CMYK64Mode",       "DeepMultichannelMode", "Duotone16Mode", "RGB96Mode",  "Gray32Mode"};

// What is left of the expression. Once failed, values mean nothing.
struct Expression {
    const char *at;
    const ImageFacts &image;
    int nesting = 0;
    bool failed = false;
};

static void SkipSpace(Expression &e) {
    while (std::strchr(" \t\r\n", *e.at) && *e.at)
        e.at++;
}

static bool TakeSign(Expression &e, const char *sign) {
    SkipSpace(e);
    const size_t length = std::strlen(sign);
    if (std::strncmp(e.at, sign, length) != 0)
        return false;
    e.at += length;
    return true;
}

static void Expect(Expression &e, const char *sign) {
    if (!TakeSign(e, sign))
        e.failed = true;
}

static bool IsWordCharacter(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

static std::string TakeWord(Expression &e) {
    SkipSpace(e);
    const char *first = e.at;
    while (IsWordCharacter(*e.at))
        e.at++;
    return std::string(first, e.at);
}

static bool IsSameWord(const std::string &a, const char *b) {
    return _stricmp(a.c_str(), b) == 0;
}

static int64_t NumberOf(Expression &e, const std::string &digits) {
    constexpr size_t kMostDigits = 15;
    if (digits.empty() || digits.size() > kMostDigits ||
        digits.find_first_not_of("0123456789") != std::string::npos) {
        e.failed = true;
        return 0;
    }
    return std::stoll(digits);
}

static int64_t ValueOfWord(Expression &e, const std::string &word) {
    const struct {
        const char *name;
        int64_t value;
    } known[] = {{"PSHOP_ImageMode", e.image.mode},
                 {"PSHOP_ImageDepth", e.image.depth},
                 {"PSHOP_ImageWidth", e.image.width},
                 {"PSHOP_ImageHeight", e.image.height},
                 {"PSHOP_NumTargetChannels", e.image.planes},
                 {"PSHOP_IsTargetVisible", 1},
                 {"PSHOP_IsTargetComposite", 1},
                 {"PSHOP_IsTargetSection", 0},
                 {"true", 1},
                 {"false", 0}};
    for (const auto &entry : known)
        if (IsSameWord(word, entry.name))
            return entry.value;
    for (size_t mode = 0; mode < std::size(kModeNames); mode++)
        if (IsSameWord(word, kModeNames[mode]))
            return static_cast<int64_t>(mode);
    return NumberOf(e, word);
}

static int64_t TakeEither(Expression &e);

// in(value, one, another ...): whether the value is one of the others.
static int64_t TakeMembership(Expression &e) {
    Expect(e, "(");
    const int64_t value = TakeEither(e);
    bool isIn = false;
    while (!e.failed && TakeSign(e, ","))
        isIn = (TakeEither(e) == value) || isIn;
    Expect(e, ")");
    return isIn;
}

static int64_t TakeOperand(Expression &e);

static int64_t TakeOperandInside(Expression &e) {
    if (TakeSign(e, "!"))
        return TakeOperand(e) == 0;
    if (TakeSign(e, "(")) {
        const int64_t value = TakeEither(e);
        Expect(e, ")");
        return value;
    }
    const std::string word = TakeWord(e);
    return IsSameWord(word, "in") ? TakeMembership(e) : ValueOfWord(e, word);
}

static int64_t TakeOperand(Expression &e) {
    e.nesting++;
    e.failed = e.failed || e.nesting > kDeepestNesting;
    const int64_t value = e.failed ? 0 : TakeOperandInside(e);
    e.nesting--;
    return value;
}

static int64_t TakeComparison(Expression &e) {
    const int64_t left = TakeOperand(e);
    if (TakeSign(e, "=="))
        return left == TakeOperand(e);
    if (TakeSign(e, "!="))
        return left != TakeOperand(e);
    if (TakeSign(e, "<="))
        return left <= TakeOperand(e);
    if (TakeSign(e, ">="))
        return left >= TakeOperand(e);
    if (TakeSign(e, "<"))
        return left < TakeOperand(e);
    if (TakeSign(e, ">"))
        return left > TakeOperand(e);
    return left;
}

static int64_t TakeBoth(Expression &e) {
    int64_t value = TakeComparison(e);
    while (!e.failed && TakeSign(e, "&&"))
        value = (TakeComparison(e) != 0) & (value != 0);
    return value;
}

static int64_t TakeEither(Expression &e) {
    int64_t value = TakeBoth(e);
    while (!e.failed && TakeSign(e, "||"))
        value = (TakeBoth(e) != 0) | (value != 0);
    return value;
}

std::optional<bool> EvaluateEnableInfo(const std::string &expression, const ImageFacts &image) {
    Expression e = {expression.c_str(), image};
    const int64_t value = TakeEither(e);
    SkipSpace(e);
    if (e.failed || *e.at)
        return std::nullopt;
    return value != 0;
}

static bool IsModeNamed(const Pipl &pipl, int32_t mode) {
    if (!pipl.modes)
        return mode <= kLastPlainMode;
    return mode >= 0 && mode < 32 && (*pipl.modes >> (31 - mode) & 1) != 0;
}

static std::string DescribeImage(const ImageFacts &image) {
    const bool isGrey = image.mode == 1 || image.mode == 10 || image.mode == 17;
    return std::to_string(image.depth) + "-bit " + (isGrey ? "greyscale" : "RGB") + " images of " +
           std::to_string(image.width) + " x " + std::to_string(image.height) + " pixels";
}

bool TakesImage(const Pipl &pipl, const ImageFacts &image, std::string *why) {
    const std::optional<bool> enabled = EvaluateEnableInfo(pipl.enableInfo, image);
    const bool isNamed =
        IsModeNamed(pipl, image.mode) || (image.mode > kLastPlainMode && enabled.value_or(false));
    const bool fits = (pipl.mostColumns <= 0 || image.width <= pipl.mostColumns) &&
                      (pipl.mostRows <= 0 || image.height <= pipl.mostRows);
    if (enabled.value_or(true) && isNamed && fits)
        return true;
    return Fail(why, "it does not take " + DescribeImage(image));
}

} // namespace host
