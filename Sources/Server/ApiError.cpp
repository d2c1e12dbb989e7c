#include "Server/ApiError.h"

namespace orvane {

ApiError::ApiError(const QString &domain, qint64 code, const std::optional<QString> &description)
    : DescribedError(
          description.value_or(QStringLiteral("The operation couldn’t be completed. (%1 error %2.)")
                                   .arg(domain, QString::number(code))))
    , m_domain(domain)
    , m_code(code) {}

ApiError ApiError::api(qint64 status, const std::optional<QString> &description) {
    return ApiError(QStringLiteral("api"), status, description);
}

MessengerAPIError MessengerAPIError::badResponse() {
    return MessengerAPIError(QStringLiteral("The server’s answer was incomplete."));
}

} // namespace orvane
