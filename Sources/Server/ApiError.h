// SPDX-License-Identifier: MIT
#pragma once

#include "Base/DescribedError.h"

#include <optional>

namespace orvane {

/// A failure told by a domain and a code. In the domain "api" the code is the HTTP status.
class ApiError : public DescribedError {
public:
    ApiError(const QString &domain, qint64 code, const std::optional<QString> &description = std::nullopt);

    /// The domain "api".
    static ApiError api(qint64 status, const std::optional<QString> &description = std::nullopt);

    const QString &domain() const { return m_domain; }
    qint64 code() const { return m_code; }

private:
    QString m_domain;
    qint64 m_code;
};

/// The request did not get an answer.
class TransportError : public DescribedError {
    using DescribedError::DescribedError;
};

/// A file of this machine can't be read.
class FileError : public DescribedError {
    using DescribedError::DescribedError;
};

/// An answer without the one key that the operation exists for.
class MessengerAPIError : public DescribedError {
public:
    static MessengerAPIError badResponse();

private:
    using DescribedError::DescribedError;
};

} // namespace orvane
