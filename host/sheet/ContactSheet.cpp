#include "host/sheet/ContactSheet.h"

#include "host/sheet/SheetText.h"

#include <algorithm>

namespace host {

constexpr int32_t kSheetWidth = 2000, kGap = 8, kPairGap = 2, kLabelHeight = 24;
constexpr uint8_t kGround = 28, kLetters = 215;

struct SheetForm {
    int32_t columns, cellWidth;
    std::vector<int32_t> tops; // of rows; the last one is the sheet's height
};

static SheetForm LayOut(const std::vector<SheetCell> &cells, int32_t side) {
    SheetForm form;
    const auto pictures = static_cast<int32_t>(std::max<size_t>(cells[0].pictures.size(), 1));
    form.cellWidth = pictures * side + (pictures - 1) * kPairGap;
    const auto fitting = std::max(1, (kSheetWidth - kGap) / (form.cellWidth + kGap));
    form.columns = std::min(fitting, static_cast<int32_t>(cells.size()));
    form.tops = {kGap};
    for (size_t first = 0; first < cells.size(); first += static_cast<size_t>(form.columns)) {
        int32_t height = 0;
        const size_t end = std::min(first + static_cast<size_t>(form.columns), cells.size());
        for (size_t cell = first; cell < end; cell++)
            for (const SmallPicture &picture : cells[cell].pictures)
                height = std::max(height, picture.height);
        form.tops.push_back(form.tops.back() + height + kLabelHeight + kGap);
    }
    return form;
}

static size_t PlaceOf(const Picture &sheet, int32_t x, int32_t y) {
    return static_cast<size_t>(y) * static_cast<size_t>(sheet.width) + static_cast<size_t>(x);
}

static void Paste(const SmallPicture &small, int32_t left, int32_t top, Picture *sheet) {
    for (int32_t y = 0; y < small.height; y++)
        for (int32_t x = 0; x < small.width; x++) {
            const size_t from =
                (static_cast<size_t>(y) * static_cast<size_t>(small.width) + static_cast<size_t>(x)) * 3;
            for (size_t channel = 0; channel < 3; channel++)
                sheet->planes[channel][PlaceOf(*sheet, left + x, top + y)] = small.rgb[from + channel];
        }
}

static void PasteLabel(const std::wstring &label, int32_t left, int32_t top, int32_t width, Picture *sheet) {
    const Bytes strip = DrawLabel(label, width, kLabelHeight);
    for (int32_t y = 0; y < kLabelHeight; y++)
        for (int32_t x = 0; x < width; x++) {
            const int32_t letter =
                strip[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
            for (Bytes &plane : sheet->planes)
                plane[PlaceOf(*sheet, left + x, top + y)] =
                    static_cast<uint8_t>(kGround + (kLetters - kGround) * letter / 255);
        }
}

// The pictures stand in the middle of their places, on the label.
static void PasteCell(const SheetCell &cell, int32_t left, int32_t labelTop, int32_t side, int32_t width,
                      Picture *sheet) {
    int32_t x = left;
    for (const SmallPicture &picture : cell.pictures) {
        Paste(picture, x + (side - picture.width) / 2, labelTop - picture.height, sheet);
        x += side + kPairGap;
    }
    PasteLabel(cell.label, left, labelTop, width, sheet);
}

Picture MakeContactSheet(const std::vector<SheetCell> &cells, int32_t side) {
    const SheetForm form = LayOut(cells, side);
    Picture sheet = MakePicture(kGap + form.columns * (form.cellWidth + kGap), form.tops.back(), 8, 3, false);
    for (Bytes &plane : sheet.planes)
        std::fill(plane.begin(), plane.end(), kGround);
    for (size_t i = 0; i < cells.size(); i++) {
        const auto column = static_cast<int32_t>(i) % form.columns;
        const size_t row = i / static_cast<size_t>(form.columns);
        const int32_t labelTop = form.tops[row + 1] - kGap - kLabelHeight;
        PasteCell(cells[i], kGap + column * (form.cellWidth + kGap), labelTop, side, form.cellWidth, &sheet);
    }
    return sheet;
}

int32_t PairSide(size_t cells) {
    return cells <= 60 ? 324 : cells <= 240 ? 243 : 160;
}

} // namespace host
