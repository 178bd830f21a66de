// The host's scripting interface: how a filter's parameters are played from and recorded into a descriptor.
#pragma once

#include "plugin/interface/HostTypes.h"

using ReadDescriptor = void *;  // opaque; null: none
using WriteDescriptor = void *; // opaque; null: none

// Value types seen by getKeyProc.
constexpr FourCharCode kTypeBoolean = 0x626F6F6C;    // 'bool'
constexpr FourCharCode kTypeInteger = 0x6C6F6E67;    // 'long'
constexpr FourCharCode kTypeFloat = 0x646F7562;      // 'doub'
constexpr FourCharCode kTypeUnitFloat = 0x556E7446;  // 'UntF'
constexpr FourCharCode kTypeEnumerated = 0x656E756D; // 'enum'
constexpr FourCharCode kTypeRawData = 0x74647461;    // 'tdta'
// What the host writes over each key of the caller's array that it has found.
constexpr FourCharCode kKeyFound = 0x6E756C6C; // 'null'

constexpr FourCharCode kUnitPercent = 0x23507263; // '#Prc'
constexpr FourCharCode kUnitAngle = 0x23416E67;   // '#Ang'

// Values of playInfo.
constexpr int16_t kPlayDontDisplay = 0, kPlayDisplay = 1, kPlaySilent = 2;
// Values of recordInfo.
constexpr int16_t kRecordDialogOptional = 0, kRecordDialogRequired = 1, kRecordDialogNone = 2;

struct DescriptorSimpleReference {
    FourCharCode desiredClass;
    FourCharCode keyForm;
    HostString255 name;
    int32_t index;
    FourCharCode type;
    FourCharCode value;
};

struct ReadDescriptorProcs {
    int16_t readDescriptorProcsVersion;
    int16_t numReadDescriptorProcs;
    // `keys` ends with 0, must be writable and must live until the reader is closed.
    ReadDescriptor (*openReadDescriptorProc)(HostHandle descriptor, FourCharCode *keys);
    HostResult (*closeReadDescriptorProc)(ReadDescriptor reader);
    HostBoolean (*getKeyProc)(ReadDescriptor reader, FourCharCode *key, FourCharCode *type, int32_t *flags);
    HostResult (*getIntegerProc)(ReadDescriptor reader, int32_t *value);
    HostResult (*getFloatProc)(ReadDescriptor reader, double *value);
    HostResult (*getUnitFloatProc)(ReadDescriptor reader, FourCharCode *unit, double *value);
    HostResult (*getBooleanProc)(ReadDescriptor reader, HostBoolean *value);
    HostResult (*getTextProc)(ReadDescriptor reader, HostHandle *value);
    HostResult (*getAliasProc)(ReadDescriptor reader, HostHandle *value);
    HostResult (*getEnumeratedProc)(ReadDescriptor reader, FourCharCode *value);
    HostResult (*getClassProc)(ReadDescriptor reader, FourCharCode *value);
    HostResult (*getSimpleReferenceProc)(ReadDescriptor reader, DescriptorSimpleReference *value);
    HostResult (*getObjectProc)(ReadDescriptor reader, FourCharCode *type, HostHandle *value);
    HostResult (*getCountProc)(ReadDescriptor reader, uint32_t *count);
    HostResult (*getStringProc)(ReadDescriptor reader, HostString255 *value);
    HostResult (*getPinnedIntegerProc)(ReadDescriptor reader, int32_t min, int32_t max, int32_t *value);
    HostResult (*getPinnedFloatProc)(ReadDescriptor reader, const double *min, const double *max,
                                     double *value);
    HostResult (*getPinnedUnitFloatProc)(ReadDescriptor reader, const double *min, const double *max,
                                         FourCharCode *unit, double *value);
};

