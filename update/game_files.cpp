#include "update/game_files.h"

namespace nv::update {

std::string describe(const FileError& error) {
    const char* what = "dosya hatasi";
    switch (error.fault) {
    case FileFault::None:
        what = "hata yok";
        break;
    case FileFault::NotFound:
        what = "bulunamadi";
        break;
    case FileFault::DiskFull:
        what = "disk dolu";
        break;
    case FileFault::InUse:
        what = "baska bir program kullaniyor";
        break;
    case FileFault::AccessDenied:
        what = "erisim engellendi";
        break;
    case FileFault::Other:
        break;
    }
    return error.path + ": " + what + " (" + std::to_string(error.code) + ")";
}

} // namespace nv::update
