#pragma once

#include <QString>
#include <QUrl>

namespace bb::cascades {

/// asset:///name to the file in the installed package; any other URL as it is. A name never leads out of the
/// package's assets: ".." stops at their folder. Any thread.
QUrl resolve_asset(const QUrl& url);

/// Takes another package from now on, instead of the installed one. Any thread.
/// @param package_dir  the folder that holds native/assets; empty for the installed package again
void set_package_dir(const QString& package_dir);

}  // namespace bb::cascades
