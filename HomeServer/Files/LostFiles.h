// SPDX-License-Identifier: MIT
#pragma once

namespace orvane::homeserver {

class Work;

// Throws away recordings whose message is gone and uploads whose chat is gone, once the work is committed.
void dropLostFiles(Work &work);

} // namespace orvane::homeserver
