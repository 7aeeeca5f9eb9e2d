import QtQuick 2.12
import QtQuick.Window 2.12
import QtQuick.Layouts 1.12
import QtQuick.Controls 2.12
import com.zuvy 1.0
import com.zuvy.kvoui 1.0

ApplicationWindow {
    id: window

    property Backend backend: Backend {
        onCopyDone: doneDlg.open()
    }

    function callLater(action) {
        Qt.callLater(action) // qmllint disable type
    }

    title: qsTr("Copy Project")
    visible: true
    width: minimumWidth
    height: minimumHeight
    minimumWidth: Math.max(640, footer.implicitWidth, mainLayout.implicitWidth + 16)
    minimumHeight: footer.implicitHeight + mainLayout.implicitHeight + 16
    maximumHeight: minimumHeight

    Component.onCompleted: {
        copyButton.takeFocus()
        if (!backend.valid)
            callLater(Qt.quit)
    }

    ColumnLayout {
        id: mainLayout

        anchors { left: parent.left; right: parent.right; top: parent.top; margins: 8 }

        Label {
            text: qsTr("Before the project can be opened it must be copied to a folder you can write to. Please select a destination folder below.")
        }
        Label {
            objectName: "windowsNote"
            visible: !window.backend.dotnet && window.backend.isWindows
            textFormat: Text.RichText
            text: qsTr("<b>Note:</b> You need to generate a 64-bit project.<br/>When generating Visual Studio projects you need to set the platform to x64,<br/>otherwise CMake may default to Win32 and fail to generate the project.")
        }
        Option {
            objectName: "copyWrapperBox"
            visible: window.backend.dotnet
            text: qsTr("Copy .NET wrapper so it can also be modified.")
            checked: window.backend.copyWrapper
            onCheckedChanged: window.backend.copyWrapper = checked
        }
        Option {
            objectName: "openSolutionBox"
            visible: window.backend.dotnet
            text: qsTr("Open the solution after copying.")
            checked: window.backend.openSolution
            onCheckedChanged: window.backend.openSolution = checked
        }
        Option {
            objectName: "runCMakeBox"
            visible: !window.backend.dotnet
            text: qsTr("Run CMake-GUI after copying to generate buildable projects.")
            checked: window.backend.runCMake
            onCheckedChanged: window.backend.runCMake = checked
        }
        Label {
            id: destinationLabel
            text: qsTr("Destination Folder:")
        }
        RowLayout {
            Layout.fillWidth: true

            TextField {
                id: destinationField
                objectName: "destinationField"
                Layout.fillWidth: true
                readOnly: true
                text: window.backend.destination
                Accessible.name: destinationLabel.text

                ToolTip {
                    visible: destinationField.hovered
                    text: window.backend.destination
                    // One pixel more than the text, as rounding could wrap it otherwise.
                    width: Math.min(destinationField.contentWidth + 1 + leftPadding + rightPadding, window.width - 16)
                    contentItem: WrappedText {
                        objectName: "toolTipText"
                        text: destinationField.text
                    }
                }
            }
            PushButton {
                objectName: "chooseButton"
                implicitWidth: 40
                implicitHeight: 40
                padding: 0
                text: "..."
                Accessible.name: qsTr("Choose Destination Folder")
                onClicked: destDirDlg.open()
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

            PushButton {
                objectName: "closeButton"
                enabled: !window.backend.copying
                text: qsTr("Close")
                onClicked: window.close()
            }
            Item {
                Layout.fillWidth: true
            }
            PushButton {
                id: copyButton
                objectName: "copyButton"
                enabled: !window.backend.copying
                text: qsTr("Copy")
                onClicked: {
                    if (window.backend.destinationExists)
                        overwriteDlg.open()
                    else
                        window.backend.start()
                }
            }
        }
    }

    WidgetFileDialog {
        id: destDirDlg
        objectName: "destDirDlg"
        title: qsTr("Destination Folder")
        selectFolder: true
        selectMultiple: false
        folder: window.backend.destinationUrl
        onAccepted: window.backend.destinationUrl = String(fileUrl)
    }

    OverlayDialog {
        id: copyDlg
        objectName: "copyDlg"
        title: qsTr("Copy Progress")
        visible: window.backend.copying

        function reopen() {
            if (window.backend.copying)
                open()
        }

        // Shown as long as a copy runs. Deferred: after a click outside, the clicked item takes focus first.
        onClosed: window.callLater(reopen)
        // The dialog itself has the focus, as a second press of the key that started the copy must not abort it.
        onOpened: {
            for (const item of [abortButton, abortBox.contentItem, abortBox])
                item.focus = false
            forceActiveFocus()
        }
        footer: ButtonBox {
            id: abortBox

            PushButton {
                id: abortButton
                objectName: "abortButton"
                text: window.backend.copying ? qsTr("Abort") : qsTr("Close")
                onClicked: window.backend.abort()
            }
        }

        ColumnLayout {
            anchors { left: parent.left; right: parent.right; top: parent.top }

            RowLayout {
                Label {
                    id: fileCaption
                    objectName: "fileCaption"
                    text: window.backend.copyFile === "" ? qsTr("Starting...") : qsTr("File:")
                }
                Label {
                    id: fileLabel
                    objectName: "fileLabel"

                    // Shown once a frame, as it changes far more often.
                    readonly property string latest: window.backend.copyFile

                    onLatestChanged: update()
                    Layout.fillWidth: true
                    // One line of a steady height, whatever script or character a name holds.
                    Layout.preferredHeight: fileCaption.implicitHeight
                    textFormat: Text.PlainText
                    maximumLineCount: 1
                    elide: Text.ElideMiddle
                    horizontalAlignment: Text.AlignLeft

                    Connections {
                        target: window
                        function onAfterAnimating() {
                            fileLabel.text = fileLabel.latest
                        }
                    }
                }
            }
            ProgressBar {
                objectName: "progressBar"
                readonly property int percent: Math.floor(value * 100)
                Layout.fillWidth: true
                value: window.backend.copyProgress
                Accessible.name: qsTr("Progress: %1 %").arg(percent)
            }
        }
    }

    MessageDialog {
        id: overwriteDlg
        objectName: "overwriteDlg"
        title: "Warning"
        text: qsTr("The folder %1 already exists. If you continue it will be removed, are you sure you want to continue.").arg(window.backend.destination)
        standardButtons: Dialog.Yes | Dialog.No
        firstButton: Dialog.No
        onClosed: if (!window.backend.copying) copyButton.takeFocus()
        onAccepted: window.backend.start()
    }

    MessageDialog {
        id: doneDlg
        objectName: "doneDlg"

        function message() {
            switch (window.backend.status) {
            case Backend.STATUS_CMAKE_RUNNING:
                return qsTr("Done copying files, you can finish generating the project in cmake-gui.\nYou can also manually generate the project with cmake in %1.\nDon't forget, you need to generate a 64-bit project.")
            case Backend.STATUS_CMAKE_RUN_FAILED:
                return qsTr("Done copying files, but could not find cmake-gui.\nYou can manually run cmake in %1.\nDon't forget, you need to generate a 64-bit project.")
            case Backend.STATUS_SOLUTION_OPENED:
                return qsTr("Done copying files, opening the solution.\nYou can also manually open the solution in %1.")
            case Backend.STATUS_SOLUTION_OPEN_FAILED:
                return qsTr("Done copying files, but failed to open the solution.\nVisual Studio or MonoDevelop may not be installed or configured.\nYou can manually open the solution in %1.")
            default:
                return qsTr("Done copying files, you can now open the project in %1.")
            }
        }

        title: "Copy Done"
        text: message().arg(window.backend.destination)
        standardButtons: Dialog.Ok
        firstButton: Dialog.Ok
        onClosed: copyButton.takeFocus()
        onAccepted: window.close()
    }

    // Presses on Return and Enter, which the style itself does only with some platform themes. A key held down presses
    // once, so that it does not go through one dialog after the other.
    component PressKeys: Item {
        signal press

        Keys.onPressed: (event) => {
            const isPlain = (event.modifiers & ~Qt.KeypadModifier) === 0
            const returns = isPlain && (event.key === Qt.Key_Return || event.key === Qt.Key_Enter)
            event.accepted = returns || (event.key === Qt.Key_Space && event.isAutoRepeat)
            if (returns && !event.isAutoRepeat)
                press()
        }
    }

    component PushButton: Button {
        id: button

        // Shows the focus, even if a click or a closed dialog gave it to the button already.
        function takeFocus() {
            forceActiveFocus(Qt.TabFocusReason)
            focusReason = Qt.TabFocusReason
        }

        Accessible.onPressAction: if (enabled) clicked()
        Keys.forwardTo: PressKeys {
            onPress: button.clicked()
        }
    }

    component Option: CheckBox {
        id: option

        horizontalPadding: 0
        Accessible.onPressAction: toggle()
        Accessible.onToggleAction: toggle()
        Keys.forwardTo: PressKeys {
            onPress: option.toggle()
        }
    }

    component WrappedText: Label {
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
    }

    component ButtonBox: DialogButtonBox {
        padding: 8
        topPadding: 0
        spacing: 8
        alignment: Qt.AlignRight
        delegate: Component {
            PushButton {}
        }
    }

    // With small margins, since a dialog must fit into the window's fixed height.
    component OverlayDialog: Dialog {
        id: dialog

        parent: Overlay.overlay
        x: (parent.width - width) / 2
        y: (parent.height - height) / 2
        width: parent.width - 16
        padding: 8

        header: Label {
            text: dialog.title
            font.bold: true
            padding: 8
            bottomPadding: 0
        }
    }

    component MessageDialog: OverlayDialog {
        id: messageDialog

        property string text
        property int firstButton
        readonly property real room: parent.height - implicitHeaderHeight - implicitFooterHeight - 2 * padding

        onOpened: {
            standardButton(firstButton).takeFocus()
            // Tab stays within the dialog, which is not modal.
            const first = buttonBox.itemAt(0)
            const last = buttonBox.itemAt(buttonBox.count - 1)
            first.KeyNavigation.tab = last
            last.KeyNavigation.tab = first
        }
        footer: ButtonBox {
            id: buttonBox
        }

        WrappedText {
            objectName: "message"
            // Only while it shows, as fitting it into no room at all slows the start.
            text: messageDialog.visible ? messageDialog.text : ""
            width: parent.width
            // A message too long for the window's fixed height is set in smaller type.
            height: Math.min(implicitHeight, messageDialog.room)
            fontSizeMode: Text.Fit
            minimumPointSize: 1
        }
    }
}
