#pragma once

// The application object on a fake camera: a sandbox of the test's own, a main screen without a look, and the error
// stream read back.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "app/tarnelapp.h"
#include "tests/support/temp_dir.h"

class AppTest : public testing::Test {
 protected:
  /// Enters the sandbox: working directory, HOME, a package whose QML documents are those of tests/application/package
  /// and whose other files are the built ones'. Engine and camera are as at the program's start.
  AppTest();
  ~AppTest() override;

  /// Saves `settings` and constructs the application object.
  void start();
  /// Constructs it with the files as they are.
  void start_as_it_is();
  /// Destroys it.
  void end();

  /// What the action writes to the error stream.
  static std::string errors_of(const std::function<void()>& action);
  /// Runs the event loop until the condition holds; false when it does not within some seconds.
  static bool wait_until(const std::function<bool()>& condition);
  /// Runs the event loop for a time.
  static void wait_for(int milliseconds);

  /// A control of the main screen, which has to have it.
  template <typename T>
  T& on_page(const char* name) const {
    T* const found = app->control<T>(name);
    EXPECT_NE(found, nullptr) << name;
    return *found;
  }
  /// Takes a control off the main screen.
  void remove(const char* name) const;

  /// The record as the file has it.
  static PrefsRecord stored_settings();

  const TempDir sandbox;
  PrefsRecord settings;  ///< as a new file's, but for the hints of the first start, which have been given
  std::unique_ptr<tarnelApp> app;
};
