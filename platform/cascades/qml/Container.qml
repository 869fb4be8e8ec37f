import QtQuick
import bb.cascades.state 1.0 as State

// An area for controls; those of the document begin below the top padding. Controls that the program adds are on top
// of them, in the middle: as large as they ask for, but no larger than the area, and all over it where they ask for
// nothing.
State.Container {
    id: container

    default property alias content: area.data
    readonly property alias contentItem: area

    function fit(control) {
        if (control === area)
            return;
        const bounded = (wanted, room) => wanted > 0 ? Math.min(wanted, room) : room;
        control.width = Qt.binding(() => bounded(control.preferredWidth, container.width));
        control.height = Qt.binding(() => bounded(control.preferredHeight, container.height));
        control.x = Qt.binding(() => (container.width - control.width) / 2);
        control.y = Qt.binding(() => (container.height - control.height) / 2);
    }

    onChildrenChanged: {
        for (let i = 0; i < children.length; ++i)
            fit(children[i]);
    }

    Item {
        id: area
        anchors.fill: parent
        anchors.topMargin: container.topPadding
    }
}
