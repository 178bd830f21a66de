#include "render/stamp/StarStamp.h"

#include "diag/BufferUsage.h"

#include <algorithm>
#include <limits>

namespace {

constexpr size_t kStampBytes = (sizeof(Arm) + sizeof(KeptArm)) * kMaxStampArms;

// The states are read two at a time: one more than there are distances.
size_t StateBytes(uint32_t count) {
    return (size_t{count} + 1) * sizeof(uint16_t);
}

// No pixel of an arm lies further out: within the limits, or as far out across as along.
uint32_t FurthestDistance(const StampContext &context) {
    const int32_t furthest = std::max(context.limitX, context.limitY) + 16;
    return MeasureDistance(furthest, furthest);
}

bool AllocateStates(uint32_t count, StarTables *tables) {
    if (count <= tables->stateCount)
        return true;
    // A block that the old end cut short goes on.
    tables->statesFilled.reset((tables->stateCount - (tables->stateCount > 0)) / kBlockDistances);
    const size_t oldBytes = tables->stateOfDistance ? StateBytes(tables->stateCount) : 0;
    void *grown = tables->stateOfDistance
                      ? CountedRealloc(tables->stateOfDistance, oldBytes, StateBytes(count))
                      : CountedAlloc(StateBytes(count));
    if (!grown)
        return false;
    tables->stateOfDistance = static_cast<uint16_t *>(grown);
    tables->stateCount = count;
    return true;
}

void DropStates(StarTables *tables) {
    if (tables->stateOfDistance)
        CountedFree(tables->stateOfDistance, StateBytes(tables->stateCount));
    tables->stateOfDistance = nullptr;
    tables->stateCount = 0;
    tables->statesFilled.reset();
}

bool SameKey(const SpikeTableKey &a, const SpikeTableKey &b) {
    return SameProfileInputs(a.inputs, b.inputs) && a.least == b.least && a.furthest == b.furthest;
}

// A place for one more table; kMaxStampArms when there is none.
int32_t FindFreeTable(const StarTables &tables) {
    int32_t i = 0;
    while (i < tables.count && tables.values[i].count > 0)
        ++i;
    return i;
}

// The place of this key's table, described when there is none yet; kMaxStampArms when there is no room.
int32_t PlaceValues(const SpikeTableKey &key, StarTables *tables) {
    for (int32_t i = 0; i < tables->count; ++i)
        if (tables->values[i].count > 0 && SameKey(tables->keys[i], key))
            return i;
    if (FindFreeTable(*tables) == kMaxStampArms)
        DropUnusedTables(tables);
    const int32_t place = FindFreeTable(*tables);
    if (place == kMaxStampArms)
        return place;
    tables->keys[place] = key;
    tables->values[place] = DescribeSpike(key.inputs, key.least, key.furthest);
    tables->count = std::max(tables->count, place + 1);
    return place;
}

// The table of this key, with the room that the context needs for it. Null when memory ran out.
const ValueTable *FindValues(const StampContext &context, const SpikeTableKey &key, StarTables *tables) {
    const int32_t place = PlaceValues(key, tables);
    if (place == kMaxStampArms)
        return nullptr;
    ValueTable *values = &tables->values[place];
    tables->isUsed[place] = true;
    if (context.needsTables && !values->values) {
        tables->valuesFilled[place].reset();
        if (!AllocateValueTable(values->count - 1, values))
            return nullptr;
    }
    return !context.needsTables || AllocateStates(values->count, tables) ? values : nullptr;
}

bool AllocateArms(StarStamp *stamp) {
    void *block = CountedAlloc(kStampBytes);
    if (!block)
        return false;
    stamp->arms = static_cast<Arm *>(block);
    stamp->kept = reinterpret_cast<KeptArm *>(stamp->arms + kMaxStampArms);
    std::fill_n(stamp->kept, kMaxStampArms, KeptArm{});
    return true;
}

IntRect JoinRects(const IntRect &a, const IntRect &b) {
    if (IsEmptyRect(a))
        return b;
    return IntRect{std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
                   std::max(a.bottom, b.bottom)};
}

} // namespace

bool AddArm(const StampContext &context, StarTables *tables, int32_t px, int32_t py, const ArmShape &shape,
            const std::atomic<uint8_t> &abort, StarStamp *stamp) {
    if (shape.length < 1 || shape.brightness < context.floor / 4 || stamp->count == kMaxStampArms)
        return true;
    if (!stamp->arms && !AllocateArms(stamp))
        return false;
    const SpikeProfileInputs inputs = {shape.length, shape.decay, shape.brightness, context.settings.scale,
                                       context.diagonal};
    const ValueTable *values =
        FindValues(context, {inputs, context.floor / 4, FurthestDistance(context)}, tables);
    if (!values)
        return false;
    const Arm arm = MakeArm(context, px, py, shape, values, abort);
    if (arm.walked.from > arm.walked.to)
        return true;
    stamp->arms[stamp->count++] = arm;
    stamp->box = JoinRects(stamp->box, arm.box);
    return true;
}

void EmptyStamp(StarStamp *stamp) {
    if (stamp->kept)
        std::for_each(stamp->kept, stamp->kept + kMaxStampArms, [](KeptArm &kept) { DropKeptArm(&kept); });
    stamp->count = 0;
    stamp->keepsRows = false;
    stamp->box = IntRect{0, 0, 0, 0};
}

void FreeStamp(StarStamp *stamp) {
    EmptyStamp(stamp);
    CountedFree(stamp->arms, stamp->arms ? kStampBytes : 0);
    *stamp = StarStamp{};
}

void DropStarTables(StarTables *tables) {
    for (int32_t i = 0; i < tables->count; ++i)
        FreeValueTable(&tables->values[i]);
    DropStates(tables);
    tables->count = 0;
}

void DropUnusedTables(StarTables *tables) {
    for (int32_t i = 0; i < tables->count; ++i)
        if (!tables->isUsed[i])
            FreeValueTable(&tables->values[i]);
}

void BeginStars(const StampContext &context, StarTables *tables) {
    std::fill_n(tables->isUsed, kMaxStampArms, false);
    if (!SameRainbowStates(tables->rainbow, context))
        DropStates(tables);
    tables->rainbow = context;
    for (uint32_t state = 0; state < kRainbowStates; ++state) {
        tables->factors[state] = FactorsOfState(context, state);
        for (int32_t c = 0; c < 3; ++c)
            tables->glowFactors[state].factor[c] =
                static_cast<float>(tables->factors[state].factor[c] * 0x1p-32);
    }
    tables->glowRainbow = {PhasesPerDistance(context), tables->glowFactors, &tables->rainbow};
}

int64_t StampBytes(const StarStamp &stamp) {
    int64_t bytes = stamp.arms ? static_cast<int64_t>(kStampBytes) : 0;
    for (int32_t i = 0; i < stamp.count && stamp.kept; ++i)
        bytes += stamp.kept[i].bytes;
    return bytes;
}

int64_t TableBytes(const StarTables &tables) {
    size_t bytes = tables.stateOfDistance ? StateBytes(tables.stateCount) : 0;
    for (int32_t i = 0; i < tables.count; ++i)
        bytes += tables.values[i].values ? size_t{tables.values[i].count} * sizeof(uint32_t) : 0;
    return static_cast<int64_t>(bytes);
}
