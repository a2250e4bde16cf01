#include "update/checked_sink.h"

#include "update/retry.h"

namespace nv::update {

bool FetchOutcome::retriable() const {
    switch (fault) {
    case FetchFault::Status:
        return isRetriableStatus(transfer.head.status);
    case FetchFault::BadRange:
    case FetchFault::BadLength:
    case FetchFault::TooLong:
    case FetchFault::ShortBody:
        return true;
    case FetchFault::Network:
        return isTransientError(transfer.error);
    default:
        return false;
    }
}

CheckedSink::CheckedSink(Expected expected, Consume consume, const std::atomic<bool>* abandon)
    : expected_(expected), consume_(std::move(consume)), abandon_(abandon) {}

bool CheckedSink::refuse(FetchFault fault, std::string detail) {
    fault_ = fault;
    detail_ = std::move(detail);
    return false;
}

bool CheckedSink::onHead(const HttpResponseHead& head) {
    const std::optional<ByteRange>& range = expected_.range;
    const bool rangeIsWhole =
        range && expected_.size && range->first == 0 && range->last + 1 == *expected_.size;
    if (head.status == 206 && range) {
        const auto& got = head.contentRange;
        if (!got || got->range != *range || (got->total && expected_.size && *got->total != *expected_.size))
            return refuse(FetchFault::BadRange, "istenen aralik " + std::to_string(range->first) + "-" +
                                                    std::to_string(range->last) +
                                                    ", gelen Content-Range farkli");
        length_ = range->length();
    } else if (head.status == 200) {
        if (range && !rangeIsWhole)
            return refuse(FetchFault::RangeIgnored, "sunucu araligi yok sayip dosyanin tamamini gonderiyor");
        length_ = expected_.size;
    } else {
        return refuse(FetchFault::Status, "HTTP " + std::to_string(head.status));
    }
    if (head.contentLength) {
        if (length_ && *head.contentLength != *length_)
            return refuse(FetchFault::BadLength, "Content-Length " + std::to_string(*head.contentLength) +
                                                     ", beklenen " + std::to_string(*length_));
        if (!length_ && *head.contentLength > expected_.limit)
            return refuse(FetchFault::TooLong,
                          "Content-Length " + std::to_string(*head.contentLength) + " siniri asiyor");
    }
    return true;
}

bool CheckedSink::onData(const uint8_t* data, size_t size) {
    if (abandon_ && abandon_->load(std::memory_order_relaxed))
        return refuse(FetchFault::Abandoned, "birakildi");
    const uint64_t most = length_ ? *length_ : expected_.limit;
    if (size > most - received_)
        return refuse(FetchFault::TooLong,
                      "beklenenden uzun govde (" + std::to_string(most) + " bayttan fazla)");
    received_ += size;
    if (size > 0 && !consume_(data, size)) return refuse(FetchFault::Consumer, "yazilamadi");
    return true;
}

FetchOutcome CheckedSink::finish(const TransferResult& result) const {
    FetchOutcome outcome;
    outcome.transfer = result;
    if (fault_ != FetchFault::None) {
        outcome.fault = fault_;
        outcome.detail = detail_;
    } else if (result.error == TransferError::Cancelled) {
        outcome.fault = FetchFault::Cancelled;
        outcome.detail = "durduruldu";
    } else if (result.error != TransferError::None) {
        outcome.fault =
            result.error == TransferError::ShortBody ? FetchFault::ShortBody : FetchFault::Network;
        outcome.detail = std::string(transferErrorName(result.error)) + " (" +
                         std::to_string(result.systemCode) + "), " + std::to_string(received_) +
                         " bayt geldi";
    } else if (result.head.status == 0) {
        outcome.fault = FetchFault::Network;
        outcome.detail = "yanit yok";
    } else if (length_ && received_ != *length_) {
        outcome.fault = FetchFault::ShortBody;
        outcome.detail = std::to_string(received_) + " bayt geldi, beklenen " + std::to_string(*length_);
    }
    return outcome;
}

const char* transferErrorName(TransferError error) {
    switch (error) {
    case TransferError::None:
        return "tamam";
    case TransferError::Cancelled:
        return "durduruldu";
    case TransferError::Stopped:
        return "alici durdurdu";
    case TransferError::Resolve:
        return "sunucu adi cozulemedi";
    case TransferError::Connect:
        return "baglanti kurulamadi";
    case TransferError::Timeout:
        return "zaman asimi";
    case TransferError::Tls:
        return "guvenli baglanti kurulamadi";
    case TransferError::Redirects:
        return "cok fazla yonlendirme";
    case TransferError::ShortBody:
        return "baglanti yarida kesildi";
    case TransferError::Protocol:
        return "yanit okunamadi";
    case TransferError::Other:
        return "ag hatasi";
    }
    return "ag hatasi";
}

std::wstring transferErrorText(const TransferResult& result) {
    const wchar_t* text = L"ağ hatası";
    switch (result.error) {
    case TransferError::Resolve:
        text = L"sunucu adı çözülemedi";
        break;
    case TransferError::Connect:
        text = L"sunucuya bağlanılamadı";
        break;
    case TransferError::Timeout:
        text = L"sunucu yanıt vermiyor (zaman aşımı)";
        break;
    case TransferError::Tls:
        text = L"güvenli bağlantı kurulamadı";
        break;
    case TransferError::Redirects:
        text = L"sunucu çok fazla yönlendirme yapıyor";
        break;
    case TransferError::ShortBody:
        text = L"bağlantı yarıda kesildi";
        break;
    case TransferError::Protocol:
        text = L"sunucunun yanıtı okunamadı";
        break;
    default:
        break;
    }
    std::wstring out = text;
    if (result.systemCode != 0) out += L" (" + std::to_wstring(result.systemCode) + L")";
    return out;
}

} // namespace nv::update
