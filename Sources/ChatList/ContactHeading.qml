import QtQuick

Item {}
