// SPDX-License-Identifier: MIT
#include "Base/RecordList.h"

namespace orvane {

QHash<int, QByteArray> RecordListModel::roleNames() const {
    return {{RecordRole, "record"}};
}

} // namespace orvane
