// What picture files and modules carry besides samples: any bytes are read within bounds, and what is written
// from them reads as the same.
#include "host/metadata/ExifTree.h"
#include "host/metadata/IptcBlock.h"
#include "host/metadata/JpegSegments.h"
#include "host/module/EnableInfo.h"
#include "tests/fuzz/CaseBytes.h"

namespace {

using namespace host;

void ReadExif(const Bytes &file) {
    const ExifTree tree = ReadExifTree(file);
    for (const std::vector<ExifEntry> *entries : {&tree.picture, &tree.exif, &tree.place}) {
        size_t total = 0;
        for (const ExifEntry &entry : *entries)
            total += entry.value.size();
        Require(total <= file.size(), "values are not more than the file");
    }
    const Bytes block = MakeExifBlock(tree);
    Require(block.empty() || MakeExifBlock(ReadExifTree(block)) == block, "an EXIF block stays as it is");
}

void ReadIptc(const Bytes &block) {
    const Bytes bare = UnwrapIptc(block);
    Require(UnwrapIptc(WrapIptc(bare)) == UnwrapIptc(bare), "IPTC data come out of their wrapping");
}

void ReadJpeg(const Bytes &file) {
    const int32_t quality = EstimateJpegQuality(file);
    Require(quality >= 0 && quality <= 100, "a quality is 0 to 100");
    const size_t place = JpegCommentPlace(file.data(), file.size());
    Require(place == 2 || (place > 2 && place <= file.size()), "comments belong into the file");
    const std::vector<Bytes> comments = ReadJpegComments(file);
    Bytes made = {0xFF, 0xD8};
    const Bytes segments = MakeJpegComments(comments);
    made.insert(made.end(), segments.begin(), segments.end());
    Require(ReadJpegComments(made) == comments, "comments come out as they went in");
}

void ReadList(const Bytes &bytes) {
    Pipl pipl;
    std::string why;
    if (ParsePipl(bytes.data(), bytes.size(), &pipl, &why))
        TakesImage(pipl, {3, 8, 100, 100, 3}, &why);
    else
        Require(!why.empty(), "a refused list has a reason");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t length) {
    CaseBytes from{bytes, length};
    const int32_t reader = from.Pick(0, 4);
    const Bytes rest(from.bytes, from.bytes + from.length);
    if (reader == 4)
        EvaluateEnableInfo({rest.begin(), rest.end()}, {3, 8, 100, 100, 3});
    else
        (reader == 0 ? ReadExif : reader == 1 ? ReadIptc : reader == 2 ? ReadJpeg : ReadList)(rest);
    return 0;
}
