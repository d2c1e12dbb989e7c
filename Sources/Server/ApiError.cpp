// SPDX-License-Identifier: MIT
#include "Server/ApiError.h"

using namespace Qt::StringLiterals;

namespace orvane {

ApiError::ApiError(const QString &domain, qint64 code, const std::optional<QString> &description)
    : DescribedError(description.value_or(
          u"The operation couldn’t be completed. (%1 error %2.)"_s.arg(domain, QString::number(code))))
    , m_domain(domain)
    , m_code(code) {}

ApiError ApiError::api(qint64 status, const std::optional<QString> &description) {
    return ApiError(u"api"_s, status, description);
}

MessengerAPIError MessengerAPIError::badResponse() {
    return MessengerAPIError(u"The server’s answer was incomplete."_s);
}

} // namespace orvane
