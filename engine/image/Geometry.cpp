#include "engine/image/Geometry.h"

#include <cmath>

ImageGeometry gImageGeometry;

void SetImageGeometry(const IntRect &filterRect) {
    const double width = static_cast<double>(filterRect.right) - filterRect.left;
    const double height = static_cast<double>(filterRect.bottom) - filterRect.top;
    gImageGeometry.filterRect = filterRect;
    gImageGeometry.width = static_cast<int32_t>(width);
    gImageGeometry.height = static_cast<int32_t>(height);
    // The sum of squares goes through single precision: meant so.
    const double squares = static_cast<float>(width * width + height * height);
    gImageGeometry.diagonal = static_cast<int32_t>(std::sqrt(squares) + 1.0);
}
