#pragma once

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <functional>
#include <string>

#include "tests/support/temp_dir.h"

/// The handset's window, without a display, and the test program's own folders. One application lives as long as the
/// program.
class WindowTest : public testing::Test {
 protected:
  WindowTest();

  /// What the program takes for the user's home.
  static const std::string& home();
  /// Runs the event loop until the condition holds; false after some seconds.
  static bool wait_until(const std::function<bool()>& condition, int patience_ms = 20000);
  static void wait_for(int milliseconds);
  /// Sends a press and a release through the window.
  static void press(Qt::Key key, const QString& text = {});
  /// Returns what the action prints on stderr.
  static std::string errors_of(const std::function<void()>& action);
};
