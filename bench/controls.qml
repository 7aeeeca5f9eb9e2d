// The controls that the program's window shows at first, and nothing else of it.
import QtQuick 2.12
import QtQuick.Window 2.12
import QtQuick.Layouts 1.12
import QtQuick.Controls 2.12

ApplicationWindow {
    title: "Copy Project"
    visible: true
    width: mainLayout.implicitWidth + 16
    height: footer.implicitHeight + mainLayout.implicitHeight + 16

    ColumnLayout {
        id: mainLayout

        anchors { left: parent.left; right: parent.right; top: parent.top; margins: 8 }

        Label {
            text: "Before the project can be opened it must be copied to a folder you can write to. Please select a destination folder below."
        }
        CheckBox {
            text: "Run CMake-GUI after copying to generate buildable projects."
            checked: true
        }
        Label { text: "Destination Folder:" }
        RowLayout {
            TextField {
                Layout.fillWidth: true
                readOnly: true
                text: "/home/user/Documents/name"
            }
            Button {
                implicitWidth: 40
                implicitHeight: 40
                text: "..."
            }
        }
    }

    footer: Rectangle {
        color: "lightgrey"
        implicitWidth: buttonRow.implicitWidth + 16
        implicitHeight: buttonRow.implicitHeight + 16

        RowLayout {
            id: buttonRow

            anchors { fill: parent; margins: 8 }

            Button { text: "Close" }
            Item { Layout.fillWidth: true }
            Button { text: "Copy" }
        }
    }
}
