// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace orvane::homeserver {

// Makes a folder that nobody else on the machine may look into, and keeps other servers out of it until the
// end of its scope, or of the process, however that ends. The constructor throws std::runtime_error when the
// folder can't be made or belongs to another server.
class FolderLock {
public:
    explicit FolderLock(const QString &folder);
    ~FolderLock();
    Q_DISABLE_COPY_MOVE(FolderLock)

private:
    int m_descriptor = -1;
};

} // namespace orvane::homeserver
