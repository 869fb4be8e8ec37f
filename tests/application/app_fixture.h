#pragma once

// The application object on a fake camera: its own sandbox, a main screen without a look, and stderr captured.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "app/tarnelapp.h"
#include "tests/support/temp_dir.h"

class AppTest : public testing::Test {
 protected:
  /// Enters the sandbox: working directory, HOME, a package with the QML documents of tests/application/package and the
  /// built package's other files. Engine and camera are as at program start.
  AppTest();
  ~AppTest() override;

  /// Saves `settings` and constructs the application object.
  void start();
  /// Constructs it with the files as they are.
  void start_as_it_is();
  /// Destroys it.
  void end();

  /// Returns what the action prints on stderr.
  static std::string errors_of(const std::function<void()>& action);
  /// Runs the event loop until the condition holds; false after some seconds.
  static bool wait_until(const std::function<bool()>& condition);
  /// Runs the event loop for a time.
  static void wait_for(int milliseconds);

  /// A control that the main screen must have.
  template <typename T>
  T& on_page(const char* name) const {
    T* const found = app->control<T>(name);
    EXPECT_NE(found, nullptr) << name;
    return *found;
  }
  /// Removes a control from the main screen.
  void remove(const char* name) const;

  /// The record as stored in the file.
  static PrefsRecord stored_settings();

  const TempDir sandbox;
  PrefsRecord settings;  ///< as in a new file, except that the first start's hints have been given
  std::unique_ptr<tarnelApp> app;
};
