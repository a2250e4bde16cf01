#include "update/run_log.h"

#include "update/bookkeeping.h"

#include <cstdio>
#include <ctime>

namespace nv::update {

bool RunLog::open(GameFiles& files, std::string_view header) {
    std::lock_guard lock(mutex_);
    FileError error;
    files.remove(logFileName(kKeptLogs - 1), error);
    for (int generation = kKeptLogs - 1; generation > 0; --generation) {
        FileInfo info;
        if (files.info(logFileName(generation - 1), info) && info.exists)
            files.replace(logFileName(generation - 1), logFileName(generation), error);
    }
    file_ = files.open(std::string(kLogFileName), false, error);
    if (!file_) return false;
    path_ = files.displayPath(std::string(kLogFileName));
    start_ = std::chrono::steady_clock::now();
    written_ = 0;
    full_ = false;

    char date[32] = "?";
    const std::time_t now = std::time(nullptr);
    if (const std::tm* utc = std::gmtime(&now))
        std::strftime(date, sizeof date, "%Y-%m-%d %H:%M:%S UTC", utc);
    const std::string first = std::string(date) + "  " + std::string(header) + "\n";
    FileError ignored;
    if (!file_->write(0, reinterpret_cast<const uint8_t*>(first.data()), first.size(), ignored))
        file_.reset();
    written_ = first.size();
    return file_ != nullptr;
}

void RunLog::line(std::string_view text) {
    std::lock_guard lock(mutex_);
    if (!file_ || full_) return;
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    char stamp[24];
    std::snprintf(stamp, sizeof stamp, "[%8.3f] ", seconds);
    std::string out = stamp;
    out.append(text.substr(0, 2000)); // a hostile name or address stays one readable line
    out += '\n';
    if (written_ + out.size() > kMaxBytes) {
        out = std::string(stamp) + "(gunluk siniri doldu; sonrasi yazilmadi)\n";
        full_ = true;
    }
    FileError ignored;
    if (!file_->write(written_, reinterpret_cast<const uint8_t*>(out.data()), out.size(), ignored)) {
        file_.reset();
        return;
    }
    written_ += out.size();
}

} // namespace nv::update
