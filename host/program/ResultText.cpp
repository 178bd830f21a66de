#include "host/program/ResultText.h"

#include <algorithm>
#include <iterator>

namespace host {

struct CodeText {
    int16_t code;
    const char *text;
};

static const CodeText kCodeTexts[] = {
    {-19, "reading failed"},
    {-20, "rendering or writing failed"},
    {-23, "a file could not be opened"},
    {-34, "the disk is full"},
    {-36, "input or output failed"},
    {-39, "a file ended early"},
    {-43, "a file was not found"},
    {-50, "a bad parameter"},
    {-108, "not enough memory"},
    {-109, "a handle is missing"},
    {-128, "cancelled"},
    {-1715, "a parameter is missing, or the effect could not be computed"},
    {-30100, "bad filter parameters"},
    {-30101, "the image mode is not supported"},
    {-30900, "the host lacks a service that the plug-in needs"},
    {-30901, "an unknown property"},
    {-30904, "the plug-in gave no text"},
    {-30905, "the stored parameters are of another version"},
};

std::string ResultText(int16_t code) {
    const auto found = std::find_if(std::begin(kCodeTexts), std::end(kCodeTexts),
                                    [code](const CodeText &text) { return text.code == code; });
    if (found != std::end(kCodeTexts))
        return found->text;
    return code > 0 ? "an error that the plug-in has reported itself" : "an unknown error";
}

} // namespace host
