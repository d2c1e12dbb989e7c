// SPDX-License-Identifier: MIT
#pragma once

namespace orvane::homeserver {

class Router;

// Uploads and downloads of files and voice messages.
void addFiles(Router &router);

} // namespace orvane::homeserver
