import QtQuick
import QtQuick.Controls.Fusion
import Corvane.Overlay

// One feature of a release: the symbol, then title, detail, the optional button and media.
Row {
    id: row
    required property var feature
    signal actionRequested()

    objectName: "featureRow"
    spacing: 12

    Item {
        width: 30
        height: 24
        Symbol {
            objectName: "featureSymbol"
            anchors.centerIn: parent
            name: row.feature.symbol
            size: 20
            color: Theme.accentDeep
        }
    }
    Column {
        id: texts
        width: row.width - 30 - row.spacing
        spacing: 5
        Label {
            objectName: "featureTitle"
            width: parent.width
            text: row.feature.title
            font: Theme.font(13, Font.DemiBold)
            color: Theme.primary
        }
        Label {
            objectName: "featureDetail"
            width: parent.width
            wrapMode: Text.Wrap
            text: row.feature.detail
            font: Theme.font(12, Font.Normal)
            color: Theme.secondary
        }
        Item {
            visible: row.feature.actionTitle !== ""
            width: action.implicitWidth
            height: action.implicitHeight + 2
            Button {
                id: action
                objectName: "featureAction"
                y: 2
                text: row.feature.actionTitle
                onClicked: row.actionRequested()
            }
        }
        Item {
            objectName: "featureMedia"
            visible: media.active
            width: 400
            height: 250 + 6 // 6 points of padding above
            Loader {
                id: media
                active: row.feature.mediaKind !== ""
                y: 6
                width: 400
                height: 250
                sourceComponent: MediaView {
                    kind: row.feature.mediaKind
                    source: row.feature.mediaUrl
                }
            }
        }
    }
}
