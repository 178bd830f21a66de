#include "tests/host/InvertServices.h"

#include "host/services/HostServices.h"

#include <windows.h>

#include <cstring>

namespace {

constexpr HostResult kUnserved = -37;
constexpr FourCharCode kKeyNote = 0x6E6F7465; // 'note'
constexpr FourCharCode kKeyText = 0x54455854; // 'TEXT', as getKeyProc's type

HostRect32 Area(const FilterRecord &record) {
    return record.bigDocumentData->filterRect32;
}

size_t RowLength(const FilterRecord &record) {
    return static_cast<size_t>((Area(record).right - Area(record).left) * Planes(record) * record.depth / 8);
}

HostRect Narrow(const HostRect32 &r) {
    return {static_cast<int16_t>(r.top), static_cast<int16_t>(r.left), static_cast<int16_t>(r.bottom),
            static_cast<int16_t>(r.right)};
}

bool gClaims32; // what the filter believes to have told the host

// In the coordinates that the filter has claimed.
void AskForRow(FilterRecord &record, int32_t y, bool wantsInput) {
    BigDocumentStruct &big = *record.bigDocumentData;
    const HostRect32 row = {y, Area(record).left, y + 1, Area(record).right};
    const HostRect32 in = wantsInput ? row : HostRect32{};
    record.inLoPlane = record.outLoPlane = 0;
    record.inHiPlane = record.outHiPlane = static_cast<int16_t>(Planes(record) - 1);
    big.inRect32 = gClaims32 ? in : HostRect32{};
    big.outRect32 = gClaims32 ? row : HostRect32{};
    record.inRect = gClaims32 ? HostRect{} : Narrow(in);
    record.outRect = gClaims32 ? HostRect{} : Narrow(row);
}

void AskForNothing(FilterRecord &record) {
    record.inRect = record.outRect = {};
    record.bigDocumentData->inRect32 = record.bigDocumentData->outRect32 = {};
}

void InvertRowFrom(const FilterRecord &record, void *from) {
    FilterRecord row = record;
    row.inData = from;
    InvertBuffers(row, (Area(record).right - Area(record).left) * Planes(record), 1);
}

using RowAction = HostResult (*)(FilterRecord &record);

HostResult PlayRows(FilterRecord &record, bool wantsInput, RowAction action) {
    HostResult result = kNoError;
    for (int32_t y = Area(record).top; y < Area(record).bottom && result == kNoError; y++) {
        AskForRow(record, y, wantsInput);
        result = record.advanceState();
        if (result == kNoError)
            result = action(record);
    }
    AskForNothing(record);
    return result;
}

HostResult CopyRow(FilterRecord &record) {
    std::memcpy(record.outData, record.inData, RowLength(record));
    return kNoError;
}

HostResult InvertOutput(FilterRecord &record) {
    InvertRowFrom(record, record.outData);
    return kNoError;
}

HostResult InvertRow(FilterRecord &record) {
    InvertRowFrom(record, record.inData);
    return kNoError;
}

// The first pass copies; the second asks for the same rows again and inverts what it wrote there.
HostResult WriteTwice(FilterRecord &record) {
    const HostResult result = PlayRows(record, true, CopyRow);
    return result == kNoError ? PlayRows(record, false, InvertOutput) : result;
}

// Claims 32-bit coordinates in the middle of Start, and only then; Continue relies on it.
HostResult ClaimLate(int16_t selector, FilterRecord &record) {
    static int32_t next;
    if (selector == kSelectorStart) {
        next = Area(record).top;
        gClaims32 = false;
        AskForRow(record, next++, true);
        if (const HostResult result = record.advanceState())
            return result;
        record.bigDocumentData->PluginUsing32BitCoordinates = gClaims32 = true;
    }
    if (selector == kSelectorStart || selector == kSelectorContinue) {
        InvertRow(record);
        if (next < Area(record).bottom)
            AskForRow(record, next++, true);
        else
            AskForNothing(record);
    }
    return kNoError;
}

template <typename Suite> const Suite *Acquire(FilterRecord &record, const char *name, int32_t version) {
    const void *suite = nullptr;
    record.sSPBasic->AcquireSuite(name, version, &suite);
    return static_cast<const Suite *>(suite);
}

// What a text of the played descriptor says; empty without one.
std::string PlayedText(FilterRecord &record) {
    const ReadDescriptorProcs &procs = *record.descriptorParameters->readDescriptorProcs;
    const ReadDescriptor reader =
        procs.openReadDescriptorProc(record.descriptorParameters->descriptor, nullptr);
    std::string text;
    FourCharCode key, type;
    int32_t flags;
    HostHandle handle = nullptr;
    while (reader && procs.getKeyProc(reader, &key, &type, &flags))
        if (key == kKeyNote && type == kKeyText && procs.getTextProc(reader, &handle) == kNoError) {
            text.assign(*handle, static_cast<size_t>(record.handleProcs->getSizeProc(handle)));
            record.handleProcs->disposeProc(handle);
        }
    if (reader)
        procs.closeReadDescriptorProc(reader);
    return text;
}

HostResult RecordText(FilterRecord &record) {
    PIDescriptorParameters &parameters = *record.descriptorParameters;
    const WriteDescriptorProcs &procs = *parameters.writeDescriptorProcs;
    const WriteDescriptor writer = procs.openWriteDescriptorProc();
    const HostResult result = procs.putTextProc(writer, kKeyNote, record.parameters);
    if (parameters.descriptor)
        record.handleProcs->disposeProc(parameters.descriptor);
    const HostResult closed = procs.closeWriteDescriptorProc(writer, &parameters.descriptor);
    return result ? result : closed;
}

// Its parameters grow in Prepare and shrink in Finish, where they are recorded as text.
HostResult Remember(int16_t selector, FilterRecord &record) {
    constexpr int32_t kShort = 4, kLong = 70000;
    const HandleProcs &handles = *record.handleProcs;
    const auto isKept = [&](int32_t size) {
        return handles.getSizeProc(record.parameters) == size &&
               std::memcmp(*record.parameters, "kept", kShort) == 0;
    };
    if (selector == kSelectorPrepare) {
        const std::string played = PlayedText(record);
        if (played != (record.parameters ? "kept" : ""))
            return kUnserved;
        if (!record.parameters)
            record.parameters = handles.newProc(kShort);
        std::memcpy(*record.parameters, "kept", kShort);
        return handles.setSizeProc(record.parameters, kLong);
    }
    if (selector == kSelectorStart) {
        (*record.parameters)[kLong - 1] = 1;
        return isKept(kLong) ? PlayRows(record, true, InvertRow) : kUnserved;
    }
    if (selector != kSelectorFinish || handles.setSizeProc(record.parameters, kShort) || !isKept(kShort))
        return kUnserved;
    return RecordText(record);
}

// A row through the host's buffers, the buffer suite's, a block and a handle, and back.
HostResult InvertThroughMemory(FilterRecord &record) {
    const auto &procs = *static_cast<const host::BufferProcs *>(record.bufferProcs);
    const auto *buffers = Acquire<host::BufferSuite>(record, host::kBufferSuiteName, 1);
    const auto *handles = Acquire<host::HandleSuite2>(record, host::kHandleSuiteName, 2);
    if (!buffers || !handles)
        return kUnserved;
    const size_t length = RowLength(record);
    uint32_t size = static_cast<uint32_t>(length);
    host::BufferId buffer = nullptr;
    void *block = nullptr;
    char *address = nullptr;
    HostBoolean wasLocked = 1;
    HostResult result = procs.allocateProc(static_cast<int32_t>(length), &buffer);
    char *suiteBuffer = buffers->New(&size, size);
    record.sSPBasic->AllocateBlock(1, &block);
    record.sSPBasic->ReallocateBlock(block, length, &block);
    HostHandle handle = handles->New(static_cast<int32_t>(length));
    handles->SetLock(handle, 1, &address, &wasLocked);
    if (!result && suiteBuffer && buffers->GetSize(suiteBuffer) == length && block && address && !wasLocked) {
        std::memcpy(procs.lockProc(buffer, 0), record.inData, length);
        std::memcpy(suiteBuffer, procs.lockProc(buffer, 0), length);
        std::memcpy(block, suiteBuffer, length);
        std::memcpy(address, block, length);
        InvertRowFrom(record, address);
        procs.unlockProc(buffer);
        procs.unlockProc(buffer);
    } else {
        result = kUnserved;
    }
    handles->SetLock(handle, 0, &address, &wasLocked);
    handles->Dispose(handle);
    record.sSPBasic->FreeBlock(block);
    buffers->Dispose(&suiteBuffer);
    procs.freeProc(buffer);
    record.sSPBasic->ReleaseSuite(host::kHandleSuiteName, 2);
    record.sSPBasic->ReleaseSuite(host::kBufferSuiteName, 1);
    return result;
}

// The lower right pixel of a 2 by 2 map must come out at (3, 1), and nothing beside it.
HostResult ShowPixel(FilterRecord &record) {
    constexpr COLORREF kBack = RGB(9, 9, 9);
    uint8_t samples[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 200, 100};
    const host::PixelMap map = {0, {0, 0, 2, 2}, 3, 6, 3, 1, samples, nullptr, nullptr, 0, 0};
    const HostRect32 corner = {1, 1, 2, 2};
    const HDC dc = CreateCompatibleDC(nullptr);
    BITMAPINFO info = {};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), 5, 4, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void *bits = nullptr;
    const HBITMAP bitmap = CreateDIBSection(dc, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    const HGDIOBJ old = SelectObject(dc, bitmap);
    SetPixel(dc, 4, 1, kBack);
    const auto show = reinterpret_cast<host::DisplayPixels>(record.displayPixels);
    const HostResult result = show(&map, &corner, 1, 3, dc);
    const bool isShown = GetPixel(dc, 3, 1) == RGB(10, 200, 100) && GetPixel(dc, 4, 1) == kBack;
    SelectObject(dc, old);
    DeleteObject(bitmap);
    DeleteDC(dc);
    return result == kNoError && isShown ? kNoError : kUnserved;
}

HostResult UseServices(FilterRecord &record) {
    if (!record.bufferProcs || !record.displayPixels)
        return kUnserved;
    const HostResult result = ShowPixel(record);
    return result == kNoError ? PlayRows(record, true, InvertThroughMemory) : result;
}

} // namespace

bool PlayServices(const std::string &order, int16_t selector, FilterRecord &record, int16_t *result) {
    if (order == "late")
        *result = ClaimLate(selector, record);
    else if (order == "remember")
        *result = selector == kSelectorParameters ? kNoError : Remember(selector, record);
    else if (order == "twice")
        *result = selector == kSelectorStart ? WriteTwice(record) : kNoError;
    else if (order == "services")
        *result = selector == kSelectorStart ? UseServices(record) : kNoError;
    else
        return false;
    return true;
}
