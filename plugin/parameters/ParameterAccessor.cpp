#include "plugin/parameters/ParameterAccessor.h"

#include "plugin/record/PluginState.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>

namespace {

constexpr ParameterBlock MakeIdentityBlock() {
    ParameterBlock block{};
    block.bytes[6] = 5; // the fourth word: Build
    return block;
}

constexpr ParameterBlock kIdentity = MakeIdentityBlock();

// The switch of a foreign block may have any value.
ParameterSet SetOfBlock(const ParameterBlock &block) {
    ParameterSet set;
    std::memcpy(&set, block.bytes, sizeof(set));
    set.outputSpikesOnly = set.outputSpikesOnly != 0;
    return set;
}

ParameterBlock *MakeBlock(ParameterSet set) {
    auto *block = static_cast<ParameterBlock *>(std::calloc(1, sizeof(ParameterBlock)));
    if (!block)
        return nullptr;
    std::memcpy(set.version, kDefaultParameters.version, sizeof(set.version));
    std::memcpy(block->bytes, &set, sizeof(set));
    return block;
}

// Padding carries nothing and stays 0.
void CommitSet(ParameterSet set) {
    std::memset(set.padding1, 0, sizeof(set.padding1));
    std::memset(set.padding2, 0, sizeof(set.padding2));
    *gParameters = set;
}

bool HaveEqualFields(const ParameterSet &a, const ParameterSet &b) {
    return a.outputSpikesOnly == b.outputSpikesOnly && a.effectType == b.effectType &&
           std::all_of(std::begin(kParameterFields), std::end(kParameterFields),
                       [&](auto field) { return a.*field == b.*field; });
}

} // namespace

uintptr_t AccessParameterBlock(int32_t operation, const ParameterBlock *block) {
    switch (operation) {
    case kIdentityBlock:
        return reinterpret_cast<uintptr_t>(&kIdentity);
    case kMakeDefaultBlock:
        return reinterpret_cast<uintptr_t>(MakeBlock(kDefaultParameters));
    case kMakeCurrentBlock:
        return gParameters ? reinterpret_cast<uintptr_t>(MakeBlock(*gParameters)) : 0;
    case kCommitBlock:
        if (!gParameters || !block)
            return 0;
        CommitSet(SetOfBlock(*block));
        return 1;
    case kCompareBlock:
        return gParameters && block && HaveEqualFields(SetOfBlock(*block), *gParameters);
    case kConvertBlock:
        return 0;
    case kResetToDefaults:
        if (!gParameters)
            return 0;
        *gParameters = kDefaultParameters;
        return 1;
    default:
        return 0;
    }
}
