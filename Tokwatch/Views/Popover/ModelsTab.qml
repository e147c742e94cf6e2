import QtQuick
Item { required property var view; property bool active; implicitHeight: 300 }
