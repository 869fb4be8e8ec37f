#include "tests/camera/fake_controls.h"

#include <linux/videodev2.h>

#include <cerrno>
#include <chrono>
#include <utility>

using namespace std::chrono_literals;

FakeControl integer(std::int64_t minimum, std::int64_t maximum, std::uint64_t step, std::int32_t value) {
  return {V4L2_CTRL_TYPE_INTEGER, minimum, maximum, step, value};
}

FakeControl boolean(std::int32_t value) {
  return {V4L2_CTRL_TYPE_BOOLEAN, 0, 1, 1, value};
}

FakeControl menu(std::map<std::int64_t, std::int64_t> entries, std::int32_t value, bool integers) {
  const std::uint32_t type = integers ? V4L2_CTRL_TYPE_INTEGER_MENU : V4L2_CTRL_TYPE_MENU;
  return {type, 0, entries.rbegin()->first, 1, value, 0, entries};
}

std::map<std::uint32_t, FakeControl> webcam() {
  return {
      {V4L2_CID_EXPOSURE_AUTO, menu({{1, 0}, {3, 0}}, 3)},    {V4L2_CID_EXPOSURE_ABSOLUTE, integer(3, 2047, 1, 250)},
      {V4L2_CID_EXPOSURE_AUTO_PRIORITY, boolean(0)},          {V4L2_CID_GAIN, integer(0, 200, 1, 20)},
      {V4L2_CID_BACKLIGHT_COMPENSATION, integer(0, 2, 1, 0)}, {V4L2_CID_FOCUS_AUTO, boolean(1)},
      {V4L2_CID_FOCUS_ABSOLUTE, integer(0, 250, 5, 30)}};
}

class FakeCamera::Handle : public handset::ControlDevice {
 public:
  explicit Handle(FakeCamera* camera) : camera_(camera) {}
  int call(unsigned long request, void* argument) override { return camera_->call(request, argument); }

 private:
  FakeCamera* const camera_;
};

handset::ControlDevices FakeCamera::open() {
  handset::ControlDevices devices;
  devices.push_back(std::make_unique<Handle>(this));
  return devices;
}

void FakeCamera::unplug(bool gone) {
  const std::lock_guard lock(mutex_);
  gone_ = gone;
}

std::int32_t FakeCamera::value(std::uint32_t id) const {
  const std::lock_guard lock(mutex_);
  return controls.at(id).value;
}

void FakeCamera::move(std::uint32_t id, std::int32_t value) {
  const std::lock_guard lock(mutex_);
  controls.at(id).value = value;
}

std::vector<std::pair<std::uint32_t, std::int32_t>> FakeCamera::take_log() {
  const std::lock_guard lock(mutex_);
  return std::exchange(log_, {});
}

bool FakeCamera::wait_value(std::uint32_t id, std::int32_t value) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, 10s, [&] { return controls.at(id).value == value; });
}

bool FakeCamera::wait_tried(std::uint32_t id, int times) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, 10s, [&] { return tried_[id] >= times; });
}

bool FakeCamera::inactive(std::uint32_t id) const {
  const std::uint32_t governor = handset::governor_of(id);
  return governor != 0 && controls.count(governor) != 0 && handset::governs(governor, controls.at(governor).value);
}

int FakeCamera::call(unsigned long request, void* argument) {
  if (request == VIDIOC_S_CTRL && before_set) before_set();
  const std::lock_guard lock(mutex_);
  const int error = gone_ ? ENODEV : answer(request, argument);
  changed_.notify_all();
  return error;
}

int FakeCamera::answer(unsigned long request, void* argument) {
  const std::uint32_t id = *static_cast<std::uint32_t*>(argument);  // the first member of all four
  const auto found = controls.find(id);
  if (found == controls.end()) return EINVAL;
  FakeControl& control = found->second;
  if (request == VIDIOC_QUERY_EXT_CTRL) {
    auto* query = static_cast<v4l2_query_ext_ctrl*>(argument);
    query->type = control.type;
    query->minimum = control.minimum;
    query->maximum = control.maximum;
    query->step = control.step;
    query->flags = control.flags | (inactive(id) ? V4L2_CTRL_FLAG_INACTIVE : 0U);
    return 0;
  }
  if (request == VIDIOC_QUERYMENU) {
    auto* menu = static_cast<v4l2_querymenu*>(argument);
    const auto entry = control.entries.find(menu->index);
    if (entry == control.entries.end()) return EINVAL;
    menu->value = entry->second;
    return 0;
  }
  auto* value = static_cast<v4l2_control*>(argument);
  if (request == VIDIOC_G_CTRL) {
    if (control.get_error == 0) value->value = control.value;
    return control.get_error;
  }
  ++tried_[id];
  if (control.set_error != 0) return control.set_error;
  control.value = value->value;
  log_.emplace_back(id, value->value);
  return 0;
}
