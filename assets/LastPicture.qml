import QtQml
import Qt.labs.folderlistmodel

// The newest picture among the screenshots.
FolderListModel {
    // Path; empty where there is none.
    readonly property string path: count > 0 ? get(0, "filePath") : ""

    nameFilters: ["*.png"]
    showDirs: false
    sortField: FolderListModel.Time
    // A model begins in the working directory, and so does the way to the screenshots.
    Component.onCompleted: folder = folder + "/shared/camera"
}
