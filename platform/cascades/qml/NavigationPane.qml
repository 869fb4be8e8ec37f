import QtQuick
import bb.cascades.state 1.0 as State

// Pages fill it by themselves. Esc and the key for going back take the top page away.
State.NavigationPane {
    id: pane

    width: parent ? parent.width : 0
    height: parent ? parent.height : 0

    Keys.onEscapePressed: event => goBack(event)
    Keys.onBackPressed: event => goBack(event)

    function goBack(event) {
        event.accepted = count > 1;
        if (event.accepted)
            pop();
    }
}
