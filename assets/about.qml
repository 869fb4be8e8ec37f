import QtQuick
import bb.cascades 1.0

// The help page.
Page {
    id: page

    title: qsTr("Help")
    home: scroll

    ScrollView {
        id: scroll
        anchors.fill: parent

        HelpSection {
            title: qsTr("Morvane")
            text: qsTr("A camera whose effects are part of the film: what you see in the viewfinder, with its filter, "
                       + "texture and stamp, is what is recorded.")
        }

        HelpSection {
            title: qsTr("On the viewfinder")
            entries: [
                [qsTr("The round red button"), qsTr("Starts and ends a recording. While it runs, a red dot blinks "
                    + "beside the time that has passed.")],
                [qsTr("The size, at the upper left"), qsTr("The size of the film. Touch it to choose another one. "
                    + "During a recording it is a lamp instead and switches the video light: the camera's, or a "
                    + "brighter picture where it has none.")],
                [qsTr("The menu"), qsTr("Filters, textures, screen size, video light, scene, stabilization, and the "
                    + "other camera. A touch beside the menu closes it. Size and camera stay as they are during a "
                    + "recording.")],
                [qsTr("The triangle"), qsTr("Plays the last film. The camera pauses meanwhile.")],
                [qsTr("The three dots"), qsTr("Screenshot, the last screenshot, screen recording, private mode, "
                    + "invitation, settings and this page.")],
                [qsTr("Two fingers, or Ctrl and the mouse wheel"), qsTr("Zoom.")],
                [qsTr("The top edge"), qsTr("Pull it down for settings, help and private mode.")]
            ]
        }

        HelpSection {
            title: qsTr("Color Filters")
            entries: [
                [qsTr("Color Mixer"), qsTr("One color of your choice for the whole picture. Two sliders mix it.")],
                [qsTr("Yellow, Blue, Green and Red Solid"), qsTr("The picture in one color.")],
                [qsTr("Sepia, Negative, Greyscale"), qsTr("Brown as an old photograph; all of the same brightness, "
                    + "colors only; no color at all.")],
                [qsTr("Yellow, Blue, Green, Red"), qsTr("Keeps this color, and makes the rest grey. The slider says "
                    + "how far a hue may be from it. A touch on the viewfinder puts the slider away; the round "
                    + "picture of the filter brings it back.")],
                [qsTr("Normal"), qsTr("No filter.")]
            ]
        }

        HelpSection {
            title: qsTr("Textures and pictures")
            text: qsTr("Default Textures lays fog, frost, dust, a frame, a scope or bricks over the whole film; "
                       + "No Texture takes it away. Load Texture takes a picture of your own, a PNG with transparency "
                       + "(32 bits per pixel), in its own size or stretched over the film. The settings say where a "
                       + "smaller one stands, and whether it keeps its colors under a filter.")
        }

        HelpSection {
            title: qsTr("Date and time")
            text: qsTr("The settings put the date, or date and time, into the picture: in one of eight forms, six "
                       + "colors and five places. A stamp with the time goes on during a recording.")
        }

        HelpSection {
            title: qsTr("Private mode and screen recording")
            text: qsTr("Private mode covers the viewfinder, so that nobody sees what the camera sees. Everything goes "
                       + "on beneath it, a recording too.\n\nScreen recording films the screen instead: choose it, "
                       + "press the red button, and press it again at the end. The square at the upper left leads "
                       + "back to the camera. Filters and textures do not change the screen's picture.")
        }

        HelpSection {
            title: qsTr("Where the files go")
            entries: [
                [qsTr("Films"), qsTr("Videos/Camera in your home folder, as MP4.")],
                [qsTr("Screenshots"), qsTr("Pictures/Camera in your home folder, as PNG.")]
            ]
        }

        HelpSection {
            title: qsTr("Keys")
            entries: [
                [qsTr("Space or R"), qsTr("Start and end a recording.")],
                [qsTr("M"), qsTr("The menu. Arrows and Enter choose; Left goes back to the main list.")],
                [qsTr("Esc"), qsTr("Back: closes a list, a panel, this page.")],
                [qsTr("F1"), qsTr("Help.")],
                [qsTr("Ctrl+,"), qsTr("Settings.")],
                [qsTr("F10"), qsTr("What the top edge holds.")],
                [qsTr("Ctrl+Left, Ctrl+Right"), qsTr("Turn the display.")],
                [qsTr("Tab"), qsTr("The next button; Space or Enter presses it.")],
                [qsTr("Ctrl+Q"), qsTr("Quit. A recording is ended properly.")]
            ]
        }
    }
}
