// What a filter may do wrong with what the host hands it: each is noticed, and said once.
#include "host/services/HostServices.h"
#include "tests/host/PlayedFilter.h"

#include <thread>

namespace {

template <typename Suite> const Suite *Acquire(FilterRecord &record, const char *name, int32_t version) {
    const void *suite = nullptr;
    EXPECT_EQ(record.sSPBasic->AcquireSuite(name, version, &suite), 0) << name;
    return static_cast<const Suite *>(suite);
}

const ActionDescriptorSuite *AcquireActions(FilterRecord &record) {
    return Acquire<ActionDescriptorSuite>(record, kActionDescriptorSuiteName, 2);
}

ReadDescriptor OpenReader(FilterRecord &record) {
    static FourCharCode none;
    none = 0;
    const PIDescriptorParameters &parameters = *record.descriptorParameters;
    return parameters.readDescriptorProcs->openReadDescriptorProc(parameters.descriptor, &none);
}

const host::BufferProcs &Buffers(FilterRecord &record) {
    return *static_cast<host::BufferProcs *>(record.bufferProcs);
}

host::BufferId NewBuffer(FilterRecord &record, int64_t size) {
    host::BufferId buffer = nullptr;
    EXPECT_EQ(Buffers(record).allocateProc64(size, &buffer), size < INT32_MAX ? kNoError : kMemFullErr);
    return buffer;
}

} // namespace

TEST(Misuse, IsReported) {
    const std::pair<const char *, std::function<void(FilterRecord & record)>> cases[] = {
        {"leaked 1 handle", [](FilterRecord &r) { r.handleProcs->newProc(10); }},
        {"not alive",
         [](FilterRecord &r) {
             HostHandle handle = r.handleProcs->newProc(10);
             r.handleProcs->disposeProc(handle);
             r.handleProcs->disposeProc(handle);
         }},
        {"behind the end of a handle",
         [](FilterRecord &r) {
             HostHandle handle = r.handleProcs->newProc(10);
             r.handleProcs->lockProc(handle, 1)[10] = 0;
             r.handleProcs->disposeProc(handle);
         }},
        {"leaked 1 buffer", [](FilterRecord &r) { NewBuffer(r, 10); }},
        {"lock of memory that is not alive",
         [](FilterRecord &r) {
             host::BufferId buffer = NewBuffer(r, 10);
             Buffers(r).freeProc(buffer);
             EXPECT_EQ(Buffers(r).lockProc(buffer, 0), nullptr);
         }},
        {"behind the end of a buffer",
         [](FilterRecord &r) {
             host::BufferId buffer = NewBuffer(r, 10);
             Buffers(r).lockProc(buffer, 1)[10] = 0;
             Buffers(r).freeProc(buffer);
         }},
        {"setSizeProc of a locked handle",
         [](FilterRecord &r) {
             HostHandle handle = r.handleProcs->newProc(10);
             r.handleProcs->lockProc(handle, 1);
             EXPECT_EQ(r.handleProcs->setSizeProc(handle, 20), kMemFullErr);
             r.handleProcs->disposeProc(handle);
         }},
        {"putTextProc of a handle that is not alive",
         [](FilterRecord &r) {
             r.descriptorParameters->writeDescriptorProcs->putTextProc(nullptr, 'note', nullptr);
         }},
        {"displayPixels of memory that cannot be read",
         [](FilterRecord &r) {
             uint8_t samples[3] = {};
             const host::PixelMap map = {0,       {0, 0, 4096, 1}, 3,       4096, 1 << 20, 1,
                                         samples, nullptr,         nullptr, 0,    0};
             const auto show = reinterpret_cast<host::DisplayPixels>(r.displayPixels);
             EXPECT_EQ(show(&map, &map.bounds, 0, 0, samples), kParamErr);
             EXPECT_EQ(show(&map, nullptr, 0, 0, samples), kParamErr);
         }},
        {"behind the end of the record",
         [](FilterRecord &r) { reinterpret_cast<uint8_t *>(&r)[sizeof(r)] = 0; }},
        {"another thread", [](FilterRecord &r) { std::thread([&] { r.abortProc(); }).join(); }},
        {"leaked 1 descriptor reader", [](FilterRecord &r) { OpenReader(r); }},
        {"leaked 1 descriptor writer",
         [](FilterRecord &r) { r.descriptorParameters->writeDescriptorProcs->openWriteDescriptorProc(); }},
        {"not open",
         [](FilterRecord &r) {
             const ReadDescriptorProcs &procs = *r.descriptorParameters->readDescriptorProcs;
             ReadDescriptor reader = OpenReader(r);
             procs.closeReadDescriptorProc(reader);
             EXPECT_EQ(procs.closeReadDescriptorProc(reader), kParamErr);
         }},
        {"released a suite that it does not hold",
         [](FilterRecord &r) { EXPECT_NE(r.sSPBasic->ReleaseSuite(kPropertySuiteName, 1), 0); }},
        {"leaked 2 acquisition",
         [](FilterRecord &r) {
             AcquireActions(r);
             AcquireActions(r);
         }},
        {"already present",
         [](FilterRecord &r) {
             const ActionDescriptorSuite *action = AcquireActions(r);
             ActionDescriptor descriptor = nullptr;
             action->Make(&descriptor);
             action->PutData(descriptor, 'numb', 1, "1");
             action->PutData(descriptor, 'numb', 1, "2");
             action->Free(descriptor);
             r.sSPBasic->ReleaseSuite(kActionDescriptorSuiteName, 2);
         }},
        {"leaked 1 action descriptor",
         [](FilterRecord &r) {
             ActionDescriptor descriptor = nullptr;
             AcquireActions(r)->Make(&descriptor);
             r.sSPBasic->ReleaseSuite(kActionDescriptorSuiteName, 2);
         }},
    };
    for (const auto &[expected, action] : cases) {
        PlayedHost played({});
        played.filterHost.script = host::Descriptor{{host::IntegerValue('numb', 1)}};
        const auto violations = played.ViolationsOf(action);
        ASSERT_EQ(violations.size(), 1u) << expected;
        EXPECT_NE(violations[0].find(expected), std::string::npos) << violations[0];
        EXPECT_TRUE(played.ViolationsOf([](FilterRecord &) {}).empty()) << expected << " told again";
    }
}

