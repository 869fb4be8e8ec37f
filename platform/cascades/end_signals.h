#pragma once

class QObject;

namespace handset {

/// Makes SIGTERM and SIGINT end the event loop with status 0 for the life of the process; further signals do not kill a
/// running teardown. A signal before the loop runs ends it as soon as it does. UI thread, once per application object.
/// @param owner the application; the loop is left alone once it is gone
void quit_on_signals(QObject* owner);

}  // namespace handset
