// SPDX-License-Identifier: MIT
#pragma once

#include "Base/DescribedError.h"

#include <QtGlobal>

namespace orvane {

/// A secret store that did not do what it was asked; `status` is its own word for why.
class KeychainError : public DescribedError {
public:
    enum class Kind { saveFailed, loadFailed, deleteFailed };

    KeychainError(Kind kind, qint32 status);

    Kind kind() const { return m_kind; }
    qint32 status() const { return m_status; }
    /// Another store may do it.
    bool isKeyringAway() const;

private:
    Kind m_kind;
    qint32 m_status;
};

} // namespace orvane
