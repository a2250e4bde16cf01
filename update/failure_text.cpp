#include "update/failure_text.h"

#include "core/format.h"
#include "core/text.h"
#include "update/checked_sink.h"

namespace nv::update {

const char* failureKey(FailureKind kind) {
    switch (kind) {
    case FailureKind::None:
        return "NV_UP_TO_DATE";
    case FailureKind::ConfigUnreachable:
        return "REMOTE_CONFIG_OPEN_ERROR";
    case FailureKind::ConfigInvalid:
        return "NV_INVALID_CONFIG";
    case FailureKind::NoDownloadUrl:
        return "NV_NO_DOWNLOAD_URL";
    case FailureKind::ListInvalid:
        return "INVALID_CRC_TABLE";
    case FailureKind::HttpStatus:
        return "NV_HTTP_ERROR";
    case FailureKind::Network:
        return "NV_NET_ERROR";
    case FailureKind::DownloadFailed:
        return "FAILED_DOWNLOAD_FILE";
    case FailureKind::CrcMismatch:
        return "NV_CRC_MISMATCH";
    case FailureKind::DiskFull:
        return "NV_DISK_FULL";
    case FailureKind::FileInUse:
        return "NV_FILE_IN_USE";
    case FailureKind::AccessDenied:
        return "NV_ADMIN_QUESTION";
    case FailureKind::CreateFailed:
        return "FAILED_CREATE_FILE";
    case FailureKind::WriteFailed:
        return "FAILED_WRITE_FILE";
    case FailureKind::ListUnsigned:
        return "NV_LIST_UNSIGNED";
    case FailureKind::ListForged:
        return "NV_LIST_FORGED";
    case FailureKind::ListExpired:
        return "NV_LIST_EXPIRED";
    case FailureKind::ListRollback:
        return "NV_LIST_ROLLBACK";
    case FailureKind::HashMismatch:
        return "NV_HASH_MISMATCH";
    }
    return "NOTICE";
}

std::wstring fillPlaceholders(std::wstring text, std::initializer_list<std::wstring> values) {
    size_t from = 0;
    for (const std::wstring& value : values) {
        size_t at = text.find(L'%', from);
        while (at != std::wstring::npos &&
               (at + 1 >= text.size() || (text[at + 1] != L's' && text[at + 1] != L'd')))
            at = text.find(L'%', at + 1);
        if (at == std::wstring::npos) break;
        text.replace(at, 2, value);
        from = at + value.size();
    }
    return text;
}

std::wstring failureText(const Failure& failure, const LocaleTable& strings) {
    const char* key = failureKey(failure.kind);
    const auto found = strings.find(key);
    const std::wstring text = found != strings.end() ? found->second : widenAscii(key);
    const std::wstring subject = utf8ToWide(failure.subject);
    switch (failure.kind) {
    case FailureKind::ConfigUnreachable: {
        const int status = failure.transfer.head.status;
        const std::wstring reason = status != 0 && status != 200 ? L"HTTP " + std::to_wstring(status)
                                    : failure.transfer.error != TransferError::None
                                        ? transferErrorText(failure.transfer)
                                        : L"geçersiz yanıt ya da adres";
        return fillPlaceholders(text, {subject + L" — " + reason});
    }
    case FailureKind::HttpStatus:
        return fillPlaceholders(text, {std::to_wstring(failure.httpStatus), subject});
    case FailureKind::Network:
        return fillPlaceholders(text, {transferErrorText(failure.transfer)});
    case FailureKind::DiskFull:
        return fillPlaceholders(text, {sizeText(failure.bytesNeeded)});
    default:
        return fillPlaceholders(text, {subject});
    }
}

} // namespace nv::update
