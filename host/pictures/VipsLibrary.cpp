#include "host/pictures/VipsLibrary.h"

#include "host/base/SystemText.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <mutex>

namespace host {

constexpr wchar_t kLibraryName[] = L"libvips-42.dll";
constexpr int kKeptOperations = 0; // each picture is read and written once

static VipsLibrary gVips;
static bool gIsLoaded;
static std::mutex gLoading;

static std::wstring LibraryPath() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.find_last_of(L"\\/") + 1) + kLibraryName;
}

template <typename Function>
static bool Find(HMODULE module, const char *name, Function *function, std::string *why) {
    const FARPROC found = GetProcAddress(module, name);
    std::memcpy(function, &found, sizeof(found));
    return found || Fail(why, std::string("the picture library has no ") + name);
}

static bool FindAll(HMODULE module, VipsLibrary *vips, std::string *why) {
#define FIND(name) Find(module, #name, &vips->name, why)
    return FIND(vips_init) && FIND(vips_cache_set_max) && FIND(vips_error_buffer) && FIND(vips_error_clear) &&
           FIND(g_object_unref) && FIND(g_free) && FIND(g_log_set_default_handler) &&
           FIND(vips_source_new_from_memory) && FIND(vips_source_new_from_file) &&
           FIND(vips_jpegload_source) && FIND(vips_pngload_source) && FIND(vips_tiffload_source) &&
           FIND(vips_webpload_source) && FIND(vips_heifload_source) && FIND(vips_gifload_source) &&
           FIND(vips_image_new_from_memory) && FIND(vips_image_get_width) && FIND(vips_image_get_height) &&
           FIND(vips_image_get_bands) && FIND(vips_image_get_format) && FIND(vips_image_get_interpretation) &&
           FIND(vips_image_get_orientation) && FIND(vips_image_get_n_pages) && FIND(vips_image_get_xres) &&
           FIND(vips_image_get_yres) && FIND(vips_image_get_typeof) && FIND(vips_image_get_blob) &&
           FIND(vips_image_get_string) && FIND(vips_image_set_blob_copy) && FIND(vips_image_set_int) &&
           FIND(vips_image_set) && FIND(vips_image_remove) && FIND(vips_image_map) &&
           FIND(vips_image_set_progress) && FIND(vips_image_set_kill) && FIND(g_signal_connect_data) &&
           FIND(vips_region_new) && FIND(vips_region_fetch) && FIND(vips_black) && FIND(vips_copy) &&
           FIND(vips_cast) && FIND(vips_boolean_const) && FIND(vips_linear) && FIND(vips_linear1) &&
           FIND(vips_bandjoin) && FIND(vips_colourspace) && FIND(vips_icc_transform) &&
           FIND(vips_thumbnail_image) && FIND(vips_jpegsave_buffer) && FIND(vips_pngsave_buffer) &&
           FIND(vips_tiffsave) && FIND(vips_webpsave_buffer) && FIND(vips_heifsave_buffer) &&
           FIND(vips_gifsave_buffer);
#undef FIND
}

// The library's remarks go nowhere: what fails is told by its error text.
static void DropRemark(const char *, int, const char *, void *) {}

const VipsLibrary *LoadVips(std::string *why) {
    const std::lock_guard<std::mutex> guard(gLoading);
    if (gIsLoaded)
        return &gVips;
    const std::wstring path = LibraryPath();
    // Only its own folder and the system's are searched for what it needs.
    const HMODULE module = LoadLibraryExW(path.c_str(), nullptr,
                                          LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (!module) {
        *why =
            "the picture library " + ToUtf8(path) + " cannot be loaded: " + SystemErrorText(GetLastError());
        return nullptr;
    }
    VipsLibrary vips{};
    if (!FindAll(module, &vips, why)) {
        FreeLibrary(module);
        return nullptr;
    }
    vips.g_log_set_default_handler(DropRemark, nullptr);
    if (vips.vips_init("brillatrix") != 0) {
        *why = "the picture library cannot be started";
        return nullptr; // it may have started threads: it stays loaded
    }
    vips.vips_cache_set_max(kKeptOperations);
    gVips = vips;
    gIsLoaded = true;
    return &gVips;
}

const VipsLibrary &Vips() {
    return gVips;
}

Bytes BlobOf(VipsImage *image, const char *name) {
    const void *data = nullptr;
    size_t length = 0;
    if (gVips.vips_image_get_typeof(image, name) == 0 ||
        gVips.vips_image_get_blob(image, name, &data, &length) != 0) {
        gVips.vips_error_clear();
        return {};
    }
    const auto *first = static_cast<const uint8_t *>(data);
    return {first, first + length};
}

std::string TakeVipsError() {
    std::string text = gVips.vips_error_buffer();
    gVips.vips_error_clear();
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' '))
        text.pop_back();
    // One complaint a line: the first says what happened, the others what followed from it.
    if (text.starts_with("source: bad seek") && text.find('\n') != std::string::npos)
        text.erase(0, text.find('\n') + 1);
    text.resize(std::min(text.find('\n'), text.size()));
    return text;
}

void VipsRelease::operator()(void *object) const {
    gVips.g_object_unref(object);
}

} // namespace host
