#pragma once

#include <QSignalSpy>
#include <QTest>
#include <filesystem>
#include <string>

#include "platform/bbm/bbm.h"
#include "platform/device/profile.h"
#include "tests/support/temp_dir.h"

/// Replaces the device profile in one step, as editors do. Its folder is made when it is missing.
inline void set_profile(const std::string& text) {
  const std::filesystem::path path = device_profile_path();
  std::filesystem::create_directories(path.parent_path());
  write_file(path.string() + ".new", text);
  std::filesystem::rename(path.string() + ".new", path);
}

inline void remove_profile_folder() {
  std::filesystem::remove_all(std::filesystem::path(device_profile_path()).parent_path());
}

inline const QUuid application_uuid = QUuid::fromString(QLatin1String("0f3a7c21-5b9e-4d6a-8c12-7e4b9a0d3f65"));

/// Runs the event loop until it holds.
template <typename Condition>
bool comes_true(Condition condition) {
  return QTest::qWaitFor(condition, 5000);
}
