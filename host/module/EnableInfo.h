// What a filter's property list says about the images that it takes.
#pragma once

#include "host/module/PiPL.h"

#include <optional>
#include <string>

namespace host {

struct ImageFacts {
    int32_t mode = 0; // as in the filter's record
    int32_t depth = 8;
    int32_t width = 0, height = 0;
    int32_t planes = 0;
};

// The expression's value; none when it is not one that this host can read.
std::optional<bool> EvaluateEnableInfo(const std::string &expression, const ImageFacts &image);

// False, with a reason in *why, when the list's modes, its expression or its largest size forbid the image.
// The modes speak for 8 bits; deeper images are taken when either the modes or the expression name them.
bool TakesImage(const Pipl &pipl, const ImageFacts &image, std::string *why);

} // namespace host
