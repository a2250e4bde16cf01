#include "update/feed.h"

#include "core/text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <new>
#include <set>
#include <vector>

namespace nv::update {
namespace {

using Json = nlohmann::json;

// Thrown from the parser's callback to stop at once; turned into a message by parseFeed.
struct Refusal {
    std::wstring message;
};

std::wstring inQuotes(std::string_view text) {
    return L"\"" + utf8ToWide(text) + L"\"";
}

// Line and column (from 1) of a byte offset, for a parse error the operator can find in an editor.
std::wstring place(std::string_view document, size_t offset) {
    offset = std::min(offset, document.size());
    size_t line = 1, column = 1;
    for (size_t i = 0; i < offset; ++i) {
        if (document[i] == '\n') {
            ++line;
            column = 1;
        } else if ((static_cast<unsigned char>(document[i]) & 0xC0) != 0x80) {
            ++column;
        }
    }
    return L"satır " + std::to_wstring(line) + L", sütun " + std::to_wstring(column);
}

// Characters (code points) of valid UTF-8, as JSON strings are once parsed.
size_t characters(std::string_view utf8) {
    return size_t(std::count_if(utf8.begin(), utf8.end(),
                                [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

// No control characters and no line or paragraph separators: every text is shown on one line.
bool oneLine(std::string_view utf8) {
    for (size_t i = 0; i < utf8.size(); ++i) {
        const auto c = static_cast<unsigned char>(utf8[i]);
        if (c < 0x20 || c == 0x7F) return false;
        // U+0080..U+009F (C2 80..C2 9F), U+2028 and U+2029 (E2 80 A8, E2 80 A9).
        if (c == 0xC2 && i + 1 < utf8.size() && static_cast<unsigned char>(utf8[i + 1]) < 0xA0) return false;
        if (c == 0xE2 && utf8.substr(i, 3) == "\xE2\x80\xA8") return false;
        if (c == 0xE2 && utf8.substr(i, 3) == "\xE2\x80\xA9") return false;
    }
    return true;
}

// A one-line string of at most `limit` characters, trimmed; empty allowed only when `optional`.
bool lineText(const Json& value, size_t limit, bool optional, std::wstring& out) {
    if (!value.is_string()) return false;
    const std::string text = trim(value.get_ref<const std::string&>());
    if ((text.empty() && !optional) || characters(text) > limit || !oneLine(text)) return false;
    out = utf8ToWide(text);
    return true;
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// "YYYY-MM-DD" naming a day that exists.
bool calendarDate(std::string_view text) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-') return false;
    for (size_t i : {0, 1, 2, 3, 5, 6, 8, 9})
        if (!isDigit(text[i])) return false;
    auto number = [&](size_t at, size_t digits) {
        int value = 0;
        for (size_t i = at; i < at + digits; ++i)
            value = value * 10 + (text[i] - '0');
        return value;
    };
    const int year = number(0, 4), month = number(5, 2), day = number(8, 2);
    if (month < 1 || month > 12 || day < 1) return false;
    static constexpr int kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return day <= kDays[month - 1] + (month == 2 && leap ? 1 : 0);
}

FeedStatus statusFrom(const Json& value) {
    if (!value.is_string()) throw Refusal{L"\"status\" online, maintenance ya da offline olmalı."};
    const std::string& text = value.get_ref<const std::string&>();
    if (text == "online") return FeedStatus::Online;
    if (text == "maintenance") return FeedStatus::Maintenance;
    if (text == "offline") return FeedStatus::Offline;
    throw Refusal{L"\"status\" online, maintenance ya da offline olmalı: " + inQuotes(text.substr(0, 40))};
}

int64_t playersFrom(const Json& value) {
    // Integers only: 12.0, "12" and 1e3 are refused like -1, so that a wrong generator shows up at once.
    int64_t players = -1;
    if (value.is_number_unsigned() && value.get<uint64_t>() <= uint64_t(kMaxFeedPlayers))
        players = int64_t(value.get<uint64_t>());
    else if (value.is_number_integer() && value.get<int64_t>() >= 0 &&
             value.get<int64_t>() <= kMaxFeedPlayers)
        players = value.get<int64_t>();
    if (players < 0)
        throw Refusal{L"\"players\" 0 ile " + std::to_wstring(kMaxFeedPlayers) +
                      L" arasında bir tam sayı olmalı."};
    return players;
}

FeedHeadline headlineFrom(const Json& item, size_t index) {
    const std::wstring which = L"news içindeki " + std::to_wstring(index + 1) + L". haber: ";
    if (!item.is_object()) throw Refusal{which + L"bir nesne ({...}) olmalı."};
    FeedHeadline headline;
    auto title = item.find("title");
    if (title == item.end() || !lineText(*title, kMaxFeedTitle, false, headline.title))
        throw Refusal{which + L"\"title\" boş olmayan, tek satırlık ve en çok " +
                      std::to_wstring(kMaxFeedTitle) + L" karakterlik bir metin olmalı."};
    auto date = item.find("date");
    if (date == item.end() || !date->is_string() || !calendarDate(date->get_ref<const std::string&>()))
        throw Refusal{which + L"\"date\" YYYY-AA-GG biçiminde bir tarih olmalı (2024-05-14 gibi)."};
    headline.date = date->get<std::string>();
    auto url = item.find("url");
    if (url == item.end() || !url->is_string() ||
        url->get_ref<const std::string&>().size() > kMaxFeedAddress ||
        !isWebAddress(url->get_ref<const std::string&>()))
        throw Refusal{which + L"\"url\" http:// ya da https:// ile başlayan, boşluksuz ve en çok " +
                      std::to_wstring(kMaxFeedAddress) + L" baytlık bir adres olmalı."};
    headline.url = utf8ToWide(url->get_ref<const std::string&>());
    return headline;
}

ServerFeed feedFrom(const Json& root) {
    if (!root.is_object()) throw Refusal{L"Duyuru akışı bir JSON nesnesi ({...}) değil."};
    ServerFeed feed;
    auto status = root.find("status");
    if (status == root.end()) throw Refusal{L"Duyuru akışında \"status\" yok."};
    feed.status = statusFrom(*status);
    auto players = root.find("players");
    if (players == root.end()) throw Refusal{L"Duyuru akışında \"players\" yok."};
    feed.players = playersFrom(*players);
    auto message = root.find("message");
    if (message != root.end() && !lineText(*message, kMaxFeedMessage, true, feed.message))
        throw Refusal{L"\"message\" tek satırlık ve en çok " + std::to_wstring(kMaxFeedMessage) +
                      L" karakterlik bir metin olmalı."};
    auto news = root.find("news");
    if (news != root.end()) {
        if (!news->is_array()) throw Refusal{L"\"news\" bir dizi ([...]) olmalı."};
        if (news->size() > kMaxFeedHeadlines)
            throw Refusal{L"\"news\" en çok " + std::to_wstring(kMaxFeedHeadlines) + L" haber tutabilir; " +
                          std::to_wstring(news->size()) + L" var."};
        for (size_t i = 0; i < news->size(); ++i)
            feed.headlines.push_back(headlineFrom((*news)[i], i));
        std::stable_sort(feed.headlines.begin(), feed.headlines.end(),
                         [](const FeedHeadline& a, const FeedHeadline& b) { return a.date > b.date; });
    }
    return feed;
}

// Parses with the nesting bounded and every object's keys unique: a key given twice would leave the reader
// to guess which one the operator meant.
Json parseStrict(std::string_view document) {
    std::vector<std::set<std::string>> openObjects;
    auto watch = [&openObjects](int depth, Json::parse_event_t event, Json& parsed) {
        switch (event) {
        case Json::parse_event_t::object_start:
        case Json::parse_event_t::array_start:
            if (depth >= kMaxFeedDepth)
                throw Refusal{L"Duyuru akışı çok derin iç içe (en çok " + std::to_wstring(kMaxFeedDepth) +
                              L" düzey)."};
            if (event == Json::parse_event_t::object_start) openObjects.emplace_back();
            break;
        case Json::parse_event_t::object_end:
            if (!openObjects.empty()) openObjects.pop_back();
            break;
        case Json::parse_event_t::key:
            if (!openObjects.empty() && !openObjects.back().insert(parsed.get<std::string>()).second)
                throw Refusal{L"Duyuru akışında aynı anahtar iki kez var: " +
                              inQuotes(parsed.get<std::string>().substr(0, 40))};
            break;
        default:
            break;
        }
        return true;
    };
    return Json::parse(document.begin(), document.end(), watch);
}

} // namespace

bool parseFeed(std::string_view document, ServerFeed& feed, std::wstring* error) {
    auto refuse = [error](std::wstring message) {
        if (error) *error = std::move(message);
        return false;
    };
    if (document.size() > kMaxFeedBytes)
        return refuse(L"Duyuru akışı çok büyük: " + std::to_wstring(document.size()) + L" bayt (en çok " +
                      std::to_wstring(kMaxFeedBytes) + L").");
    try {
        ServerFeed parsed = feedFrom(parseStrict(document));
        feed = std::move(parsed);
        return true;
    } catch (const Refusal& refusal) {
        return refuse(refusal.message);
    } catch (const Json::parse_error& e) {
        return refuse(L"Duyuru akışı geçerli JSON değil (" + place(document, e.byte > 0 ? e.byte - 1 : 0) +
                      L").");
    } catch (const std::bad_alloc&) {
        return refuse(L"Bellek yetersiz.");
    } catch (const std::exception&) {
        return refuse(L"Duyuru akışı okunamadı.");
    }
}

} // namespace nv::update