struct WriteDescriptorProcs {
    int16_t writeDescriptorProcsVersion;
    int16_t numWriteDescriptorProcs;
    WriteDescriptor (*openWriteDescriptorProc)();
    HostResult (*closeWriteDescriptorProc)(WriteDescriptor writer, HostHandle *descriptor);
    HostResult (*putIntegerProc)(WriteDescriptor writer, FourCharCode key, int32_t value);
    HostResult (*putFloatProc)(WriteDescriptor writer, FourCharCode key, const double *value);
    HostResult (*putUnitFloatProc)(WriteDescriptor writer, FourCharCode key, FourCharCode unit,
                                   const double *value);
    HostResult (*putBooleanProc)(WriteDescriptor writer, FourCharCode key, HostBoolean value);
    HostResult (*putTextProc)(WriteDescriptor writer, FourCharCode key, HostHandle value);
    HostResult (*putAliasProc)(WriteDescriptor writer, FourCharCode key, HostHandle value);
    HostResult (*putEnumeratedProc)(WriteDescriptor writer, FourCharCode key, FourCharCode type,
                                    FourCharCode value);
    HostResult (*putClassProc)(WriteDescriptor writer, FourCharCode key, FourCharCode value);
    HostResult (*putSimpleReferenceProc)(WriteDescriptor writer, FourCharCode key,
                                         const DescriptorSimpleReference *value);
    HostResult (*putObjectProc)(WriteDescriptor writer, FourCharCode key, FourCharCode type,
                                HostHandle value);
    HostResult (*putCountProc)(WriteDescriptor writer, FourCharCode key, uint32_t count);
    HostResult (*putStringProc)(WriteDescriptor writer, FourCharCode key, const HostString255 value);
    HostResult (*putScopedClassProc)(WriteDescriptor writer, FourCharCode key, FourCharCode value);
    HostResult (*putScopedObjectProc)(WriteDescriptor writer, FourCharCode key, FourCharCode type,
                                      HostHandle value);
};

struct PIDescriptorParameters {
    int16_t descriptorParametersVersion;
    int16_t playInfo;
    int16_t recordInfo; // set by the filter
    HostHandle descriptor;
    WriteDescriptorProcs *writeDescriptorProcs;
    ReadDescriptorProcs *readDescriptorProcs;
};

static_assert(sizeof(DescriptorSimpleReference) == 276 && offsetof(DescriptorSimpleReference, name) == 8 &&
              offsetof(DescriptorSimpleReference, index) == 264 &&
              offsetof(DescriptorSimpleReference, value) == 272);
static_assert(sizeof(PIDescriptorParameters) == 32 && offsetof(PIDescriptorParameters, playInfo) == 2 &&
              offsetof(PIDescriptorParameters, recordInfo) == 4 &&
              offsetof(PIDescriptorParameters, descriptor) == 8 &&
              offsetof(PIDescriptorParameters, writeDescriptorProcs) == 16 &&
              offsetof(PIDescriptorParameters, readDescriptorProcs) == 24);
static_assert(sizeof(ReadDescriptorProcs) == 152 &&
              offsetof(ReadDescriptorProcs, openReadDescriptorProc) == 8 &&
              offsetof(ReadDescriptorProcs, closeReadDescriptorProc) == 16 &&
              offsetof(ReadDescriptorProcs, getKeyProc) == 24 &&
              offsetof(ReadDescriptorProcs, getIntegerProc) == 32 &&
              offsetof(ReadDescriptorProcs, getFloatProc) == 40 &&
              offsetof(ReadDescriptorProcs, getUnitFloatProc) == 48 &&
              offsetof(ReadDescriptorProcs, getBooleanProc) == 56 &&
              offsetof(ReadDescriptorProcs, getTextProc) == 64 &&
              offsetof(ReadDescriptorProcs, getEnumeratedProc) == 80 &&
              offsetof(ReadDescriptorProcs, getObjectProc) == 104 &&
              offsetof(ReadDescriptorProcs, getStringProc) == 120 &&
              offsetof(ReadDescriptorProcs, getPinnedUnitFloatProc) == 144);
static_assert(sizeof(WriteDescriptorProcs) == 136 &&
              offsetof(WriteDescriptorProcs, openWriteDescriptorProc) == 8 &&
              offsetof(WriteDescriptorProcs, closeWriteDescriptorProc) == 16 &&
              offsetof(WriteDescriptorProcs, putIntegerProc) == 24 &&
              offsetof(WriteDescriptorProcs, putFloatProc) == 32 &&
              offsetof(WriteDescriptorProcs, putUnitFloatProc) == 40 &&
              offsetof(WriteDescriptorProcs, putBooleanProc) == 48 &&
              offsetof(WriteDescriptorProcs, putEnumeratedProc) == 72 &&
              offsetof(WriteDescriptorProcs, putObjectProc) == 96 &&
              offsetof(WriteDescriptorProcs, putScopedObjectProc) == 128);
