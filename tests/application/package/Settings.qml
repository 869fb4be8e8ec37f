// A main screen with everything that the application looks for, but without a look.
import bb.cascades 1.0 as Handset
import bb.cascades.state 1.0

NavigationPane {
    Page {
        Container {
            objectName: "mainContainer"

            Container { objectName: "cameraContainer" }
            Container {
                objectName: "screensizeContainer"

                Label { objectName: "screensize" }
                ImageButton { objectName: "screenImg" }
            }
            ImageButton { objectName: "imgbut_record_stop" }
            ImageButton { objectName: "menuIconImgButton" }
            ImageView { objectName: "sceneImg"; visible: false }
            ImageView { objectName: "modeImg"; visible: false }
            Container { objectName: "playContainer"; visible: false }
            Container {
                objectName: "RecordContainer"
                visible: false

                Label { objectName: "recordLabel" }
                ImageView { objectName: "recordRedDotImg" }
            }
            Container {
                objectName: "listMenuContainer"
                visible: false

                Handset.TranslateTransition { objectName: "menuAnim" }
                Container {
                    objectName: "iconListViewContainer"

                    ListView { objectName: "menuListview"; dataModel: _mainApp.model }
                }
            }
            Container {
                objectName: "effectContainer"
                visible: false

                ImageView { objectName: "effectImg" }
            }
            Container { objectName: "setColorContainer"; visible: false }
            Container { objectName: "setYUVContainer"; visible: false }
            Container { objectName: "videoContainer"; visible: false }
            Container {
                objectName: "screenrecorderContainer"

                ImageButton { objectName: "screenrecord_img" }
            }
            Container { objectName: "privatebackground"; visible: false }
        }
    }
}
