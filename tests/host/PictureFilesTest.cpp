#include "tests/host/TestFiles.h"

#include "host/base/SystemText.h"
#include "host/metadata/ExifTree.h"
#include "host/metadata/JpegSegments.h"
#include "host/pictures/VipsLibrary.h"
#include "host/program/PhotoDocument.h"

#include <algorithm>
#include <cmath>

using host::Bytes;
using host::Picture;

static Bytes TextBytes(const std::string &text) {
    return {text.begin(), text.end()};
}

static void WriteGood(const std::wstring &path, const Picture &picture) {
    std::string why;
    ASSERT_TRUE(host::WritePicture(path, picture, {}, &why)) << why;
}

TEST(PictureFiles, LossyFormatsAreNearlyTheSame) {
    const TestFolder folder;
    for (const wchar_t *name : {L"a.jpg", L"a.webp", L"a.avif", L"a.gif"})
        for (const int32_t colourPlanes : {1, 3}) {
            SCOPED_TRACE(host::ToUtf8(name));
            Picture picture = host::MakePicture(64, 40, 8, colourPlanes, false);
            for (Bytes &plane : picture.planes)
                for (size_t i = 0; i < plane.size(); i++)
                    plane[i] = static_cast<uint8_t>(i % 64 * 3 + 20);
            WriteGood(folder.File(name), picture);
            const Picture read = ReadGood(folder.File(name));
            ASSERT_EQ(read.width, 64);
            for (size_t plane = 0; plane < read.planes.size(); plane++)
                for (size_t i = 0; i < read.planes[plane].size(); i++)
                    ASSERT_NEAR(read.planes[plane][i], picture.planes[0][i], 6);
        }
}

TEST(PictureFiles, NetpbmHeadersAndRanges) {
    const TestFolder folder;
    const std::wstring path = folder.File(L"a.x");
    WriteBytes(path, TextBytes("P5 # a comment\n#another 7 7\n2\t1 # and one\n255\n\x01\xFE"));
    EXPECT_EQ(ReadGood(path).planes[0], (Bytes{1, 254}));
    WriteBytes(path, TextBytes(std::string("P6 1 1 1\n\x00\x01\x01", 12)));
    EXPECT_EQ(ReadGood(path).planes, (std::vector<Bytes>{{0}, {255}, {255}}));
    WriteBytes(path,
               TextBytes(std::string("P5 2 1 1000\n\x01\xF4\x7F\xFF", 16))); // 500 and more than allowed
    EXPECT_EQ(ReadGood(path).planes[0], (Bytes{0x00, 0x80, 0xFF, 0xFF}));
    WriteBytes(path, TextBytes(std::string("Pf\n1 2\n1.0\n\x3F\x80\x00\x00\xBF\x80\x00\x00", 19)));
    const Picture read = ReadGood(path);
    ASSERT_EQ(read.depth, 32);
    EXPECT_EQ(read.planes[0], (Bytes{0, 0, 0x80, 0xBF, 0, 0, 0x80, 0x3F})) << "rows go from the bottom up";
}

// Small TIFF files by hand.
static Bytes MakeTiff(host::ByteOrder order, uint32_t width, uint32_t height,
                      const std::vector<std::pair<uint16_t, std::vector<uint32_t>>> &tags,
                      const Bytes &samples) {
    Bytes file = order == host::ByteOrder::kBig ? Bytes{'M', 'M', 0, 42} : Bytes{'I', 'I', 42, 0};
    const size_t count = tags.size() + 2;
    const uint32_t extraAt = static_cast<uint32_t>(8 + 2 + 12 * count + 4);
    Bytes extra = samples; // samples first, so that offset extraAt is theirs
    host::AppendNumber(file, uint32_t{8}, order);
    host::AppendNumber(file, static_cast<uint16_t>(count), order);
    auto all = tags;
    all.insert(all.begin(), {{256, {width}}, {257, {height}}});
    for (const auto &[tag, numbers] : all) {
        host::AppendNumber(file, tag, order);
        host::AppendNumber(file, uint16_t{4}, order);
        host::AppendNumber(file, static_cast<uint32_t>(numbers.size()), order);
        host::AppendNumber(
            file, numbers.size() == 1 ? numbers[0] : static_cast<uint32_t>(extraAt + extra.size()), order);
        for (size_t i = 0; numbers.size() > 1 && i < numbers.size(); i++)
            host::AppendNumber(extra, numbers[i], order);
    }
    host::AppendNumber(file, uint32_t{0}, order);
    host::AppendBytes(file, extra.data(), extra.size());
    return file;
}

