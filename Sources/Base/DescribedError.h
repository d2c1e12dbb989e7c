// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <exception>

namespace orvane {

/// An error that carries words for the person at the screen. Copyable, thread-safe to read.
class DescribedError : public std::exception {
public:
    explicit DescribedError(const QString &description)
        : m_description(description.toUtf8()) {}

    /// UTF-8.
    const char *what() const noexcept override { return m_description.constData(); }

private:
    QByteArray m_description;
};

/// The words that a screen shows for any error. Errors of foreign libraries give their own text.
QString localizedDescription(const std::exception &error);

} // namespace orvane
