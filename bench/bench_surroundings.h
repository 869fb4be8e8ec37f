#pragma once

// What a benchmark of the whole program starts it with.

#include <QEventLoop>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "app/tarnelapp.h"

/// The user whose folders are in `home`.
inline void become(const std::filesystem::path& home) {
  for (const char* const name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"}) {
    setenv(name, (home / name).c_str(), 1);
  }
  setenv("XDG_RUNTIME_DIR", home.c_str(), 1);
  setenv("HOME", home.c_str(), 1);
}

/// A user of its own, in a folder that goes away with it.
class Surroundings {
 public:
  /// @param source  of both cameras, as the device profile names it
  explicit Surroundings(const std::string& source) {
    char pattern[] = "/tmp/morvane-bench-XXXXXX";
    home_ = mkdtemp(pattern);
    become(home_);
    std::filesystem::create_directories(home_ / "XDG_CONFIG_HOME/morvane");
    std::ofstream(home_ / "XDG_CONFIG_HOME/morvane/device.ini")
        << "[camera]\nrear = " << source << "\nfront = " << source << "\nmicrophone = tone\n";
  }
  ~Surroundings() {
    std::error_code ignored;
    std::filesystem::remove_all(home_, ignored);
  }
  const std::filesystem::path& home() const { return home_; }

 private:
  std::filesystem::path home_;
};

inline void store_settings(int resolution) {
  PrefsRecord settings = default_settings();
  settings.rearResolutionIndex = resolution;
  settings.firstRunHintShown = 1;
  settings.installRegistered = 1;
  ::save_settings(prefs_path, settings);
}

inline void run_for(int duration) {
  QEventLoop loop;
  QTimer::singleShot(duration, &loop, &QEventLoop::quit);
  loop.exec();
}

/// The application, a second after its viewfinder was started in this size. @return null if the camera has no such size
inline std::unique_ptr<tarnelApp> start_at_size(bb::cascades::Application* application, unsigned width,
                                                unsigned height) {
  store_settings(-1);
  auto app = std::make_unique<tarnelApp>(application);
  run_for(1000);
  // The index is the place in the camera's own list.
  const auto sizes = app->resolutions();
  const auto size = std::find_if(sizes.begin(), sizes.end(), [&](const camera_res_t& resolution) {
    return resolution.width == width && resolution.height == height;
  });
  if (size == sizes.end()) {
    std::fputs("the camera has no such size\n", stderr);
    return nullptr;
  }
  store_settings(static_cast<int>(size - sizes.begin()));
  app.reset();
  app = std::make_unique<tarnelApp>(application);
  run_for(1000);
  return app;
}
