// The picture library libvips, loaded from the program's own folder when the first picture file needs it. Its
// functions stand here under their own names; images of its own are VipsImage, counted by its object system.
#pragma once

#include "host/base/ByteStream.h"

#include <cstddef>
#include <memory>
#include <string>

// The library's records, opaque here.
struct _VipsImage; // NOLINT(bugprone-reserved-identifier): its own name
using VipsImage = _VipsImage;
struct _VipsRegion; // NOLINT(bugprone-reserved-identifier): its own name
using VipsRegion = _VipsRegion;
struct _VipsSource; // NOLINT(bugprone-reserved-identifier): its own name
using VipsSource = _VipsSource;
struct _GValue; // NOLINT(bugprone-reserved-identifier): its own name
using GValue = _GValue;

namespace host {

// Values of the library's enumerations.
enum VipsSamples { // formats of samples
    kVipsUChar = 0,
    kVipsUShort = 2,
    kVipsUInt = 4,
    kVipsFloat = 6,
    kVipsDouble = 8
};
enum VipsMeaning { // what the samples stand for
    kVipsGrey = 1,
    kVipsLab = 13,
    kVipsCmyk = 15,
    kVipsLabQ = 16,
    kVipsLabS = 21,
    kVipsSRgb = 22,
    kVipsRgb16 = 25,
    kVipsGrey16 = 26
};
constexpr int kVipsExclusiveOr = 2;
constexpr int kVipsSequential = 1; // access
constexpr int kVipsFailOnTruncated = 1, kVipsFailOnError = 2, kVipsFailOnWarning = 3;
constexpr int kVipsSubsampleOn = 1, kVipsSubsampleOff = 2;

using VipsFieldVisit = void *(*)(VipsImage *image, const char *name, GValue *value, void *data);

// Those that end in an ellipsis take pairs of an option's name and value, and a null pointer at the end.
struct VipsLibrary {
    int (*vips_init)(const char *program);
    void (*vips_cache_set_max)(int operations);
    const char *(*vips_error_buffer)();
    void (*vips_error_clear)();
    void (*g_object_unref)(void *object);
    void (*g_free)(void *memory);
    void *(*g_log_set_default_handler)(void (*log)(const char *, int, const char *, void *), void *data);

    VipsSource *(*vips_source_new_from_memory)(const void *data, size_t length); // which must outlive it
    VipsSource *(*vips_source_new_from_file)(const char *path);
    int (*vips_jpegload_source)(VipsSource *source, VipsImage **out, ...);
    int (*vips_pngload_source)(VipsSource *source, VipsImage **out, ...);
    int (*vips_tiffload_source)(VipsSource *source, VipsImage **out, ...);
    int (*vips_webpload_source)(VipsSource *source, VipsImage **out, ...);
    int (*vips_heifload_source)(VipsSource *source, VipsImage **out, ...);
    int (*vips_gifload_source)(VipsSource *source, VipsImage **out, ...);
    VipsImage *(*vips_image_new_from_memory)(const void *data, size_t size, int width, int height, int bands,
                                             int samples);
    int (*vips_image_get_width)(const VipsImage *image);
    int (*vips_image_get_height)(const VipsImage *image);
    int (*vips_image_get_bands)(const VipsImage *image);
    int (*vips_image_get_format)(const VipsImage *image);
    int (*vips_image_get_interpretation)(const VipsImage *image);
    int (*vips_image_get_orientation)(VipsImage *image);
    int (*vips_image_get_n_pages)(VipsImage *image);
    double (*vips_image_get_xres)(const VipsImage *image);
    double (*vips_image_get_yres)(const VipsImage *image);
    size_t (*vips_image_get_typeof)(const VipsImage *image, const char *name);
    int (*vips_image_get_blob)(const VipsImage *image, const char *name, const void **data, size_t *length);
    int (*vips_image_get_string)(const VipsImage *image, const char *name, const char **text);
    void (*vips_image_set_blob_copy)(VipsImage *image, const char *name, const void *data, size_t length);
    void (*vips_image_set_int)(VipsImage *image, const char *name, int number);
    void (*vips_image_set)(VipsImage *image, const char *name, GValue *value);
    int (*vips_image_remove)(VipsImage *image, const char *name);
    void *(*vips_image_map)(VipsImage *image, VipsFieldVisit visit, void *data);
    void (*vips_image_set_progress)(VipsImage *image, int on);
    void (*vips_image_set_kill)(VipsImage *image, int on);
    unsigned long (*g_signal_connect_data)(void *object, const char *signal, void (*handler)(), void *data,
                                           void *destroy, int flags);

    VipsRegion *(*vips_region_new)(VipsImage *image);
    unsigned char *(*vips_region_fetch)(VipsRegion *region, int left, int top, int width, int height,
                                        size_t *length);

    int (*vips_black)(VipsImage **out, int width, int height, ...);
    int (*vips_copy)(VipsImage *in, VipsImage **out, ...);
    int (*vips_cast)(VipsImage *in, VipsImage **out, int samples, ...);
    int (*vips_boolean_const)(VipsImage *in, VipsImage **out, int operation, const double *constants,
                              int count, ...);
    int (*vips_linear)(VipsImage *in, VipsImage **out, const double *factors, const double *offsets,
                       int count, ...);
    int (*vips_linear1)(VipsImage *in, VipsImage **out, double factor, double offset, ...);
    int (*vips_bandjoin)(VipsImage **in, VipsImage **out, int count, ...);
    int (*vips_colourspace)(VipsImage *in, VipsImage **out, int meaning, ...);
    int (*vips_icc_transform)(VipsImage *in, VipsImage **out, const char *profile, ...);
    int (*vips_thumbnail_image)(VipsImage *in, VipsImage **out, int width, ...);
    int (*vips_jpegsave_buffer)(VipsImage *in, void **data, size_t *length, ...);
    int (*vips_pngsave_buffer)(VipsImage *in, void **data, size_t *length, ...);
    int (*vips_tiffsave)(VipsImage *in, const char *path, ...);
    int (*vips_webpsave_buffer)(VipsImage *in, void **data, size_t *length, ...);
    int (*vips_heifsave_buffer)(VipsImage *in, void **data, size_t *length, ...);
    int (*vips_gifsave_buffer)(VipsImage *in, void **data, size_t *length, ...);
};

// The loaded library, or null with a reason. It stays until the process ends, since it keeps threads of its
// own. Any thread.
const VipsLibrary *LoadVips(std::string *why);
// As LoadVips, after a call of it that gave the library.
const VipsLibrary &Vips();

// The bytes of a field; empty when the image has none of that name.
Bytes BlobOf(VipsImage *image, const char *name);

// What went wrong in the library since it was asked last, in one line.
std::string TakeVipsError();

// Holds one reference to an object of the library.
struct VipsRelease {
    void operator()(void *object) const;
};
using ImageHandle = std::unique_ptr<VipsImage, VipsRelease>;

} // namespace host
