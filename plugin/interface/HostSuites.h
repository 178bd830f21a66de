// The host's named suites: acquired from the basic suite by name and version, released with the same pair as
// often as acquired.
#pragma once

#include "plugin/interface/HostTypes.h"

using ActionDescriptor = void *; // opaque; null: none
using ActionList = void *;
using ActionReference = void *;
using HostZString = void *;

constexpr char kPropertySuiteName[] = "Photoshop Property Suite for Plug-ins";
constexpr int32_t kPropertySuiteVersion = 1;
constexpr char kErrorSuiteName[] = "Photoshop Error Suite for Plug-ins";
constexpr int32_t kErrorSuiteVersion = 1;
constexpr char kDescriptorRegistrySuiteName[] = "61e608b0-40fd-11d1-8da3-00c04fd5f7ee";
constexpr int32_t kDescriptorRegistrySuiteVersion = 1;
constexpr char kActionDescriptorSuiteName[] = "df135115-c769-11d0-8079-00c04fd7ec47";
constexpr int32_t kActionDescriptorSuiteVersion = 2;

// The suite results that a host of our own gives; a filter only tests for non-zero.
constexpr SuiteResult kSuiteBadParameter = 0x5061726D;   // 'Parm'
constexpr SuiteResult kSuiteNotFound = 0x53214664;       // 'S!Fd'
constexpr SuiteResult kSuiteNotImplemented = 0x21494D50; // '!IMP'

struct SPBasicSuite {
    SuiteResult (*AcquireSuite)(const char *name, int32_t version, const void **suite);
    SuiteResult (*ReleaseSuite)(const char *name, int32_t version);
    int32_t (*IsEqual)(const char *a, const char *b);
    SuiteResult (*AllocateBlock)(size_t size, void **block);
    SuiteResult (*FreeBlock)(void *block);
    SuiteResult (*ReallocateBlock)(void *block, size_t newSize, void **newBlock);
    SuiteResult (*Undefined)();
};

// The host copies the text; the filter then returns kErrReportString.
struct ErrorSuite {
    SuiteResult (*SetErrorFromPString)(const HostString255 text);
    SuiteResult (*SetErrorFromCString)(const char *text);
    SuiteResult (*SetErrorFromZString)(HostZString text);
};
constexpr HostResult kErrReportString = -30904;

// Keeps a copy of a descriptor under a key between runs. Get hands out a copy that the caller frees; success
// with a null descriptor means that nothing is stored.
struct DescriptorRegistrySuite {
    HostResult (*Register)(const char *key, ActionDescriptor descriptor, HostBoolean isPersistent);
    HostResult (*Erase)(const char *key);
    HostResult (*Get)(const char *key, ActionDescriptor *descriptor);
};

