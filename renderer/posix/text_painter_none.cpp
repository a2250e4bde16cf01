// The native build has no text engine: text runs are skipped and their pixels stay as they were. The native
// build exists for the sanitizers, the fuzzer and the tests of the pictures and gauges.

#include "renderer/text_painter.h"

namespace nv {

struct TextPainter::Impl {};

TextPainter::TextPainter(Canvas& canvas, TextCache* cache) : canvas_(canvas), cache_(cache) {}
TextPainter::~TextPainter() = default;

void TextPainter::draw(const TextRun&) {}

bool TextPainter::available() {
    return false;
}

} // namespace nv
