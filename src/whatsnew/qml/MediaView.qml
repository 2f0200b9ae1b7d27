import QtQuick
import QtMultimedia
import Corvane.Overlay

// Part 6.3's MediaView: a still picture fitted into 400 × 250, or a clip played muted, without
// controls, over and over, filling and cropping the frame; clipped to 8-point rounded corners.
// The clip pauses when the window closes.
Item {
    id: media
    required property string kind
    required property url source

    implicitWidth: 400
    implicitHeight: 250

    Item {
        anchors.fill: parent
        clip: true

        Image {
            objectName: "mediaImage"
            visible: media.kind === "image"
            anchors.fill: parent
            fillMode: Image.PreserveAspectFit
            source: media.kind === "image" ? media.source : ""
            asynchronous: true
        }
        VideoOutput {
            id: video
            objectName: "mediaVideo"
            visible: media.kind === "video"
            anchors.fill: parent
            fillMode: VideoOutput.PreserveAspectCrop
        }
    }
    // The 8-point rounded corners: the window's colour drawn around the frame, its inner edge
    // rounded (the software scene graph has no masks).
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

    MediaPlayer {
        id: player
        objectName: "mediaPlayer"
        source: media.kind === "video" ? media.source : ""
        loops: MediaPlayer.Infinite
        videoOutput: video
        audioOutput: AudioOutput { muted: true }
        Component.onCompleted: if (media.kind === "video") play()
    }

    Connections {
        target: media.Window.window
        function onClosing() { player.pause() }
    }
}
