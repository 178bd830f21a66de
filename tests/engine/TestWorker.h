// A detection worker over a whole picture, for tests that look at single steps.
#pragma once

#include "engine/detect/Detection.h"
#include "engine/detect/WorkerContext.h"
#include "tests/engine/TestImages.h"

struct TestWorker {
    std::atomic<uint8_t> cancel{0};
    DetectionShared shared{};
    WorkerContext context{};
    explicit TestWorker(const ImageBuffer &picture) {
        shared.cancel = &cancel;
        EXPECT_EQ(PrepareAnalysisImage(picture, cancel, &shared.image), kNoError);
        EXPECT_EQ(InitializeWorkerContext(0, shared.image.bounds, &shared, &context), kNoError);
    }
    ~TestWorker() {
        ReleaseWorkerContext(&context);
        FreeAnalysisImage(&shared.image);
    }
    TestWorker(const TestWorker &) = delete;
    TestWorker &operator=(const TestWorker &) = delete;
    std::vector<LightSource> Sources() const {
        return std::vector<LightSource>(context.table.records, context.table.records + context.table.Count);
    }
};
