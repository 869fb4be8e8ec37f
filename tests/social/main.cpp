#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QNetworkProxy>
#include <cstdlib>

#include "tests/support/temp_dir.h"

/// The device profile is looked for in a folder of the program's own, before anybody asks where it is.
int main(int argc, char** argv) {
  const TempDir config;
  setenv("XDG_CONFIG_HOME", config.file("config").c_str(), 1);
  testing::InitGoogleTest(&argc, argv);
  const QCoreApplication application(argc, argv);
  QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy);
  return RUN_ALL_TESTS();
}