TEST(PictureFiles, OrientationTurnsThePictureUpright) {
    // 3 x 2 samples A B C / D E F, as they look after each turn.
    const char *const turned[] = {"ABCDEF", "CBAFED", "FEDCBA", "DEFABC",
                                  "ADBECF", "DAEBFC", "FCEBDA", "CFBEAD"};
    for (int32_t orientation = 1; orientation <= 8; orientation++) {
        Picture picture = host::MakePicture(3, 2, 8, 1, false);
        picture.planes[0] = {'A', 'B', 'C', 'D', 'E', 'F'};
        host::ApplyOrientation(picture, orientation);
        EXPECT_EQ(std::string(picture.planes[0].begin(), picture.planes[0].end()), turned[orientation - 1]);
        EXPECT_EQ(picture.width, orientation < 5 ? 3 : 2);
    }
    const TestFolder folder;
    const std::wstring path = folder.File(L"a.jpg");
    WriteGood(path, MakeTestPicture(16, 8, 8, 3, false));
    Bytes file = ReadBytes(path);
    const Bytes exif = {0xFF, 0xE1, 0,    34,   'E', 'x', 'i', 'f', 0, 0, 'I', 'I', 42, 0, 8, 0, 0, 0,
                        1,    0,    0x12, 0x01, 3,   0,   1,   0,   0, 0, 6,   0,   0,  0, 0, 0, 0, 0};
    file.insert(file.begin() + 2, exif.begin(), exif.end());
    WriteBytes(path, file);
    EXPECT_EQ(ReadGood(path).height, 16);
    // A short and a rational, the other way round.
    const Bytes big = {'M', 'M', 0, 42, 0, 0, 0, 8, 0, 2, 0x47, 0x46, 0, 3, 0, 0, 0, 1, 0,  5, 0, 0, 1,
                       26,  0,   5, 0,  0, 0, 1, 0, 0, 0, 38,   0,    0, 0, 0, 0, 0, 0, 72, 0, 0, 0, 1};
    const std::vector<host::ExifEntry> entries = host::ReadExifTree(big).picture;
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].value, (Bytes{5, 0}));
    EXPECT_EQ(entries[1].value, (Bytes{72, 0, 0, 0, 1, 0, 0, 0}));
}

// As much of a profile as readers check: sizes, class, spaces, signature, illuminant; filled up with junk.
static Bytes MakeProfile(const char *space, size_t size) {
    Bytes profile(132, 0);
    const auto put = [&](size_t at, uint32_t number) {
        Bytes bytes;
        host::AppendNumber(bytes, number, host::ByteOrder::kBig);
        std::copy(bytes.begin(), bytes.end(), profile.begin() + static_cast<ptrdiff_t>(at));
    };
    put(0, static_cast<uint32_t>(size));
    put(8, 0x02400000);
    put(12, 'mntr');
    std::memcpy(profile.data() + 16, space, 4);
    put(20, 'XYZ ');
    put(36, 'acsp');
    put(68, 0x0000F6D6);
    put(72, 0x00010000);
    put(76, 0x0000D32D);
    for (uint32_t i = 0; profile.size() < size; i++)
        profile.push_back(static_cast<uint8_t>(i * i >> 3));
    return profile;
}

