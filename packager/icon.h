#pragma once
// The patcher's icon: pictures converted to a six-size ICO file, the checks an ICO file must pass before the
// build splits it into icon resources, and the icon-group directory that ties those resources together.

#include "core/files.h"
#include "readers/image.h"

#include <cstdint>
#include <string>
#include <vector>

namespace nv {

// One directory entry of an ICO file.
struct IcoEntry {
    uint8_t width = 0, height = 0; // 0 means 256
    uint8_t colorCount = 0, reserved = 0;
    uint16_t planes = 0, bitCount = 0;
    uint32_t byteSize = 0, offset = 0;
};

constexpr uint64_t kMaxIconFile = 0x1000000; // 16 MiB

// The sizes a converted picture gets, in directory order.
constexpr int kIconSizes[] = {256, 64, 48, 32, 24, 16};

// At least 22 bytes, reserved 0, type 1 and at least one image.
bool isIcoHeader(const Bytes& ico);

// The directory of an ICO file, entries in file order, each image inside the file and not empty. Messages:
// "İkon dosyası geçersiz.", "İkon dosyası bozuk.".
bool readIcoDirectory(const Bytes& ico, std::vector<IcoEntry>& entries, std::wstring& message);

// The RT_GROUP_ICON data for the entries written as RT_ICON 1..n (planes 0 becomes 1, bit count 0 becomes
// 32).
Bytes iconGroupResource(const std::vector<IcoEntry>& entries);

// Area-average scaling of premultiplied pixels.
DecodedImage resampleBox(const DecodedImage& source, int width, int height);

// Decodes a picture and makes a six-size ICO file of it: the picture centred on a transparent square, each
// size a 32-bit bitmap with straight alpha and an empty mask. Decoder messages pass through unchanged.
bool imageToIco(const uint8_t* data, size_t size, Bytes& ico, std::wstring& message);

// The headless part of choosing an icon: an ICO file is kept as it is, any other picture converted; preview
// is the ICO decoded for showing (previewDecoded says whether that worked). On failure nothing is changed.
// Messages: "Simge okunamadı.", "Simge dönüştürülemedi: " + the decoder's message.
bool readIconFile(const std::wstring& path, Bytes& icoBytes, DecodedImage& preview, bool& previewDecoded,
                  std::wstring& message);

} // namespace nv
