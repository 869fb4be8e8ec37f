import bb.cascades.state 1.0 as State

// Its pages fill it by themselves.
State.NavigationPane {
    width: parent ? parent.width : 0
    height: parent ? parent.height : 0
}
