#include "plugin/parameters/PersistentBlock.h"

#include "plugin/parameters/ParameterAccessor.h"
#include "plugin/record/HostCall.h"
#include "plugin/record/PluginState.h"
#include "render/ParameterSet.h"
#include "storage/AppFolders.h"
#include "storage/ParameterFiles.h"

#include <cstdlib>
#include <cstring>

namespace {

constexpr FourCharCode kKeyBlock = 0x50426C6B; // 'PBlk'
constexpr HostBoolean kPersistent = 1;

struct BlockSuites {
    const DescriptorRegistrySuite *registry;
    const ActionDescriptorSuite *actions;
};

const void *AcquireSuite(const char *name, int32_t version) {
    const SPBasicSuite *basic = gFilterRecord->sSPBasic;
    const void *suite = nullptr;
    if (!basic || !basic->AcquireSuite || CallHost(basic->AcquireSuite, name, version, &suite) != 0)
        return nullptr;
    return suite;
}

void ReleaseSuite(const void *suite, const char *name, int32_t version) {
    const SPBasicSuite *basic = gFilterRecord->sSPBasic;
    if (suite && basic && basic->ReleaseSuite)
        CallHost(basic->ReleaseSuite, name, version);
}

void ReleaseBlockSuites(const BlockSuites &suites) {
    ReleaseSuite(suites.actions, kActionDescriptorSuiteName, kActionDescriptorSuiteVersion);
    ReleaseSuite(suites.registry, kDescriptorRegistrySuiteName, kDescriptorRegistrySuiteVersion);
}

bool AcquireBlockSuites(BlockSuites *suites) {
    const BlockSuites found = {static_cast<const DescriptorRegistrySuite *>(AcquireSuite(
                                   kDescriptorRegistrySuiteName, kDescriptorRegistrySuiteVersion)),
                               static_cast<const ActionDescriptorSuite *>(
                                   AcquireSuite(kActionDescriptorSuiteName, kActionDescriptorSuiteVersion))};
    if (!found.registry || !found.actions) {
        ReleaseBlockSuites(found);
        return false;
    }
    *suites = found;
    return true;
}

bool HasReadCalls(const ActionDescriptorSuite &actions) {
    return actions.Free && actions.HasKey && actions.GetType && actions.GetDataLength && actions.GetData;
}

// The host's getter writes without knowing the room there is, so the length is asked for first. A block
// shorter than the record, or longer than a block can be, is none of ours.
HostResult GetBlock(const ActionDescriptorSuite &actions, ActionDescriptor descriptor,
                    ParameterBlock *block) {
    HostBoolean hasKey = 0;
    FourCharCode type = 0;
    int32_t length = 0;
    if (const HostResult result = CallHost(actions.HasKey, descriptor, kKeyBlock, &hasKey))
        return result;
    if (!hasKey)
        return kErrPlugInPropertyUndefined;
    if (const HostResult result = CallHost(actions.GetType, descriptor, kKeyBlock, &type))
        return result;
    if (type != kTypeRawData)
        return kErrPlugInPropertyUndefined;
    if (const HostResult result = CallHost(actions.GetDataLength, descriptor, kKeyBlock, &length))
        return result;
    if (length < static_cast<int32_t>(sizeof(ParameterSet)) ||
        length > static_cast<int32_t>(kParameterBlockSize))
        return kErrPlugInPropertyUndefined;
    ParameterBlock found{};
    if (const HostResult result = CallHost(actions.GetData, descriptor, kKeyBlock, found.bytes))
        return result;
    *block = found;
    return kNoError;
}

HostResult FetchBlock(const BlockSuites &suites, ParameterBlock *block) {
    if (!suites.registry->Get || !HasReadCalls(*suites.actions))
        return kErrPlugInHostInsufficient;
    ActionDescriptor descriptor = nullptr;
    if (const HostResult result = CallHost(suites.registry->Get, kScopeGuid, &descriptor))
        return result;
    if (!descriptor)
        return kErrPlugInPropertyUndefined;
    const HostResult result = GetBlock(*suites.actions, descriptor, block);
    CallHost(suites.actions->Free, descriptor);
    return result;
}

// Only Major and Minor tell whether a host's block fits; files compare all four words.
bool IsCurrentBlock(const ParameterBlock &block) {
    const auto *identity =
        reinterpret_cast<const ParameterBlock *>(gParameterBlockAccessor(kIdentityBlock, nullptr));
    return std::memcmp(block.bytes, identity->bytes, 2 * sizeof(uint16_t)) == 0;
}

HostResult CommitBlock(const ParameterBlock &block) {
    if (IsCurrentBlock(block))
        return gParameterBlockAccessor(kCommitBlock, &block) ? kNoError : kErrPlugInPropertyUndefined;
    auto *converted = reinterpret_cast<ParameterBlock *>(gParameterBlockAccessor(kConvertBlock, &block));
    if (!converted)
        return kPersistentBlockObsolete;
    gParameterBlockAccessor(kCommitBlock, converted);
    std::free(converted);
    return kNoError;
}

HostResult RestoreHostBlock() {
    BlockSuites suites;
    if (!AcquireBlockSuites(&suites))
        return kErrPlugInHostInsufficient;
    ParameterBlock block;
    HostResult result = FetchBlock(suites, &block);
    ReleaseBlockSuites(suites);
    if (result == kNoError)
        result = CommitBlock(block);
    return result;
}

bool RegisterBlock(const BlockSuites &suites, const ParameterBlock &block) {
    const ActionDescriptorSuite &actions = *suites.actions;
    if (!suites.registry->Register || !actions.Make || !actions.Free || !actions.PutData)
        return false;
    ActionDescriptor descriptor = nullptr;
    if (CallHost(actions.Make, &descriptor) != kNoError || !descriptor)
        return false;
    const bool stored =
        CallHost(actions.PutData, descriptor, kKeyBlock, kParameterBlockSize, block.bytes) == kNoError &&
        CallHost(suites.registry->Register, kScopeGuid, descriptor, kPersistent) == kNoError;
    CallHost(actions.Free, descriptor);
    return stored;
}

bool StoreHostBlock(const ParameterBlock &block) {
    BlockSuites suites;
    if (!AcquireBlockSuites(&suites))
        return false;
    const bool stored = RegisterBlock(suites, block);
    ReleaseBlockSuites(suites);
    return stored;
}

bool RestoreFromFile() {
    char path[kMaxPath];
    return FormatInitialSettingsPath(path, sizeof(path)) && ReadInitialSettings(path);
}

void StoreToFile(const ParameterBlock &block) {
    char path[kMaxPath];
    if (FormatInitialSettingsPath(path, sizeof(path)))
        SaveParametersFile(block, path);
}

} // namespace

void InstallParameterBlockAccessor() {
    gParameterBlockAccessor = AccessParameterBlock;
}

void ReleasePersistentBlock() {
    gParameterBlockAccessor = nullptr;
}

HostResult RestorePersistentBlock() {
    if (!gParameterBlockAccessor)
        return kErrPlugInPropertyUndefined;
    const HostResult result = RestoreHostBlock();
    if (result != kNoError && !RestoreFromFile())
        gParameterBlockAccessor(kResetToDefaults, nullptr);
    return result;
}

void StorePersistentBlock() {
    if (!gParameterBlockAccessor)
        return;
    auto *block = reinterpret_cast<ParameterBlock *>(gParameterBlockAccessor(kMakeCurrentBlock, nullptr));
    if (!block)
        return;
    if (!StoreHostBlock(*block))
        StoreToFile(*block);
    std::free(block);
}
