// The 255-byte parameter block as storage sees it, and the accessor through which the plug-in's frame makes
// and commits blocks. Storage knows only the four version words.
#pragma once

#include <cstddef>
#include <cstdint>

constexpr size_t kParameterBlockSize = 255;

struct ParameterBlock {
    uint8_t bytes[kParameterBlockSize]; // four little-endian version words first
};
static_assert(sizeof(ParameterBlock) == kParameterBlockSize);

// Operations of the accessor. Results that are blocks come from malloc and belong to the caller, but for
// kIdentityBlock, which is a constant of the frame.
enum ParameterBlockOperation : int32_t {
    kIdentityBlock = 0, // const ParameterBlock*: version 0,0,0,5, all else 0
    kMakeDefaultBlock,  // ParameterBlock*: the defaults
    kMakeCurrentBlock,  // ParameterBlock*: the current set
    kCommitBlock,       // 1: the given block became the current set
    kCompareBlock,      // 1 when every field from intensity to threshold equals the current set, else 0
    kConvertBlock,      // null: no older layout can be converted; kept for later layouts
    kResetToDefaults,   // 1: the current set is the defaults
};

// Returns the operation's result as a word: a pointer or a number; 0 for an unknown code or a failure.
using ParameterBlockAccessor = uintptr_t (*)(int32_t operation, const ParameterBlock *block);

// Installed by the frame in Prepare; null before.
extern ParameterBlockAccessor gParameterBlockAccessor;