TEST(PictureFiles, ColourProfilesTravelAlong) {
    const TestFolder folder;
    for (const wchar_t *name : {L"a.png", L"a.tif", L"a.jpg"})
        for (const size_t size : {size_t{200}, size_t{150000}}) {
            SCOPED_TRACE(host::ToUtf8(name) + " " + std::to_string(size));
            Picture picture = MakeTestPicture(5, 5, 8, 3, false);
            picture.iccProfile = MakeProfile("RGB ", size);
            WriteGood(folder.File(name), picture);
            EXPECT_EQ(ReadGood(folder.File(name)).iccProfile, picture.iccProfile);
            EXPECT_TRUE(host::ListDropped(folder.File(name), picture, {}, {}).empty());
        }
    Picture grey = MakeTestPicture(5, 5, 8, 1, false);
    grey.iccProfile = MakeProfile("RGB ", 200); // of another kind of picture
    WriteGood(folder.File(L"b.tif"), grey);
    EXPECT_TRUE(ReadGood(folder.File(L"b.tif")).iccProfile.empty());
}

TEST(PictureFiles, SaysWhatAnEndingCannotHold) {
    const Picture eight = host::MakePicture(1, 1, 8, 3, true),
                  sixteen = host::MakePicture(1, 1, 16, 1, false),
                  real = host::MakePicture(1, 1, 32, 3, false);
    const char *const kNone = "its ending is none of jpg, png, tif, webp, avif, gif, bmp, ppm, pgm, pam, pfm";
    const struct {
        const wchar_t *name;
        const Picture &picture;
        const char *why;
    } cases[] = {
        {L"a.jpg", sixteen, "a .jpg file cannot hold 16-bit samples; use png, tif or ppm, or --depth"},
        {L"a.bmp", sixteen, "a .bmp file cannot hold 16-bit samples; use png, tif or ppm, or --depth"},
        {L"a.pfm", eight, "a .pfm file cannot hold 8-bit samples; use png, tif or ppm, or --depth"},
        {L"a.png", real, "a .png file cannot hold 32-bit float samples; use tif or pfm, or --depth"},
        {L"a.pgm", eight, "a .pgm file cannot hold colour; use ppm, png or tif"},
        {L"a", eight, kNone},
        {L"a.", eight, kNone},
        {L"png", eight, kNone},
        {L"folder.png\\a", eight, kNone},
        {L"", eight, kNone}};
    for (const auto &c : cases) {
        std::string why;
        EXPECT_FALSE(host::CanHoldPicture(c.name, c.picture, &why)) << c.why;
        EXPECT_EQ(why, c.why);
    }
    EXPECT_EQ(host::ListDropped(L"a.jpg", eight, {}, {}).size(), 1u);
    EXPECT_TRUE(host::ListDropped(L"a.png", eight, {}, {}).empty());
    const host::WriteOptions asked{90, host::Subsampling::k444, host::kVipsTiffJpeg};
    host::PictureOrigin fax;
    fax.kind = host::PictureKind::kTiff;
    fax.compression = 4;
    std::string why;
    EXPECT_EQ(host::ListDropped(L"a.png", eight, {}, asked).size(), 3u);
    EXPECT_EQ(host::ListDropped(L"a.tif", eight, fax, asked).size(), 1u);
    EXPECT_EQ(host::ListDropped(L"a.tif", eight, fax, {}).size(), 1u);
    EXPECT_FALSE(host::CanHoldPicture(L"a.tif", sixteen, &why, asked));
    Bytes frame = {0xFF, 0xD8, 0xFF, 0xC0, 0, 17, 8, 0, 9, 0, 9, 3, 1, 0x22, 0, 2, 0x11, 1, 3, 0x11, 1};
    EXPECT_TRUE(host::TellPictureKind(frame, &fax, &why) && fax.halvesColour);
    frame[13] = 0x21; // half across alone
    EXPECT_TRUE(host::TellPictureKind(frame, &fax, &why) && !fax.halvesColour);
}

