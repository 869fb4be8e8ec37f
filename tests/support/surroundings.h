#pragma once

// A user of a test program's own, with the one application that Qt allows a process.

#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "platform/cascades/application.h"
#include "tests/support/temp_dir.h"

/// Lives from before the first test until after the last one: what Qt reads from the environment it reads once. Owned
/// by GoogleTest.
class Surroundings : public testing::Environment {
 public:
  /// A home folder and XDG folders in it, a window that nobody sees and the CPU draws, then the application. A test
  /// that was given an X11 display (QT_QPA_PLATFORM=xcb) has its window, and its desktop, there.
  void SetUp() override;
  void TearDown() override { application_.reset(); }

  static bool on_display();

  const TempDir& home() const { return home_; }

 protected:
  /// What the application is to find. @param home  the home folder; XDG_CONFIG_HOME and its like are folders in it
  virtual void prepare(const TempDir& home) { static_cast<void>(home); }

 private:
  const TempDir home_;
  int argc_ = 1;
  char name_[8] = "morvane";
  char* argv_[2] = {name_, nullptr};
  std::unique_ptr<bb::cascades::Application> application_;
};

/// Runs the event loop until the condition holds; false when it does not in time.
bool run_until(const std::function<bool()>& condition, int patience_ms = 30000);
/// Runs the event loop for a time.
void run_for(int milliseconds);
