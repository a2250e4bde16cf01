#include "cli/json_writer.h"

#include "core/text.h"

#include <cstdio>

namespace nv {

std::string jsonQuote(std::string_view utf8) {
    std::string out = "\"";
    for (char c : utf8) {
        unsigned char u = static_cast<unsigned char>(c);
        switch (c) {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        default:
            if (u < 0x20) {
                char buf[8];
                std::snprintf(buf, sizeof buf, "\\u%04x", u);
                out += buf;
            } else {
                out += c;
            }
        }
    }
    return out + "\"";
}

void JsonWriter::separate() {
    if (afterKey_) {
        afterKey_ = false;
        return;
    }
    if (!first_.empty()) {
        if (!first_.back()) out_ += ",";
        first_.back() = false;
    }
}

JsonWriter& JsonWriter::beginObject() {
    separate();
    out_ += "{";
    first_.push_back(true);
    return *this;
}

JsonWriter& JsonWriter::endObject() {
    first_.pop_back();
    out_ += "}";
    return *this;
}

JsonWriter& JsonWriter::beginArray() {
    separate();
    out_ += "[";
    first_.push_back(true);
    return *this;
}

JsonWriter& JsonWriter::endArray() {
    first_.pop_back();
    out_ += "]";
    return *this;
}

JsonWriter& JsonWriter::key(std::string_view name) {
    separate();
    out_ += jsonQuote(name) + ":";
    afterKey_ = true;
    return *this;
}

JsonWriter& JsonWriter::value(std::string_view utf8) {
    separate();
    // Text from skins may hold anything; what goes out must be valid UTF-8.
    out_ += jsonQuote(wideToUtf8(utf8ToWide(utf8)));
    return *this;
}

JsonWriter& JsonWriter::value(const std::wstring& text) {
    separate();
    out_ += jsonQuote(wideToUtf8(text));
    return *this;
}

JsonWriter& JsonWriter::value(int64_t number) {
    separate();
    out_ += std::to_string(number);
    return *this;
}

JsonWriter& JsonWriter::value(bool flag) {
    separate();
    out_ += flag ? "true" : "false";
    return *this;
}

JsonWriter& JsonWriter::null() {
    separate();
    out_ += "null";
    return *this;
}

} // namespace nv
