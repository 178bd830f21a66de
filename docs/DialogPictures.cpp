// Not a test: makes pictures of the dialog for people to look at. Run in an empty folder with
// launchpad_dusk.jpg in it; leaves the dialog in each of its states as BMP files.
#include "tests/dialog/DialogFixture.h"

#include "host/pictures/PictureFiles.h"
#include "host/program/PhotoDocument.h"

#include <cstdio>
#include <stdexcept>

namespace {

void Write(const void *data, size_t size, FILE *stream) {
    if (fwrite(data, 1, size, stream) != size)
        throw std::runtime_error("the picture could not be written");
}

// Throws std::runtime_error when the file cannot be written.
void WriteBmp(const Picture &picture, const std::string &path) {
    const uint32_t imageSize = static_cast<uint32_t>(picture.pixels.size() * sizeof(uint32_t));
    BITMAPFILEHEADER file = {};
    file.bfType = 0x4D42;
    file.bfOffBits = sizeof(BITMAPFILEHEADER) + sizeof(BITMAPINFOHEADER);
    file.bfSize = file.bfOffBits + imageSize;
    const BITMAPINFOHEADER info = {
        sizeof info, picture.width, -picture.height, 1, 32, BI_RGB, imageSize, 0, 0, 0, 0};
    FILE *stream = fopen(path.c_str(), "wb");
    if (!stream)
        throw std::runtime_error("cannot open " + path);
    Write(&file, sizeof file, stream);
    Write(&info, sizeof info, stream);
    Write(picture.pixels.data(), imageSize, stream);
    fclose(stream);
}

class DialogPictures : public DialogFixture {
protected:
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(DialogFixture::SetUp());
        host::Picture picture;
        std::string why;
        ASSERT_TRUE(host::ReadPicture(L"launchpad_dusk.jpg", &picture, &why)) << why;
        filterHost.document = host::TakeDocument(picture);
    }

    void Keep(const char *name) {
        Pump(100);
        RedrawWindow(dialog, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
        WriteBmp(CaptureClient(dialog), std::string(name) + ".bmp");
    }
    void KeepPreview(const std::string &name) {
        Settle();
        UpdateWindow(Item(kDisplay));
        WriteBmp(CaptureClient(Item(kDisplay)), name + ".bmp");
    }
    // A quarter wider than it opens, whatever the scale.
    void Enlarge() {
        RECT rect;
        GetWindowRect(dialog, &rect);
        Resize((rect.right - rect.left) * 5 / 4, rect.bottom - rect.top);
        Settle();
    }
};

} // namespace

TEST_F(DialogPictures, States) {
    HoldTable();
    RunDialog([this] {
        Pump(200);
        Keep("building");
        ReleaseTable();
        Settle();
        Keep("minimum");
        Enlarge();
        Type(kPairs[2].edit, "65");
        Settle();
        Keep("ready");
        Key('X');
        const RECT display = ClientOf(Item(kDisplay));
        Drag(kDisplay, {2, 2}, {display.right / 2, display.bottom - 3});
        Settle();
        Keep("hidden");
        PressCancel();
    });
}

// As large as a screen lets it be.
TEST_F(DialogPictures, Large) {
    RunDialog([this] {
        Key('0', true);
        Settle();
        Keep("large");
        PressCancel();
    });
}

TEST_F(DialogPictures, Effects) {
    RunDialog([this] {
        Enlarge();
        Type(kPairs[2].edit, "65");
        for (int row = 0; row < 7; ++row) {
            Choose(kEffectCombo, row);
            KeepPreview("effect-" + std::to_string(row));
        }
        PressCancel();
    });
}

// With the stars, with every light marked, and with all of them hidden, at three zooms.
TEST_F(DialogPictures, Preview) {
    RunDialog([this] {
        Enlarge();
        Type(kPairs[2].edit, "55");
        Key('X');
        for (const auto &[command, zoom] : {std::pair{40016, "12"}, {40011, "100"}, {40008, "400"}}) {
            const std::string name = std::string("preview-") + zoom;
            gAnswers.menuCommand = command;
            Click(kZoomArrow);
            KeepPreview(name + "-stars");
            const RECT display = ClientOf(Item(kDisplay));
            SendMouse(Item(kDisplay), WM_LBUTTONDOWN, {2, 2}, MK_LBUTTON);
            SendMouse(Item(kDisplay), WM_MOUSEMOVE, {display.right - 3, display.bottom - 3}, MK_LBUTTON);
            KeepPreview(name + "-marked");
            SendMouse(Item(kDisplay), WM_LBUTTONUP, {display.right - 3, display.bottom - 3});
            KeepPreview(name + "-hidden");
            Click(kShowIcon);
            Drag(kDisplay, {2, 2}, {display.right - 3, display.bottom - 3});
            Click(kHideIcon);
        }
        PressCancel();
    });
}