// A photo with metadata of every kind, as a camera and an archive leave it: EXIF with a place, lying on its
// side.
static Bytes MakeCameraJpeg(const TestFolder &folder) {
    const std::wstring path = folder.File(L"camera.jpg");
    host::WriteOptions options;
    options.quality = 83;
    options.subsampling = host::Subsampling::k420;
    std::string why;
    EXPECT_TRUE(host::WritePicture(path, MakeTestPicture(48, 32, 8, 3, false), {}, &why, {}, options)) << why;
    Bytes file = ReadBytes(path);
    const auto entry = [](uint16_t tag, uint16_t type, uint32_t count, const std::string &value) {
        return host::ExifEntry{tag, type, count, {value.begin(), value.end()}};
    };
    host::ExifTree tree;
    tree.picture = {entry(271, 2, 7, std::string("Camera\0", 7))};
    tree.exif = {entry(33434, 5, 1, std::string("\x01\0\0\0\x1E\0\0\0", 8))}; // 1/30 s
    tree.place = {entry(29, 2, 11, std::string("2020:01:02\0", 11))};         // when it was there
    Bytes exif = host::MakeExifBlock(tree);
    const Bytes upright = {0x12, 0x01, 3, 0, 1, 0, 0, 0, 1, 0}; // its orientation, turned here
    const auto at = std::search(exif.begin(), exif.end(), upright.begin(), upright.end());
    EXPECT_NE(at, exif.end());
    at[8] = 6;
    const std::string xmp = "http://ns.adobe.com/xap/1.0/", title = "<x:xmpmeta>a title</x:xmpmeta>";
    const std::string iptc = "Photoshop 3.0",
                      record("8BIM\x04\x04\0\0\0\0\0\x09\x1C\x02\x5A\0\x04Wien\0", 22);
    Bytes segments;
    const auto add = [&segments](uint8_t marker, const std::string &content) {
        host::AppendNumber(segments, static_cast<uint16_t>(0xFF00 | marker), host::ByteOrder::kBig);
        host::AppendNumber(segments, static_cast<uint16_t>(content.size() + 2), host::ByteOrder::kBig);
        host::AppendBytes(segments, content.data(), content.size());
    };
    add(0xE1, {exif.begin(), exif.end()});
    add(0xE1, xmp + '\0' + title);
    add(0xED, iptc + '\0' + record);
    add(0xFE, "a comment");
    file.insert(file.begin() + 2, segments.begin(), segments.end());
    return file;
}

