import QtQuick
import Corvane.Overlay
import Corvane.Windows

// A still picture fitted into 400 × 250, or a clip played muted, without controls, over and over,
// filling and cropping the frame; 8-point rounded corners.
Item {
    id: media
    required property string kind
    required property url source

    implicitWidth: 400
    implicitHeight: 250

    Image {
        objectName: "mediaImage"
        visible: media.kind === "image"
        anchors.fill: parent
        fillMode: Image.PreserveAspectFit
        source: media.kind === "image" ? media.source : ""
        asynchronous: true
    }
    Loader {
        anchors.fill: parent
        active: media.kind === "video"
        sourceComponent: LoopingPlayer {
            objectName: "mediaPlayer"
            source: media.source
        }
    }
    // The rounded corners: the window's colour drawn around the frame, its inner edge rounded
    // (the software scene graph has no masks).
    Rectangle {
        objectName: "mediaCorners"
        anchors {
            fill: parent
            margins: -8
        }
        radius: 16
        color: "transparent"
        border.width: 8
        border.color: Theme.windowBackground
    }
}
