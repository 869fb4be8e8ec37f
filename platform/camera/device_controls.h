#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/camera/control_device.h"
#include "platform/camera/control_journal.h"
#include "platform/camera/control_plan.h"

namespace handset {

/// The controls of one camera while it is in use. A dedicated thread opens the device, writes to it and restores what
/// it changed; nobody else waits for the device. If wishes come faster than the device takes them, the newest wins.
///
/// Failures are not reported: a control that cannot be read, or refuses to be set, counts as absent, and its work falls
/// back to the picture.
class DeviceControls : public std::enable_shared_from_this<DeviceControls> {
 public:
  using Open = std::function<ControlDevices(const std::atomic<bool>& cancelled)>;
  struct Setup {
    std::string identity;        ///< the camera's
    std::string journal_folder;  ///< empty: no journal
    Open open;                   ///< runs on the thread
    /// The device's abilities have become known or have shrunk: share the wishes out again. Called on the thread, with
    /// no lock held.
    std::function<void()> changed;
  };

  /// Returns at once. First restores what a crash left changed.
  static std::shared_ptr<DeviceControls> start(Setup setup);
  ~DeviceControls();

  /// Makes the device follow the wishes. Any thread; returns at once.
  /// @return the plan, including what is left for the picture
  ControlPlan ask(const CameraWishes& wishes);

  /// What the device can do, as far as is known yet. Any thread.
  bool known() const;
  bool can_focus() const;
  bool can_focus(camera_focusmode_t mode) const;
  bool has_lamp() const;

  /// Restores the controls and releases the device, on the thread. Any thread; returns at once.
  void release();
  /// @return whether that is done; if false it continues on its own
  bool wait_released(std::chrono::milliseconds limit);

 private:
  explicit DeviceControls(Setup setup);

  /// What the thread knows about a control besides its description.
  struct State {
    std::optional<std::int32_t> current;  ///< empty: the device may have changed it
    bool touched = false;                 ///< must be restored
    bool refused = false;
  };

  void run();
  void take_over();
  void publish();
  void apply(const ControlPlan& plan);
  bool wanted(const DeviceControl& control, const ControlPlan& plan, std::int32_t* value) const;
  void touch(const DeviceControl& changing);
  bool change(const DeviceControl& control, std::int32_t value);
  void put_back();
  int write(const DeviceControl& control, std::int32_t value);
  void save_journal() const;
  bool is_governed(const DeviceControl& control) const;
  bool wishes_changed() const;

  const Setup setup_;
  const ControlJournal journal_;
  std::atomic<bool> releasing_{false};

  // Used by the thread only.
  ControlDevices devices_;
  std::vector<DeviceControl> controls_;
  std::map<std::uint32_t, State> states_;  ///< of all controls

  mutable std::mutex mutex_;  ///< guards what follows; never held while the device is queried
  std::condition_variable woken_;
  std::vector<DeviceControl> usable_;
  bool known_ = false;
  bool released_ = false;
  std::optional<CameraWishes> wishes_;  ///< not processed yet
  std::thread thread_;
};

}  // namespace handset