// Told by the bytes of the files written, whoever reads them: each value is looked for as it stands there.
TEST(PictureFiles, MetadataTravelsAsFarAsTheKindsCan) {
    const TestFolder folder;
    WriteBytes(folder.File(L"in.jpg"), MakeCameraJpeg(folder));
    Picture picture;
    host::PictureOrigin origin;
    std::string why;
    ASSERT_TRUE(host::ReadPicture(folder.File(L"in.jpg"), &picture, &why, &origin)) << why;
    EXPECT_EQ(picture.width, 32) << "not turned upright";
    EXPECT_EQ(origin.quality, 83);
    EXPECT_TRUE(origin.halvesColour);
    enum : unsigned { kExif = 1, kPlace = 2, kXmp = 4, kIptc = 8, kComment = 16 };
    const struct {
        const wchar_t *name;
        host::MetadataChoice metadata;
        unsigned kept;
        size_t dropped;
    } cases[] = {
        {L"a.jpg", host::MetadataChoice::kKeep, kExif | kPlace | kXmp | kIptc | kComment, 0},
        {L"a.tif", host::MetadataChoice::kKeep, kExif | kPlace | kXmp | kIptc, 1},
        {L"big.tif", host::MetadataChoice::kKeep, kExif | kPlace | kXmp | kIptc, 1},
        {L"a.webp", host::MetadataChoice::kKeep, kExif | kPlace | kXmp, 2},
        {L"a.avif", host::MetadataChoice::kKeep, kExif | kPlace | kXmp, 2},
        {L"a.png", host::MetadataChoice::kKeep, kExif | kPlace | kComment, 1}, // its XMP is compressed
        {L"a.ppm", host::MetadataChoice::kKeep, 0, 4},
        {L"a.jpg", host::MetadataChoice::kNoPlace, kExif | kXmp | kIptc | kComment, 0},
        {L"a.tif", host::MetadataChoice::kNoPlace, kExif | kXmp | kIptc, 1},
        {L"a.jpg", host::MetadataChoice::kNone, 0, 0},
        {L"a.tif", host::MetadataChoice::kNone, 0, 0}};
    for (const auto &c : cases) {
        SCOPED_TRACE(host::ToUtf8(c.name) + " " + std::to_string(static_cast<int>(c.metadata)));
        host::WriteOptions options;
        options.metadata = c.metadata;
        const std::wstring path = folder.File(c.name);
        const bool isBig = std::wstring(c.name) == L"big.tif"; // offsets of 64 bits
        host::PictureOrigin from = origin;
        if (isBig)
            from.kind = host::PictureKind::kTiff, from.isBig = true;
        ASSERT_TRUE(host::WritePicture(path, picture, {}, &why, from, options)) << why;
        EXPECT_EQ(host::ListDropped(path, picture, origin, options).size(), c.dropped);
        const Bytes file = ReadBytes(path);
        EXPECT_LT(file.size(), 16384u) << "filled up";
        const std::string text(file.begin(), file.end());
        const auto stands = [&text](const std::string &part) { return text.find(part) != std::string::npos; };
        EXPECT_EQ(stands("Camera"), (c.kept & kExif) != 0);
        EXPECT_EQ(stands("a title"), (c.kept & kXmp) != 0);
        EXPECT_EQ(stands("Wien"), (c.kept & kIptc) != 0);
        EXPECT_EQ(stands("a comment"), (c.kept & kComment) != 0);
        EXPECT_EQ(stands("2020:01:02"), (c.kept & kPlace) != 0);
        Picture again;
        host::PictureOrigin origin2;
        ASSERT_TRUE(host::ReadPicture(path, &again, &why, &origin2)) << why;
        EXPECT_EQ(again.width, 32) << "turned twice";
        EXPECT_EQ(origin2.isBig, isBig);
        if (isBig) {
            EXPECT_NE(host::Vips().vips_image_get_typeof(origin2.fields.get(), "exif-data"), 0u);
        }
        if (origin2.kind == host::PictureKind::kJpeg) {
            EXPECT_EQ(origin2.quality, 83) << "not as in the input";
            EXPECT_TRUE(origin2.halvesColour);
            EXPECT_NE(file[3], 0xFE) << "a comment stands before what must be first";
            EXPECT_EQ(stands("Exif"), (c.kept & kExif) != 0) << "made up";
        }
    }
}

// What a PNG says by a number of its own becomes a profile, which is kept.
TEST(PictureFiles, GammaOfAPngIsKeptAsAProfile) {
    const TestFolder folder;
    const std::wstring path = folder.File(L"a.png");
    std::string why;
    for (const int32_t planes : {1, 3})
        for (const auto &[gamma, checksum] : {std::pair(45455u, 0x0BFC6105u), {100000u, 0x31E8965Fu}}) {
            ASSERT_TRUE(host::WritePicture(path, MakeTestPicture(4, 4, 8, planes, false), {}, &why));
            Bytes file = ReadBytes(path);
            Bytes chunk = {0, 0, 0, 4, 'g', 'A', 'M', 'A'};
            host::AppendNumber(chunk, gamma, host::ByteOrder::kBig);
            host::AppendNumber(chunk, checksum, host::ByteOrder::kBig);
            file.insert(file.begin() + 33, chunk.begin(), chunk.end()); // behind the header
            WriteBytes(path, file);
            const Picture picture = ReadGood(path);
            EXPECT_EQ(picture.iccProfile.empty(), gamma == 45455u);
            ASSERT_TRUE(host::WritePicture(path, picture, {}, &why));
            EXPECT_EQ(ReadGood(path), picture);
            if (gamma == 45455u)
                continue;
            // Its primaries, those of a colour that cannot be, and a grey picture's, which do not count.
            for (const auto &[redY, sum] : {std::pair(33000u, 0xDC49D778u), {0u, 0x5D5BE281u}}) {
                Bytes primaries = {0, 0, 0, 32, 'c', 'H', 'R', 'M'};
                for (const uint32_t n : {31270u, 32900u, 64000u, redY, 21000u, 71000u, 15000u, 6000u, sum})
                    host::AppendNumber(primaries, n, host::ByteOrder::kBig);
                Bytes with = file;
                with.insert(with.begin() + 33, primaries.begin(), primaries.end());
                WriteBytes(path, with);
                EXPECT_EQ(ReadGood(path).iccProfile == picture.iccProfile, redY == 0 || planes == 1);
            }
        }
}

