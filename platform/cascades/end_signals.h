#pragma once

class QObject;

namespace handset {

/// From now on SIGTERM and SIGINT end the event loop, with status 0, for the life of the process: further ones do not
/// kill a teardown that is running. One that comes before the loop runs ends it as soon as it does. UI thread, once per
/// application object.
/// @param owner  the application; the loop is left alone after its end
void quit_on_signals(QObject* owner);

}  // namespace handset