// No filter's fault, but no crash and no gigabytes either.
TEST(Misuse, WhatIsTooLargeIsAnError) {
    PlayedHost played({});
    const auto violations = played.ViolationsOf([](FilterRecord &record) {
        EXPECT_EQ(NewBuffer(record, int64_t{1} << 62), nullptr);
        EXPECT_EQ(record.handleProcs->newProc(INT32_MAX), nullptr);
        HostHandle handle = record.handleProcs->newProc(1);
        EXPECT_EQ(record.handleProcs->setSizeProc(handle, INT32_MAX), kMemFullErr);
        EXPECT_EQ(record.handleProcs->getSizeProc(handle), 1);
        record.handleProcs->disposeProc(handle);
        void *block = nullptr;
        EXPECT_NE(record.sSPBasic->AllocateBlock(SIZE_MAX, &block), 0);
    });
    EXPECT_TRUE(violations.empty()) << violations[0];
}

TEST(Misuse, OfWhatIsNoLongerHeldIsReported) {
    PlayedHost played({});
    int32_t (*sizeOf)(HostHandle) = nullptr;
    const auto violations = played.ViolationsOf([&](FilterRecord &record) {
        sizeOf = record.handleProcs->getSizeProc;
        const void *suite = &record;
        EXPECT_EQ(record.sSPBasic->AcquireSuite(kPropertySuiteName, 9, &suite), kSuiteNotFound);
        EXPECT_EQ(suite, &record) << "a failing call touched its output";
        const ActionDescriptorSuite *action = AcquireActions(record);
        record.sSPBasic->ReleaseSuite(kActionDescriptorSuiteName, 2);
        ActionDescriptor descriptor = nullptr;
        action->Make(&descriptor);
        action->Free(descriptor);
    });
    ASSERT_FALSE(violations.empty());
    EXPECT_TRUE(played.HasViolation("without holding its suite"));
    sizeOf(nullptr);
    EXPECT_TRUE(played.HasViolation("outside a selector"));
    host::CloseHost(played.filterHost);

    PlayedHost silent([](int16_t, FilterRecord &, intptr_t *) { return int16_t{0x1234}; });
    silent.filterHost.settings.resultOnEntry = 0x1234;
    EXPECT_EQ(silent.Run(), 0x1234);
    EXPECT_TRUE(silent.HasViolation("left the result word alone"));
}