TEST(PictureFiles, KindsOfSamplesAndRefusals) {
    const TestFolder folder;
    const std::wstring path = folder.File(L"a.tif");
    const uint32_t at = 8 + 2 + 12 * 8 + 4;
    const auto tiff = [&](uint32_t bits, uint32_t format, const Bytes &samples) {
        return MakeTiff(host::ByteOrder::kLittle, 2, 1,
                        {{258, {bits}}, {259, {1}}, {262, {1}}, {273, {at}}, {277, {1}}, {339, {format}}},
                        samples);
    };
    WriteBytes(path, tiff(32, 2, {0, 0, 0, 0, 1, 0, 0, 0})); // signed
    EXPECT_NE(ReadBad(path), "");
    const std::pair<std::string, const char *> refused[] = {
        {std::string("II*\0\x10\0\0\0CR\x02\0", 12), "raw"},
        {std::string("\0\0\0\30ftypcrx \0\0\0\0", 16), "raw"},
        {std::string("IIU\0\x08\0\0\0", 8), "raw"},
        {"8BPS", "Photoshop document"},
        {std::string("\0\0\0\20ftypheic\0\0\0\0", 16), "HEIC"},
        {"\xFF\x0A", "JPEG XL"}};
    for (const auto &[bytes, word] : refused) {
        WriteBytes(path, TextBytes(bytes));
        EXPECT_NE(ReadBad(path).find(word), std::string::npos) << word;
    }
    // A raw file that looks like a TIFF of a small preview: the sensor's picture is behind it.
    WriteBytes(path,
               MakeTiff(host::ByteOrder::kLittle, 2, 1,
                        {{254, {1}}, {258, {8}}, {262, {1}}, {273, {at}}, {277, {1}}, {330, {8}}}, {1, 2}));
    EXPECT_NE(ReadBad(path).find("raw"), std::string::npos);
}

// A wrong checksum in header, palette or samples; a JPEG whose middle is damaged.
TEST(PictureFiles, LyingFilesAreRefused) {
    const TestFolder folder;
    const std::wstring path = folder.File(L"a.png");
    WriteGood(path, MakeTestPicture(20, 20, 8, 3, false));
    const Bytes whole = ReadBytes(path);
    for (const size_t at : {size_t{19}, whole.size() - 30}) { // the width; the samples
        Bytes damaged = whole;
        damaged[at] ^= 1;
        WriteBytes(path, damaged);
        EXPECT_NE(ReadBad(path), "") << at;
    }
    WriteGood(folder.File(L"a.jpg"), MakeTestPicture(200, 200, 8, 3, false));
    Bytes jpeg = ReadBytes(folder.File(L"a.jpg"));
    for (size_t i = 0; i < 16; i++)
        jpeg[jpeg.size() / 2 + i] = 0xFF;
    WriteBytes(folder.File(L"a.jpg"), jpeg);
    EXPECT_NE(ReadBad(folder.File(L"a.jpg")), "");
    Picture picture;
    host::PictureOrigin origin;
    std::string why;
    EXPECT_TRUE(host::ReadPicture(folder.File(L"a.jpg"), &picture, &why, &origin, false)) << why;
    EXPECT_EQ(origin.notes.size(), 1u);
}

TEST(PictureFiles, DamagedFilesAreRefusedWithAReason) {
    const TestFolder folder;
    const std::wstring path = folder.File(L"bad");
    EXPECT_NE(ReadBad(folder.File(L"absent.png")), "");
    for (const std::string text :
         {"", "P6", "P6\n", "P6 3", "P6 x 3 255\n", "P6 3 3\n", "P6 1 1 0\nabc", "P6 1 1 65536\nxxxxxx",
          "P6 99999999999999999999 1 255\n", "P5 2 2 255\nabc", "PF 1 1 0\nabcdabcdabcd",
          "Pf 1 1 nonsense\nabcd", "PF 2 2 -1\nabc", "P4 1 1\n\x01", "hello, this is no picture", "BM", "II*",
          "GIF89a"}) {
        WriteBytes(path, TextBytes(text));
        EXPECT_NE(ReadBad(path), "") << text;
    }
}

