pragma Singleton

import QtQuick

// Colours, measures and times of everything that is drawn. Lengths are pixels of a display that is 720 or 768 wide and
// is held in a hand: what is touched is at least `touch` in both directions.
QtObject {
    // Surfaces, from the lowest to the highest.
    readonly property color background: "#101216"
    readonly property color surface: "#1a1d23"
    readonly property color surfaceRaised: "#272b33"
    readonly property color surfaceHovered: "#323843"
    readonly property color surfacePressed: "#414957"
    readonly property color outline: "#4a5361"
    // Over the picture of the camera: panels, the disc under a button, and what dims everything behind a panel.
    readonly property color overlay: "#e614171c"
    readonly property color disc: "#8c0b0d10"
    readonly property color discHovered: "#b3323843"
    readonly property color discPressed: "#d9414957"
    readonly property color scrim: "#8c000000"
    // Neutral: shows nothing of what is behind it.
    readonly property color cover: "#2b2f36"

    readonly property color text: "#f3f5f8"
    readonly property color textDim: "#b0b8c4"
    readonly property color textOnAccent: "#08131c"
    readonly property color accent: "#63c9ff"
    readonly property color accentHovered: "#8ad7ff"
    readonly property color accentPressed: "#3fa9e0"
    readonly property color danger: "#ff5146"
    readonly property color focus: "#ffd152"

    readonly property int touch: 92
    readonly property int icon: 56
    readonly property int spacingSmall: 8
    readonly property int spacing: 16
    readonly property int spacingLarge: 32
    readonly property int radius: 18
    readonly property int focusWidth: 5

    readonly property int fontSmall: 26
    readonly property int font: 32
    readonly property int fontLarge: 40
    readonly property int fontTitle: 46

    // Milliseconds.
    readonly property int durationFast: 120
    readonly property int duration: 220
}
