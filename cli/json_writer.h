#pragma once
// A small writer of valid JSON (UTF-8): objects, arrays, strings, numbers, booleans and null, with commas
// and escapes handled here so that the commands only say what to write.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nv {

class JsonWriter {
public:
    JsonWriter& beginObject();
    JsonWriter& endObject();
    JsonWriter& beginArray();
    JsonWriter& endArray();
    // The name of the next member of the current object.
    JsonWriter& key(std::string_view name);

    JsonWriter& value(std::string_view utf8);
    JsonWriter& value(const std::wstring& text);
    JsonWriter& value(const char* utf8) { return value(std::string_view(utf8)); }
    JsonWriter& value(int64_t number);
    JsonWriter& value(int number) { return value(int64_t(number)); }
    JsonWriter& value(uint32_t number) { return value(int64_t(number)); }
    JsonWriter& value(bool flag);
    JsonWriter& null();

    const std::string& text() const { return out_; }

private:
    void separate();
    std::string out_;
    std::vector<bool> first_; // per open container: nothing written in it yet
    bool afterKey_ = false;
};

// The string's JSON form, quotes included.
std::string jsonQuote(std::string_view utf8);

} // namespace nv
