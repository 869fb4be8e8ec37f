// A settings sheet with everything that the application looks for, but without a look.
import bb.cascades 1.0 as Handset
import bb.cascades.state 1.0

Handset.Sheet {
    Container {
        DropDown { objectName: "timeformatDropdown"; options: ["0", "1", "2", "3", "4", "5", "6", "7", "8"] }
        DropDown { objectName: "colorDropdown"; options: ["0", "1", "2", "3", "4", "5"] }
        DropDown { objectName: "positionDropdown"; options: ["0", "1", "2", "3", "4"] }
        DropDown { objectName: "position"; options: ["0", "1", "2", "3", "4", "5", "6"] }
        CheckBox { objectName: "shuttersound" }
        CheckBox { objectName: "includelogo" }
        Container {
            objectName: "logooriginalcolor_container"

            CheckBox { objectName: "logooriginalcolor" }
        }
    }
}
