#include "platform/camera/device_controls.h"

#include <algorithm>
#include <cerrno>

namespace handset {
namespace {

/// The device is there but will never accept this value.
bool refused_for_good(int error) {
  return error == EINVAL || error == ERANGE || error == EACCES || error == EPERM || error == ENOTTY;
}

}  // namespace

DeviceControls::DeviceControls(Setup setup)
    : setup_(std::move(setup)), journal_(setup_.journal_folder, setup_.identity) {}

std::shared_ptr<DeviceControls> DeviceControls::start(Setup setup) {
  std::shared_ptr<DeviceControls> controls(new DeviceControls(std::move(setup)));
  const std::lock_guard lock(controls->mutex_);
  controls->thread_ = std::thread([controls] { controls->run(); });
  return controls;
}

/// The thread shares ownership of the object, so it has ended, or this is its last step.
DeviceControls::~DeviceControls() {
  if (thread_.get_id() == std::this_thread::get_id()) {
    thread_.detach();
  } else {
    thread_.join();
  }
}

ControlPlan DeviceControls::ask(const CameraWishes& wishes) {
  const std::lock_guard lock(mutex_);
  wishes_ = wishes;
  woken_.notify_all();
  return plan_controls(usable_, wishes);
}

bool DeviceControls::known() const {
  const std::lock_guard lock(mutex_);
  return known_;
}

bool DeviceControls::can_focus() const {
  const std::lock_guard lock(mutex_);
  return handset::can_focus(usable_);
}

bool DeviceControls::can_focus(camera_focusmode_t mode) const {
  const std::lock_guard lock(mutex_);
  return handset::can_focus(usable_, mode);
}

bool DeviceControls::has_lamp() const {
  const std::lock_guard lock(mutex_);
  return handset::has_lamp(usable_);
}

void DeviceControls::release() {
  const std::lock_guard lock(mutex_);
  releasing_ = true;
  woken_.notify_all();
}

bool DeviceControls::wait_released(std::chrono::milliseconds limit) {
  std::unique_lock lock(mutex_);
  if (thread_.get_id() == std::this_thread::get_id()) return released_;  // its listener is closing the camera
  return woken_.wait_for(lock, limit, [this] { return released_; });
}

// --- the thread -------------------------------------------------------------------------------

void DeviceControls::run() {
  take_over();
  for (;;) {
    CameraWishes wishes;
    {
      std::unique_lock lock(mutex_);
      woken_.wait(lock, [this] { return releasing_ || wishes_; });
      if (releasing_) break;
      wishes = *wishes_;
      wishes_.reset();
    }
    apply(plan_controls(usable_, wishes));  // only this thread changes usable_
  }
  put_back();
  devices_.clear();
  const std::lock_guard lock(mutex_);
  usable_.clear();
  released_ = true;
  woken_.notify_all();
}

/// Finds out what is available, and restores what a crash left changed.
void DeviceControls::take_over() {
  devices_ = setup_.open(releasing_);
  controls_ = list_controls(devices_);
  for (const DeviceControl& control : controls_) states_[control.id].current = control.value;
  for (const ControlSetting& left : journal_.load()) {
    const auto found = std::find_if(controls_.begin(), controls_.end(), [&](const auto& c) { return c.id == left.id; });
    if (found == controls_.end() || left.value < found->minimum || left.value > found->maximum) continue;
    found->value = left.value;
    states_[left.id].touched = true;
  }
  put_back();
  publish();
}

/// Announces what is usable from now on.
void DeviceControls::publish() {
  std::vector<DeviceControl> usable;
  for (const DeviceControl& control : controls_) {
    // Whatever a refusing control governs stays governed.
    const auto governor = states_.find(governor_of(control.id));
    const bool stuck = governor != states_.end() && governor->second.refused && is_governed(control);
    if (!states_[control.id].refused && !stuck) usable.push_back(control);
  }
  {
    const std::lock_guard lock(mutex_);
    usable_ = std::move(usable);
    known_ = true;
  }
  if (!releasing_) setup_.changed();
}

/// Writes the differences from the plan until newer wishes arrive.
void DeviceControls::apply(const ControlPlan& plan) {
  bool refused = false;
  for (const DeviceControl& control : controls_) {
    std::int32_t value = 0;
    if (!wanted(control, plan, &value)) continue;
    touch(control);
    refused = !change(control, value) || refused;
    if (wishes_changed()) break;
  }
  if (refused) publish();
}

/// @return whether the control must be set, and to what
bool DeviceControls::wanted(const DeviceControl& control, const ControlPlan& plan, std::int32_t* value) const {
  const State& state = states_.at(control.id);
  const auto planned = std::find_if(plan.settings.begin(), plan.settings.end(),
                                    [&](const ControlSetting& setting) { return setting.id == control.id; });
  const bool in_plan = planned != plan.settings.end();
  *value = in_plan ? planned->value : control.value;
  return (in_plan || state.touched) && !state.refused && state.current != *value && !is_governed(control);
}

/// Before a control is changed, records its original value and those of what it governs, unless it governed them
/// originally.
void DeviceControls::touch(const DeviceControl& changing) {
  bool more = false;
  const auto remember = [&](const DeviceControl& control) {
    State& state = states_[control.id];
    if (control.button || state.touched) return;
    state.touched = more = true;
  };
  remember(changing);
  for (const DeviceControl& other : controls_) {
    if (governor_of(other.id) == changing.id && !governs(changing.id, changing.value)) remember(other);
  }
  if (more) save_journal();
}

/// @return false if the control has refused and will not be used again
bool DeviceControls::change(const DeviceControl& control, std::int32_t value) {
  if (settable_now(*devices_[control.device], control.id) && write(control, value) == 0) return true;
  states_[control.id].refused = true;
  return false;
}

/// Restores the original values of what was touched, governors first. What the device will not accept now stays in the
/// journal.
void DeviceControls::put_back() {
  if (controls_.empty()) return;  // a journal's content is for another time
  for (const DeviceControl& control : controls_) {
    State& state = states_[control.id];
    if (!state.touched) continue;
    const bool settled = state.current == control.value || is_governed(control);
    const int error = settled ? 0 : write(control, control.value);
    state.touched = error != 0 && !refused_for_good(error);
  }
  save_journal();
}

/// @return 0 or an errno value
int DeviceControls::write(const DeviceControl& control, std::int32_t value) {
  ControlDevice& device = *devices_[control.device];
  const int error = set_control(device, control.id, value);
  std::int32_t left = value;
  const bool known = error == 0 || get_control(device, control.id, &left) == 0;
  states_[control.id].current = known ? std::optional(left) : std::nullopt;
  for (const DeviceControl& other : controls_) {
    if (governor_of(other.id) == control.id) states_[other.id].current.reset();
  }
  return error;
}

void DeviceControls::save_journal() const {
  std::vector<ControlSetting> found;
  for (const DeviceControl& control : controls_) {
    if (states_.at(control.id).touched) found.push_back({control.id, control.value});
  }
  journal_.save(found);
}

/// Whether the camera controls it by itself.
bool DeviceControls::is_governed(const DeviceControl& control) const {
  const auto governor = states_.find(governor_of(control.id));
  return governor != states_.end() && governor->second.current && governs(governor->first, *governor->second.current);
}

bool DeviceControls::wishes_changed() const {
  const std::lock_guard lock(mutex_);
  return releasing_ || wishes_;
}

}  // namespace handset
