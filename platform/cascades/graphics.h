#pragma once

namespace handset {

/// Selects the software scene graph unless a GPU drives OpenGL. Call once, after the application object and before the
/// first window; QT_QUICK_BACKEND overrides it. Prints nothing. UI thread.
void choose_graphics();

}  // namespace handset