// GetObjectValue and GetGlobalObjectValue carry their own names because windows.h defines GetObject as a
// macro.
struct ActionDescriptorSuite {
    HostResult (*Make)(ActionDescriptor *descriptor);
    HostResult (*Free)(ActionDescriptor descriptor);
    HostResult (*GetType)(ActionDescriptor descriptor, FourCharCode key, FourCharCode *type);
    HostResult (*GetKey)(ActionDescriptor descriptor, uint32_t index, FourCharCode *key);
    HostResult (*HasKey)(ActionDescriptor descriptor, FourCharCode key, HostBoolean *hasKey);
    HostResult (*GetCount)(ActionDescriptor descriptor, uint32_t *count);
    HostResult (*IsEqual)(ActionDescriptor descriptor, ActionDescriptor other, HostBoolean *isEqual);
    HostResult (*Erase)(ActionDescriptor descriptor, FourCharCode key);
    HostResult (*Clear)(ActionDescriptor descriptor);
    HostResult (*PutInteger)(ActionDescriptor descriptor, FourCharCode key, int32_t value);
    HostResult (*PutFloat)(ActionDescriptor descriptor, FourCharCode key, double value);
    HostResult (*PutUnitFloat)(ActionDescriptor descriptor, FourCharCode key, FourCharCode unit,
                               double value);
    HostResult (*PutString)(ActionDescriptor descriptor, FourCharCode key, const char *value);
    HostResult (*PutBoolean)(ActionDescriptor descriptor, FourCharCode key, HostBoolean value);
    HostResult (*PutList)(ActionDescriptor descriptor, FourCharCode key, ActionList value);
    HostResult (*PutObject)(ActionDescriptor descriptor, FourCharCode key, FourCharCode type,
                            ActionDescriptor value);
    HostResult (*PutGlobalObject)(ActionDescriptor descriptor, FourCharCode key, FourCharCode type,
                                  ActionDescriptor value);
    HostResult (*PutEnumerated)(ActionDescriptor descriptor, FourCharCode key, FourCharCode type,
                                FourCharCode value);
    HostResult (*PutReference)(ActionDescriptor descriptor, FourCharCode key, ActionReference value);
    HostResult (*PutClass)(ActionDescriptor descriptor, FourCharCode key, FourCharCode value);
    HostResult (*PutGlobalClass)(ActionDescriptor descriptor, FourCharCode key, FourCharCode value);
    HostResult (*PutAlias)(ActionDescriptor descriptor, FourCharCode key, HostHandle value);
    HostResult (*GetInteger)(ActionDescriptor descriptor, FourCharCode key, int32_t *value);
    HostResult (*GetFloat)(ActionDescriptor descriptor, FourCharCode key, double *value);
    HostResult (*GetUnitFloat)(ActionDescriptor descriptor, FourCharCode key, FourCharCode *unit,
                               double *value);
    HostResult (*GetStringLength)(ActionDescriptor descriptor, FourCharCode key, uint32_t *length);
    HostResult (*GetString)(ActionDescriptor descriptor, FourCharCode key, char *value, uint32_t maxLength);
    HostResult (*GetBoolean)(ActionDescriptor descriptor, FourCharCode key, HostBoolean *value);
    HostResult (*GetList)(ActionDescriptor descriptor, FourCharCode key, ActionList *value);
    HostResult (*GetObjectValue)(ActionDescriptor descriptor, FourCharCode key, FourCharCode *type,
                                 ActionDescriptor *value);
    HostResult (*GetGlobalObjectValue)(ActionDescriptor descriptor, FourCharCode key, FourCharCode *type,
                                       ActionDescriptor *value);
    HostResult (*GetEnumerated)(ActionDescriptor descriptor, FourCharCode key, FourCharCode *type,
                                FourCharCode *value);
    HostResult (*GetReference)(ActionDescriptor descriptor, FourCharCode key, ActionReference *value);
    HostResult (*GetClass)(ActionDescriptor descriptor, FourCharCode key, FourCharCode *value);
    HostResult (*GetGlobalClass)(ActionDescriptor descriptor, FourCharCode key, FourCharCode *value);
    HostResult (*GetAlias)(ActionDescriptor descriptor, FourCharCode key, HostHandle *value);
    HostResult (*HasKeys)(ActionDescriptor descriptor, FourCharCode *keys, HostBoolean *hasKeys);
    HostResult (*PutIntegers)(ActionDescriptor descriptor, FourCharCode key, uint32_t count,
                              const int32_t *values);
    HostResult (*GetIntegers)(ActionDescriptor descriptor, FourCharCode key, uint32_t count, int32_t *values);
    HostResult (*AsHandle)(ActionDescriptor descriptor, HostHandle *handle);
    HostResult (*HandleToDescriptor)(HostHandle handle, ActionDescriptor *descriptor);
    HostResult (*PutZString)(ActionDescriptor descriptor, FourCharCode key, HostZString value);
    HostResult (*GetZString)(ActionDescriptor descriptor, FourCharCode key, HostZString *value);
    HostResult (*PutData)(ActionDescriptor descriptor, FourCharCode key, int32_t length, const void *data);
    HostResult (*GetDataLength)(ActionDescriptor descriptor, FourCharCode key, int32_t *length);
    // Has no size argument: ask for the length first.
    HostResult (*GetData)(ActionDescriptor descriptor, FourCharCode key, void *data);
};

static_assert(sizeof(SPBasicSuite) == 56 && offsetof(SPBasicSuite, ReleaseSuite) == 8 &&
              offsetof(SPBasicSuite, Undefined) == 48);
static_assert(sizeof(ErrorSuite) == 24 && offsetof(ErrorSuite, SetErrorFromCString) == 8);
static_assert(sizeof(DescriptorRegistrySuite) == 24 && offsetof(DescriptorRegistrySuite, Get) == 16);
static_assert(
    sizeof(ActionDescriptorSuite) == 368 && offsetof(ActionDescriptorSuite, Free) == 8 &&
    offsetof(ActionDescriptorSuite, GetType) == 16 && offsetof(ActionDescriptorSuite, HasKey) == 32 &&
    offsetof(ActionDescriptorSuite, PutInteger) == 72 &&
    offsetof(ActionDescriptorSuite, PutEnumerated) == 136 &&
    offsetof(ActionDescriptorSuite, GetInteger) == 176 &&
    offsetof(ActionDescriptorSuite, GetObjectValue) == 232 &&
    offsetof(ActionDescriptorSuite, GetAlias) == 280 && offsetof(ActionDescriptorSuite, HasKeys) == 288 &&
    offsetof(ActionDescriptorSuite, PutIntegers) == 296 && offsetof(ActionDescriptorSuite, AsHandle) == 312 &&
    offsetof(ActionDescriptorSuite, PutZString) == 328 && offsetof(ActionDescriptorSuite, PutData) == 344 &&
    offsetof(ActionDescriptorSuite, GetDataLength) == 352 && offsetof(ActionDescriptorSuite, GetData) == 360);
