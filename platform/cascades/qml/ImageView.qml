import QtQuick
import bb.cascades.state 1.0 as State

// A picture, whole and in its own proportions.
State.ImageView {
    id: view

    // Empty: an ornament that a screen reader passes over.
    property string accessibleName: ""

    implicitWidth: preferredWidth > 0 ? preferredWidth : picture.implicitWidth
    implicitHeight: preferredHeight > 0 ? preferredHeight : picture.implicitHeight

    Accessible.role: Accessible.Graphic
    Accessible.name: accessibleName
    Accessible.ignored: accessibleName === ""

    Image {
        id: picture
        anchors.fill: parent
        source: view.imageSource
        fillMode: Image.PreserveAspectFit
        asynchronous: false
        smooth: true
        mipmap: true
    }
}
