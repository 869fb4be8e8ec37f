#pragma once

#include <QString>
#include <QUrl>

namespace bb::cascades {

/// Maps asset:///name to the file in the installed package; returns any other URL unchanged. A name never escapes the
/// package's assets: ".." stops at their folder. Any thread.
QUrl resolve_asset(const QUrl& url);

/// Uses another package from now on instead of the installed one. Any thread.
/// @param package_dir the folder that holds native/assets; empty restores the installed package
void set_package_dir(const QString& package_dir);

}  // namespace bb::cascades
