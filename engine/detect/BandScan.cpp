#include "engine/detect/CandidateAnalysis.h"
#include "engine/detect/Detection.h"

namespace {

// A candidate has at least seven tenths of the largest brightness. The product wraps in 32 bits: meant so.
uint32_t CandidateBrightness(const AnalysisImage &image) {
    return image.maxBrightness * 7u / 10;
}

bool IsCandidate(const PixelSample &p, uint32_t threshold) {
    return IsPixelSelected(p) && PixelBrightness(p) >= threshold;
}

// False when cancelled.
bool ScanRow(WorkerContext *worker, int32_t y, uint32_t threshold) {
    const DetectionShared &shared = *worker->shared;
    for (int32_t x = worker->band.left; x < worker->band.right; ++x) {
        if (shared.cancel->load(std::memory_order_relaxed))
            return false;
        if (IsCandidate(FetchPixel(shared.image, x, y), threshold))
            AnalyzeCandidate(worker, x, y);
    }
    return true;
}

} // namespace

void ScanBand(WorkerContext *worker) {
    const uint32_t threshold = CandidateBrightness(worker->shared->image);
    for (int32_t y = worker->band.top; y < worker->band.bottom && ScanRow(worker, y, threshold); ++y)
        worker->shared->rowsDone.fetch_add(1, std::memory_order_relaxed);
}
