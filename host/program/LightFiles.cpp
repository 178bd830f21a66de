#include "host/program/LightFiles.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace host {

constexpr double kFullScale = 4294967294.0;
constexpr double kSmallestRing = 1.5;    // radius in pixels: a ring that small can still be seen
constexpr double kLabelShare = 1.0 / 90; // of the photo's shorter side
constexpr size_t kMostText = 512;

static double Share(uint32_t fraction) {
    return std::min(fraction / kFullScale, 1.0);
}

static double Diameter(const DiagnosticLight &light) {
    return 2.0 * std::sqrt(static_cast<double>(std::max(light.radiusSquared, 0)));
}

static const char *StateName(const DiagnosticLight &light) {
    return light.state == 0 ? "hidden" : light.state == 1 ? "normal" : "always";
}

template <typename... Arguments> static void Print(Bytes *bytes, const char *format, Arguments... arguments) {
    char text[kMostText];
    const int length = std::snprintf(text, sizeof(text), format, arguments...);
    if (length > 0)
        AppendBytes(*bytes, text, std::min(static_cast<size_t>(length), sizeof(text) - 1));
}

Bytes LightsAsCsv(const std::vector<DiagnosticLight> &lights) {
    Bytes csv;
    Print(&csv, "%s", "rank,x,y,diameter,brightness,red,green,blue,state,star\n");
    for (const DiagnosticLight &light : lights)
        Print(&csv, "%u,%.2f,%.2f,%.2f,%.6f,%.6f,%.6f,%.6f,%s,%s\n", light.rank, light.xQuarters / 4.0,
              light.yQuarters / 4.0, Diameter(light), Share(light.brightness), Share(light.red),
              Share(light.green), Share(light.blue), StateName(light), light.drawn ? "yes" : "no");
    return csv;
}

// The light's colour at full brightness: a dark ring on a dark photo would show nothing.
static void PrintColour(Bytes *svg, const DiagnosticLight &light) {
    const double top = std::max({Share(light.red), Share(light.green), Share(light.blue)});
    const auto level = [top](uint32_t channel) {
        return static_cast<unsigned>(top > 0 ? Share(channel) / top * 255 + 0.5 : 255);
    };
    if (light.drawn)
        Print(svg, "#%02x%02x%02x", level(light.red), level(light.green), level(light.blue));
    else
        Print(svg, "%s", "#999");
}

// A dark ring below keeps a light one visible on white.
static void PrintLight(Bytes *svg, const DiagnosticLight &light, double labelSize) {
    const double x = light.xQuarters / 4.0, y = light.yQuarters / 4.0;
    const double radius = std::max(Diameter(light) / 2, kSmallestRing);
    Print(svg,
          "<g id=\"light%u\"><title>%u: x %.2f, y %.2f, diameter %.2f, brightness %.6f, %s, %s</title>\n",
          light.rank, light.rank, x, y, Diameter(light), Share(light.brightness), StateName(light),
          light.drawn ? "star" : "no star");
    Print(svg, "<circle class=\"under\" cx=\"%.2f\" cy=\"%.2f\" r=\"%.2f\"/>", x, y, radius);
    Print(svg, "<circle%s cx=\"%.2f\" cy=\"%.2f\" r=\"%.2f\" stroke=\"",
          light.state == 0 ? " class=\"hidden\"" : "", x, y, radius);
    PrintColour(svg, light);
    Print(svg, "%s", "\"/>");
    Print(svg, "<text x=\"%.2f\" y=\"%.2f\">%u</text></g>\n", x + radius + labelSize / 4, y - radius,
          light.rank);
}

// A position names the middle of a pixel, a drawing's coordinates its edge: the half pixel between them is
// the group's shift.
Bytes LightsAsSvg(const std::vector<DiagnosticLight> &lights, int32_t width, int32_t height) {
    const double labelSize = std::max(4.0, std::min(width, height) * kLabelShare);
    const double line = labelSize / 8;
    Bytes svg;
    Print(&svg,
          "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" viewBox=\"0 0 %d %d\">\n",
          width, height, width, height);
    Print(&svg,
          "<style>circle{fill:none;stroke-width:%.2f}.under{stroke:#000;stroke-width:%.2f;stroke-opacity:.6}"
          ".hidden{stroke-dasharray:%.2f}\n",
          line, line * 2.5, line * 3);
    Print(&svg,
          "text{font:%.2fpx sans-serif;fill:#fff;stroke:#000;stroke-width:%.2f;paint-order:stroke}</style>\n",
          labelSize, line);
    Print(&svg, "%s", "<g transform=\"translate(.5 .5)\">\n");
    for (const DiagnosticLight &light : lights)
        PrintLight(&svg, light, labelSize);
    Print(&svg, "%s", "</g>\n</svg>\n");
    return svg;
}

} // namespace host
