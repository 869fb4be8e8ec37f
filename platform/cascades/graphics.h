#pragma once

namespace handset {

/// Takes the software scene graph unless there is an OpenGL that a GPU draws. To be called once, after the application
/// object and before the first window; QT_QUICK_BACKEND has the last word. Prints nothing. UI thread.
void choose_graphics();

}  // namespace handset
