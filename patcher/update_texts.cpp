#include "patcher/update_texts.h"

#include "core/format.h"
#include "core/text.h"
#include "update/failure_text.h"

#include <cmath>

namespace nv {
namespace {

std::wstring text(const LocaleTable& strings, const char* key) {
    const auto found = strings.find(key);
    return found != strings.end() ? found->second : widenAscii(key);
}

float share(uint64_t done, uint64_t total) {
    return total == 0 ? 0.f : float(double(std::min(done, total)) / double(total));
}

std::wstring percent(float value) {
    return L"%" + std::to_wstring(int(std::floor(value * 100.f)));
}

std::wstring twoDigits(int64_t value) {
    return (value < 10 ? L"0" : L"") + std::to_wstring(value);
}

} // namespace

std::wstring durationText(int64_t seconds) {
    if (seconds < 0) seconds = 0;
    if (seconds >= 3600)
        return std::to_wstring(seconds / 3600) + L" sa " + twoDigits(seconds % 3600 / 60) + L" dk";
    if (seconds >= 60) return std::to_wstring(seconds / 60) + L" dk " + twoDigits(seconds % 60) + L" sn";
    return std::to_wstring(seconds) + L" sn";
}

UpdateDisplay updateDisplay(const update::Progress& p, const LocaleTable& strings) {
    using update::Step;
    UpdateDisplay d;
    switch (p.step) {
    case Step::Config:
        d.main = text(strings, "CONFIG_LOADING");
        break;
    case Step::SelfUpdate:
        d.main = text(strings, "NV_SELF_UPDATE");
        break;
    case Step::List:
        d.main = text(strings, "CONFIG_APPYING");
        break;
    case Step::Check:
        d.main = text(strings, "TORRENT_STATE_CHECKING");
        d.sub = update::fillPlaceholders(text(strings, "NV_CHECK_DETAIL"),
                                         {std::to_wstring(p.filesDone), std::to_wstring(p.filesTotal)});
        d.mainGauge = share(p.filesDone, p.filesTotal);
        break;
    case Step::Download: {
        d.mainGauge = share(p.bytesDone, p.bytesTotal);
        d.subGauge = share(p.currentDone, p.currentSize);
        d.main = text(strings, "TORRENT_STATE_DOWNLOADING") + L"  " + percent(d.mainGauge);
        if (!p.currentFile.empty()) d.sub = utf8ToWide(p.currentFile) + L" (" + percent(d.subGauge) + L")";
        if (p.bytesPerSecond > 0) {
            d.torrent = update::fillPlaceholders(text(strings, "TORRENT_DOWNLOAD_SPEED"),
                                                 {sizeText(uint64_t(p.bytesPerSecond))});
            if (p.secondsLeft >= 0)
                d.torrent += L"  " + update::fillPlaceholders(text(strings, "NV_REMAINING"),
                                                              {durationText(p.secondsLeft)});
        }
        break;
    }
    case Step::Done:
        d.main = text(strings, "NV_UP_TO_DATE");
        d.mainGauge = d.subGauge = 1.f;
        break;
    }
    return d;
}

std::wstring stepLine(update::Step step, const LocaleTable& strings) {
    using update::Step;
    switch (step) {
    case Step::Config:
        return text(strings, "CONFIG_LOADING");
    case Step::SelfUpdate:
        return text(strings, "NV_SELF_UPDATE");
    case Step::List:
        return text(strings, "CONFIG_APPYING");
    case Step::Check:
        return text(strings, "TORRENT_STATE_CHECKING");
    case Step::Download:
        return text(strings, "TORRENT_STATE_DOWNLOADING");
    case Step::Done:
        return text(strings, "NV_UP_TO_DATE");
    }
    return {};
}

std::wstring failureMessage(const update::Failure& failure, const LocaleTable& strings,
                            const std::wstring& logPath) {
    std::wstring message = update::failureText(failure, strings);
    if (!logPath.empty()) message += L"\n\nGünlük: " + logPath;
    return message;
}

} // namespace nv
