// A help page without help.
import bb.cascades.state 1.0

Page {
    objectName: "helpPage"
}
