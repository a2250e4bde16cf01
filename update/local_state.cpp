#include "update/local_state.h"

#include "update/remote_config.h"

#include <algorithm>
#include <charconv>
#include <vector>

namespace nv::update {

namespace {

constexpr std::string_view kHeader = "norvane-state 1";

template <class T> bool parseNumber(std::string_view text, T& value) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() && !text.empty();
}

} // namespace

LocalState parseLocalState(std::string_view text) {
    LocalState state;
    if (!text.starts_with(kHeader)) return state; // another version's file: start afresh
    while (!text.empty()) {
        const size_t end = text.find('\n');
        const std::string_view line = text.substr(0, end);
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
        size_t tabs[3];
        size_t at = 0;
        bool ok = true;
        for (size_t& tab : tabs) {
            tab = line.find('\t', at);
            ok = ok && tab != std::string_view::npos;
            at = ok ? tab + 1 : at;
        }
        if (!ok || tabs[0] == 0) continue;
        KnownFile known;
        const auto crc = parseCrcText(line.substr(tabs[2] + 1));
        if (!crc || !parseNumber(line.substr(tabs[0] + 1, tabs[1] - tabs[0] - 1), known.size) ||
            !parseNumber(line.substr(tabs[1] + 1, tabs[2] - tabs[1] - 1), known.writeTime))
            continue;
        known.crc = *crc;
        state[std::string(line.substr(0, tabs[0]))] = known;
    }
    return state;
}

std::string writeLocalState(const LocalState& state) {
    std::vector<const LocalState::value_type*> rows;
    rows.reserve(state.size());
    for (const auto& row : state)
        rows.push_back(&row);
    std::sort(rows.begin(), rows.end(), [](auto* a, auto* b) { return a->first < b->first; });
    std::string out(kHeader);
    out += '\n';
    for (const auto* row : rows)
        out += row->first + "\t" + std::to_string(row->second.size) + "\t" +
               std::to_string(row->second.writeTime) + "\t" + crcText(row->second.crc) + "\n";
    return out;
}

} // namespace nv::update
