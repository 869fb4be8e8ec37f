#pragma once

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <functional>
#include <string>

#include "tests/support/temp_dir.h"

/// The handset's window, without a display, and folders of the test program's own. One application lives as long as the
/// program.
class WindowTest : public testing::Test {
 protected:
  WindowTest();

  /// What the program takes for the user's home.
  static const std::string& home();
  /// Runs the event loop until the condition holds; false when it does not within some seconds.
  static bool wait_until(const std::function<bool()>& condition, int patience_ms = 20000);
  static void wait_for(int milliseconds);
  /// Presses and lets go, as the window gets it.
  static void press(Qt::Key key, const QString& text = {});
  /// What the action writes to the error stream.
  static std::string errors_of(const std::function<void()>& action);
};
