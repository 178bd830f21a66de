#include "host/metadata/PngGamma.h"

#include "host/metadata/PngChunks.h"

#include <array>
#include <cmath>
#include <optional>
#include <string_view>

namespace host {

constexpr uint32_t kUnit = 100000; // of the chunks' numbers
constexpr uint32_t kUsualGamma = 45455, kGammaSlack = 600;

using Triple = std::array<double, 3>;
using Matrix = std::array<Triple, 3>; // rows

// White, red, green and blue, each as x and y.
using Primaries = std::array<double, 8>;
static constexpr Primaries kUsualPrimaries = {0.3127, 0.3290, 0.64, 0.33, 0.30, 0.60, 0.15, 0.06};

struct PngColours {
    uint32_t gamma = 0; // 0: not said
    std::optional<Primaries> primaries;
    bool isSaidElse = false; // by a profile, or as sRGB
};

static Primaries TakePrimaries(const uint8_t *at) {
    Primaries primaries;
    for (size_t i = 0; i < primaries.size(); i++)
        primaries[i] = static_cast<double>(NumberAt<uint32_t>(at + i * 4, ByteOrder::kBig)) / kUnit;
    return primaries;
}

// The chunks in front of the samples.
static PngColours ReadColours(const Bytes &file) {
    PngColours colours;
    for (const PngChunk &chunk : ListPngChunks(file)) {
        if (chunk.name == "IDAT")
            break;
        if (chunk.name == "iCCP" || chunk.name == "sRGB")
            colours.isSaidElse = true;
        else if (chunk.name == "gAMA" && chunk.length == 4)
            colours.gamma = NumberAt<uint32_t>(chunk.body, ByteOrder::kBig);
        else if (chunk.name == "cHRM" && chunk.length == 32)
            colours.primaries = TakePrimaries(chunk.body);
    }
    return colours;
}

static bool AreUsual(const std::optional<Primaries> &primaries) {
    constexpr double kSlack = 0.005;
    for (size_t i = 0; primaries && i < primaries->size(); i++)
        if (std::fabs((*primaries)[i] - kUsualPrimaries[i]) > kSlack)
            return false;
    return true;
}

static Triple Times(const Matrix &matrix, const Triple &vector) {
    Triple result = {};
    for (size_t row = 0; row < 3; row++)
        for (size_t i = 0; i < 3; i++)
            result[row] += matrix[row][i] * vector[i];
    return result;
}

static Matrix Times(const Matrix &a, const Matrix &b) {
    Matrix result = {};
    for (size_t row = 0; row < 3; row++)
        for (size_t column = 0; column < 3; column++)
            for (size_t i = 0; i < 3; i++)
                result[row][column] += a[row][i] * b[i][column];
    return result;
}

static Matrix Inverse(const Matrix &m) {
    Matrix inverse;
    double determinant = 0;
    const auto minor = [&m](size_t row, size_t column) {
        const size_t r1 = (row + 1) % 3, r2 = (row + 2) % 3, c1 = (column + 1) % 3, c2 = (column + 2) % 3;
        return m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
    };
    for (size_t i = 0; i < 3; i++)
        determinant += m[0][i] * minor(0, i);
    for (size_t row = 0; row < 3; row++)
        for (size_t column = 0; column < 3; column++)
            inverse[row][column] = minor(column, row) / determinant;
    return inverse;
}

static Triple FromXy(double x, double y) {
    return {x / y, 1.0, (1.0 - x - y) / y};
}

// The colorants as they are seen under the profiles' own white.
static Matrix Colorants(const Primaries &p) {
    static constexpr Matrix kCones = {
        {{0.8951, 0.2664, -0.1614}, {-0.7502, 1.7135, 0.0367}, {0.0389, -0.0685, 1.0296}}};
    static constexpr Triple kProfileWhite = {0.9642, 1.0, 0.8249};
    Matrix columns, adapted = {};
    const Triple white = FromXy(p[0], p[1]);
    for (size_t i = 0; i < 3; i++) {
        const Triple colour = FromXy(p[2 + i * 2], p[3 + i * 2]);
        for (size_t row = 0; row < 3; row++)
            columns[row][i] = colour[row];
    }
    const Triple shares = Times(Inverse(columns), white);
    for (Triple &row : columns)
        for (size_t i = 0; i < 3; i++)
            row[i] *= shares[i];
    const Triple from = Times(kCones, white), to = Times(kCones, kProfileWhite);
    for (size_t i = 0; i < 3; i++)
        adapted[i][i] = to[i] / from[i];
    return Times(Times(Times(Inverse(kCones), adapted), kCones), columns);
}

// --- The profile's parts, all numbers in big-endian order.

static void PutText(Bytes *bytes, std::string_view text) {
    AppendBytes(*bytes, text.data(), text.size());
}

template <typename Number> static void Put(Bytes *bytes, Number number) {
    AppendNumber(*bytes, number, ByteOrder::kBig);
}

static void PutFixed(Bytes *bytes, double value) {
    Put(bytes, static_cast<int32_t>(std::lround(value * 65536.0)));
}

static Bytes XyzPart(const Triple &xyz) {
    Bytes part;
    PutText(&part, "XYZ ");
    Put<uint32_t>(&part, 0);
    for (const double value : xyz)
        PutFixed(&part, value);
    return part;
}

static Bytes CurvePart(uint32_t gamma) {
    Bytes part;
    PutText(&part, "curv");
    Put<uint32_t>(&part, 0);
    Put<uint32_t>(&part, 1);
    Put(&part, static_cast<uint16_t>(std::lround(std::min(256.0 * kUnit / gamma, 65535.0))));
    return part;
}

static Bytes DescriptionPart() {
    static constexpr std::string_view kName = "PNG gamma";
    constexpr size_t kOtherForms = 4 + 4 + 2 + 1 + 67; // in two other alphabets: none
    Bytes part;
    PutText(&part, "desc");
    Put<uint32_t>(&part, 0);
    Put(&part, static_cast<uint32_t>(kName.size() + 1));
    PutText(&part, kName);
    part.resize(part.size() + 1 + kOtherForms);
    return part;
}

static Bytes CopyrightPart() {
    Bytes part;
    PutText(&part, "text");
    Put<uint32_t>(&part, 0);
    PutText(&part, std::string_view("no copyright\0", 13));
    return part;
}

struct ProfilePart {
    std::string_view name;
    Bytes bytes;
};

static Bytes Header(size_t length, bool isColour) {
    Bytes header;
    Put(&header, static_cast<uint32_t>(length));
    Put<uint32_t>(&header, 0);
    Put<uint32_t>(&header, 0x02400000); // version
    PutText(&header, "mntr");
    PutText(&header, isColour ? "RGB " : "GRAY");
    PutText(&header, "XYZ ");
    header.resize(36);
    PutText(&header, "acsp");
    header.resize(68);
    for (const double value : {0.9642, 1.0, 0.8249})
        PutFixed(&header, value);
    header.resize(128);
    return header;
}

static Bytes Assemble(const std::vector<ProfilePart> &parts, bool isColour) {
    constexpr size_t kHead = 128, kRow = 12;
    Bytes rows, bodies;
    const size_t first = kHead + 4 + parts.size() * kRow;
    Put(&rows, static_cast<uint32_t>(parts.size()));
    for (const ProfilePart &part : parts) {
        PutText(&rows, part.name);
        Put(&rows, static_cast<uint32_t>(first + bodies.size()));
        Put(&rows, static_cast<uint32_t>(part.bytes.size()));
        AppendBytes(bodies, part.bytes.data(), part.bytes.size());
        bodies.resize((bodies.size() + 3) / 4 * 4);
    }
    Bytes profile = Header(first + bodies.size(), isColour);
    AppendBytes(profile, rows.data(), rows.size());
    AppendBytes(profile, bodies.data(), bodies.size());
    return profile;
}

static bool ArePossible(const Primaries &p) {
    for (size_t i = 0; i < p.size(); i += 2)
        if (p[i + 1] < 0.01 || p[i] + p[i + 1] > 1.5)
            return false;
    const double area = (p[4] - p[2]) * (p[7] - p[3]) - (p[6] - p[2]) * (p[5] - p[3]);
    return std::fabs(area) > 0.001;
}

Bytes MakeGammaProfile(const Bytes &file, int32_t colourPlanes) {
    const PngColours colours = ReadColours(file);
    const bool isUsual = colours.gamma + kGammaSlack > kUsualGamma &&
                         colours.gamma < kUsualGamma + kGammaSlack && AreUsual(colours.primaries);
    if (colours.isSaidElse || colours.gamma == 0 || isUsual)
        return {};
    std::vector<ProfilePart> parts = {
        {"desc", DescriptionPart()}, {"cprt", CopyrightPart()}, {"wtpt", XyzPart({0.9642, 1.0, 0.8249})}};
    if (colourPlanes != 3) {
        parts.push_back({"kTRC", CurvePart(colours.gamma)});
        return Assemble(parts, false);
    }
    const bool isTold = colours.primaries && ArePossible(*colours.primaries);
    const Matrix colorants = Colorants(isTold ? *colours.primaries : kUsualPrimaries);
    for (size_t i = 0; i < 3; i++) {
        static constexpr std::string_view kNames[3][2] = {
            {"rXYZ", "rTRC"}, {"gXYZ", "gTRC"}, {"bXYZ", "bTRC"}};
        parts.push_back({kNames[i][0], XyzPart({colorants[0][i], colorants[1][i], colorants[2][i]})});
        parts.push_back({kNames[i][1], CurvePart(colours.gamma)});
    }
    return Assemble(parts, true);
}

} // namespace host
