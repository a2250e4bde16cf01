#pragma once
// What the patcher shows of an update run: the texts of "TEXT_MAIN" (the state and the share done),
// "TEXT_SUB" (the file and its share) and "TEXT_TORRENT" (speed and time left), the gauges "PROGRESS_MAIN"
// (all bytes) and "PROGRESS_SUB" (the current file), and the lines --headless prints. Portable, so that what
// the player reads is tested without a window.

#include "skin/locale.h"
#include "update/update_run.h"

#include <string>

namespace nv {

struct UpdateDisplay {
    std::wstring main, sub, torrent;
    float mainGauge = 0.f, subGauge = 0.f;
};

UpdateDisplay updateDisplay(const update::Progress& progress, const LocaleTable& strings);

// "1 sa 02 dk", "3 dk 05 sn", "42 sn".
std::wstring durationText(int64_t seconds);

// The line --headless prints when a step starts ("" for a step that prints none).
std::wstring stepLine(update::Step step, const LocaleTable& strings);

// The failure's text, and where the run's log is so that the player can send it.
std::wstring failureMessage(const update::Failure& failure, const LocaleTable& strings,
                            const std::wstring& logPath);

} // namespace nv
