// The native decoder where it is deliberately stricter than GDI+ (which shrugs off a wrong CRC or a palette
// index past the palette) or narrower (BMP kinds that only GDI+ reads), and its bound on how far compressed
// data may expand.

#include "readers/image.h"
#include "tests/readers/image_samples.h"

#include <gtest/gtest.h>

// Every picture in this program is small: under AddressSanitizer an allocation past 64 MiB ends the program,
// which is how a decoder that reserves whatever a hostile header asks for gets caught.
extern "C" const char* __asan_default_options() {
    return "max_allocation_size_mb=64:allocator_may_return_null=0";
}

namespace nv {
namespace {

TEST(DecodeImagePortable, RefusesWhatGdiplusWouldTolerateOrNotRead) {
    for (const char* name :
         {"bad_idat_crc.png", "palette_index_past_end.png", "palette_depth16.png",
          "unknown_critical_chunk.png", "more_data_than_needed.png", "preset_dictionary.png",
          "idat_after_text.png", "huge_header.png", "bits16.bmp", "rle.bmp", "offset_past_end.bmp"})
        test::expectRefused(name, test::imageFixture(name));
}

TEST(DecodeImagePortable, HighlyCompressedDataStillDecodes) {
    // Zeros at close to Deflate's limit of 1032:1, which the decoder's bound must still allow.
    const Bytes png = test::imageFixture("zeros_8192x64.png");
    ASSERT_LT(png.size(), 64u * (1 + 8192 * 8) / 900);
    test::expectPixels("zeros_8192x64.png", png, 8192, std::vector<uint32_t>(8192 * 64, 0));
}

} // namespace
} // namespace nv