TEST(PictureFiles, SizesAreCheckedBeforeAnythingIsAllocated) {
    const TestFolder folder;
    const std::wstring path = folder.File(L"bad");
    const std::pair<Bytes, const char *> cases[] = {
        {TextBytes("P6 32768 1 255\n"),
         "it has 32768 x 1 pixels; at most 32767 in each direction can be filtered"},
        {TextBytes("P5 0 5 255\n"), "it has 0 x 5 pixels"},
        {TextBytes("PF 32767 32767 -1\nabc"), "the file ends early"},
        {MakeTiff(host::ByteOrder::kLittle, 32767, 32767,
                  {{258, {16}}, {259, {1}}, {262, {1}}, {273, {8}}, {277, {1}}}, {1, 2}),
         "the file ends early"}};
    for (const auto &[file, why] : cases) {
        WriteBytes(path, file);
        EXPECT_EQ(ReadBad(path), why);
    }
}

TEST(PictureFiles, AFailedOrCancelledWriteLeavesNothing) {
    const TestFolder folder;
    const Picture picture = MakeTestPicture(5, 5, 8, 3, false);
    const auto cancel = [] { return true; };
    std::string why = "old";
    EXPECT_FALSE(host::WritePicture(folder.File(L"a.tif"), picture, cancel, &why));
    EXPECT_EQ(why, "");
    EXPECT_TRUE(folder.List().empty());
    WriteBytes(folder.File(L"a.png"), {1, 2, 3});
    EXPECT_FALSE(host::WritePicture(folder.File(L"a.png"), picture, cancel, &why));
    EXPECT_EQ(ReadBytes(folder.File(L"a.png")), (Bytes{1, 2, 3})) << "the older file is gone";
    EXPECT_FALSE(host::WritePicture(folder.File(L"absent\\a.png"), picture, {}, &why));
    EXPECT_NE(why, "");
}

TEST(SixteenBits, EverySampleComesBackAndAChangedOneIsTheNearest) {
    Picture picture = host::MakePicture(256, 256, 16, 1, false);
    for (uint32_t v = 0; v < 65536; v++) {
        const uint16_t sample = static_cast<uint16_t>(v);
        std::memcpy(picture.planes[0].data() + v * 2, &sample, 2);
    }
    Picture expected = picture;
    const uint16_t nearest = 39999; // 20000 * 65535 / 32768 = 39999.4
    std::memcpy(expected.planes[0].data() + 2, &nearest, 2);
    host::Document document = host::TakeDocument(picture);
    EXPECT_EQ(host::GetSample(document, 0, 255, 255), 32768);
    EXPECT_EQ(host::GetSample(document, 0, 0, 128), 16384);
    host::SetSample(document, 0, 1, 0, 20000);
    host::PutDocument(std::move(document), picture);
    EXPECT_EQ(picture, expected) << "an untouched sample changed";
    for (uint32_t v = 0; v <= 32768; v++) {
        const uint16_t file = host::FromHost16(static_cast<uint16_t>(v));
        ASSERT_EQ(host::ToHost16(file), v);
        ASSERT_LE(std::abs(file - v * 65535.0 / 32768.0), 0.5);
    }
    EXPECT_EQ(host::FromHost16(65535), 65535);
}

TEST(Masks, AreGreyOfAnyPicture) {
    Picture colour = host::MakePicture(2, 1, 8, 3, true);
    colour.planes = {{255, 255}, {255, 0}, {255, 0}, {0, 255}};
    EXPECT_EQ(host::ToGrey8(colour), (Bytes{255, 76})) << "transparency does not count";
    Picture real = host::MakePicture(3, 1, 32, 1, false);
    const float samples[3] = {NAN, 0.5f, 7.0f};
    std::memcpy(real.planes[0].data(), samples, sizeof(samples));
    EXPECT_EQ(host::ToGrey8(real), (Bytes{0, 128, 255}));
}
