import QtQml
import Qt.labs.folderlistmodel

// The newest screenshot.
FolderListModel {
    // Path; empty if there is none.
    readonly property string path: count > 0 ? get(0, "filePath") : ""

    nameFilters: ["*.png"]
    showDirs: false
    sortField: FolderListModel.Time
    // A model starts in the working directory, and so does the path to the screenshots.
    Component.onCompleted: folder = folder + "/shared/camera"
}
