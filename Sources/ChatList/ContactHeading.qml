// SPDX-License-Identifier: MIT
import QtQuick

Item {}
